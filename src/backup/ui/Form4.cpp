#include "backup/ui/Form4.h"

#include "backup/BackupValues.h"
#include "filemanager/TreeKey.h"
#include "filemanager/ui/SmartTree.h"
#include "foundation/FileServices.h"
#include "foundation/Messages.h"

#include <QLineEdit>

namespace vmk
{

Form4::Form4(QWidget* parent)
    : PickerForm(TreeOptions::Form4(), QStringLiteral("Guardar..."), parent)
    , m_text1(addTextBox("Text1", "Label1", QStringLiteral("Nombre:")))
    , m_text2(addTextBox("Text2", "Label2", QStringLiteral("Carpeta")))
{
    setObjectName(QStringLiteral("Form4"));
    m_text2->setReadOnly(true);
    connect(tree(), &SmartTree::NodeClick, this,
        [this](const QString& key) { m_text2->setText(key == TreeKey::host() ? QString() : TreeKey::pathOf(key)); });
    Form_Load();
}

void Form4::Command1_Click()
{
    if (m_text1->text().isEmpty()) {
        ShowMessage(QStringLiteral("¡Nombre del archivo vacio!"));
        return;
    }
    const QString path = TreeKey::pathOf(tree()->SelectedKey());
    BV().BackupSelectionFile = !path.isEmpty() && FileExists(path) ? path + m_text1->text() : QString();
    accept();
}

} // namespace vmk
