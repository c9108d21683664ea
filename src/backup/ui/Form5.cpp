#include "backup/ui/Form5.h"

#include "backup/BackupValues.h"
#include "filemanager/TreeKey.h"
#include "filemanager/ui/SmartTree.h"
#include "foundation/FileServices.h"
#include "foundation/Messages.h"

#include <QLineEdit>

namespace vmk
{

Form5::Form5(QWidget* parent)
    : PickerForm(TreeOptions::Form5(), QStringLiteral("Seleccione un archivo de configuración de respaldos"), parent)
    , m_text1(addTextBox("Text1", "Label1", QStringLiteral("Nombre:")))
{
    setObjectName(QStringLiteral("Form5"));
    connect(tree(), &SmartTree::NodeClick, this, [this](const QString& key) {
        if (!TreeKey::isFolder(key) && key != TreeKey::host() && key != TreeKey::memory())
            m_text1->setText(tree()->currentIndex().data().toString());
    });
    Form_Load();
}

void Form5::Command1_Click()
{
    // This form's own wording, which differs from Form4's by one word.
    if (m_text1->text().isEmpty()) {
        ShowMessage(QStringLiteral("¡Nombre de archivo vacio!"));
        return;
    }
    const QString path = TreeKey::pathOf(tree()->SelectedKey());
    BV().BackupSelectionFile = !path.isEmpty() && FileExists(path) ? path : QString();
    accept();
}

} // namespace vmk
