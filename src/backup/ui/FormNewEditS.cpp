#include "backup/ui/FormNewEditS.h"

#include "backup/ui/ServerPanel.h"
#include "foundation/Translate.h"
#include "foundation/ui/ApplyLanguage.h"
#include "platform/DriveMap.h"

#include <QDir>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace vmk
{

FormNewEditS::FormNewEditS(ServerPanel& panel, QWidget* parent)
    : QDialog(parent)
    , m_panel(panel)
    , m_label4(new QLabel(QStringLiteral("Nombre:"), this))
    , m_labelF(new QLabel(this))
    , m_text1(new QLineEdit(this))
    , m_accept(new QPushButton(QStringLiteral("Aceptar"), this))
    , m_cancel(new QPushButton(QStringLiteral("Cancelar"), this))
{
    setObjectName(QStringLiteral("FormNewEditS"));
    setWindowTitle(QStringLiteral("Nueva Carpeta"));
    setModal(true);
    m_label4->setObjectName(QStringLiteral("Label4"));
    m_labelF->setObjectName(QStringLiteral("LabelF"));
    m_text1->setObjectName(QStringLiteral("Text1"));
    m_accept->setObjectName(QStringLiteral("CMDacept"));
    m_cancel->setObjectName(QStringLiteral("CMDcancel"));
    m_accept->setDefault(true);

    auto* grid = new QGridLayout(this);
    grid->addWidget(m_labelF, 0, 0, 1, 2);
    grid->addWidget(m_label4, 1, 0);
    grid->addWidget(m_text1, 1, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_accept);
    buttons->addWidget(m_cancel);
    grid->addLayout(buttons, 2, 0, 1, 2);
    resize(340, sizeHint().height());

    connect(m_accept, &QPushButton::clicked, this, &FormNewEditS::CMDacept_Click);
    connect(m_cancel, &QPushButton::clicked, this, &FormNewEditS::CMDcancel_Click);
    ApplyLanguage(this);
}

void FormNewEditS::CMDacept_Click()
{
    const QString name = m_text1->text();
    if (!name.isEmpty()) {
        if (m_label4->text() == Translate(QStringLiteral("Nombre:")))
            m_panel.MakeServerFolder(name);
        else
            QDir().mkdir(DriveMap::instance().toNative(m_labelF->toolTip() + name));
    }
    accept();
}

void FormNewEditS::CMDcancel_Click()
{
    reject();
}

} // namespace vmk
