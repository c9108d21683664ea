#include "filemanager/ui/PickerForm.h"

#include "filemanager/ui/SmartTree.h"
#include "foundation/ui/ApplyLanguage.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

namespace vmk
{

PickerForm::PickerForm(const TreeOptions& options, const QString& caption, QWidget* parent)
    : QDialog(parent)
    , m_tree(new SmartTree(options, this))
    , m_boxes(new QVBoxLayout)
    , m_command1(new QPushButton(QStringLiteral("Aceptar"), this))
    , m_command2(new QPushButton(QStringLiteral("Cancelar"), this))
{
    setWindowTitle(caption);
    setModal(true);
    m_tree->setObjectName(QStringLiteral("TreeView1"));
    m_command1->setObjectName(QStringLiteral("Command1"));
    m_command2->setObjectName(QStringLiteral("Command2"));
    m_command1->setDefault(true);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_command1);
    buttons->addWidget(m_command2);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_tree, 1);
    layout->addLayout(m_boxes);
    layout->addLayout(buttons);
    resize(340, 420);
    connect(m_command1, &QPushButton::clicked, this, [this] { Command1_Click(); });
    connect(m_command2, &QPushButton::clicked, this, [this] { Command2_Click(); });
}

void PickerForm::Form_Load()
{
    ApplyLanguage(this);
    if (const QScreen* s = screen() ? screen() : QGuiApplication::primaryScreen())
        move(s->availableGeometry().center() - rect().center());
    m_tree->FillRoots();
}

void PickerForm::Command2_Click()
{
    reject();
}

QLineEdit* PickerForm::addTextBox(const char* name, const char* labelName, const QString& caption)
{
    auto* label = new QLabel(caption, this);
    label->setObjectName(QString::fromLatin1(labelName));
    auto* box = new QLineEdit(this);
    box->setObjectName(QString::fromLatin1(name));
    label->setBuddy(box);
    auto* row = new QHBoxLayout;
    row->addWidget(label);
    row->addWidget(box, 1);
    m_boxes->addLayout(row);
    return box;
}

} // namespace vmk
