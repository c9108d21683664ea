#include "filemanager/ui/FormNewEdit.h"

#include "filemanager/FileVerbs.h"
#include "foundation/Translate.h"
#include "foundation/ui/ApplyLanguage.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace vmk
{

FormNewEdit::FormNewEdit(QWidget* parent)
    : QDialog(parent)
    , m_label1(new QLabel(QStringLiteral("Nuevo nombre:"), this))
    , m_label2(new QLabel(QStringLiteral("Nombre:"), this))
    , m_labelF(new QLabel(this))
    , m_picture(new QLabel(this))
    , m_text1(new QLineEdit(this))
    , m_accept(new QPushButton(QStringLiteral("Aceptar"), this))
    , m_cancel(new QPushButton(QStringLiteral("Cancelar"), this))
{
    setObjectName(QStringLiteral("FormNewEdit"));
    setWindowTitle(QStringLiteral("Vormak"));
    setModal(false);
    m_label1->setObjectName(QStringLiteral("Label1"));
    m_label2->setObjectName(QStringLiteral("Label2"));
    m_labelF->setObjectName(QStringLiteral("LabelF"));
    m_labelF->setTextFormat(Qt::PlainText);
    m_picture->setObjectName(QStringLiteral("Picture1"));
    m_picture->setFixedSize(32, 32);
    m_text1->setObjectName(QStringLiteral("Text1"));
    m_accept->setObjectName(QStringLiteral("CMDacept"));
    m_cancel->setObjectName(QStringLiteral("CMDcancel"));
    m_accept->setDefault(true);
    connect(m_accept, &QPushButton::clicked, this, &FormNewEdit::CMDacept_Click);
    connect(m_cancel, &QPushButton::clicked, this, &FormNewEdit::CMDcancel_Click);

    auto* grid = new QGridLayout(this);
    grid->addWidget(m_picture, 0, 0, 2, 1, Qt::AlignTop);
    grid->addWidget(m_label2, 0, 1);
    grid->addWidget(m_labelF, 0, 2);
    grid->addWidget(m_label1, 1, 1);
    grid->addWidget(m_text1, 1, 2);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_accept);
    buttons->addWidget(m_cancel);
    grid->addLayout(buttons, 2, 0, 1, 3);
    grid->setColumnStretch(2, 1);
    setMinimumWidth(420);
    ApplyLanguage(this);
}

bool FormNewEdit::renameMode() const
{
    return m_label2->text() == Translate(QStringLiteral("Nombre:"));
}

void FormNewEdit::CMDacept_Click()
{
    const QString text = m_text1->text();
    if (!text.isEmpty()) {
        const QString path = m_labelF->toolTip();
        if (renameMode()) {
            if (FileVerbs::RenameItem(path, RenameParent, text))
                emit changed(RenameParent);
        } else if (FileVerbs::MakeFolder(path, text)) {
            emit changed(path);
        }
    }
    close();
}

void FormNewEdit::CMDcancel_Click()
{
    close();
}

} // namespace vmk
