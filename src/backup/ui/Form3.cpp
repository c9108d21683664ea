#include "backup/ui/Form3.h"

#include "filemanager/TreeKey.h"
#include "filemanager/ui/SmartTree.h"
#include "foundation/FileServices.h"

#include <QLineEdit>

namespace vmk
{

Form3::Form3(QLineEdit* text2, QWidget* parent)
    : PickerForm(TreeOptions::Form3(), QStringLiteral("Seleccione una carpeta"), parent)
    , m_text2(text2)
{
    setObjectName(QStringLiteral("Form3"));
    Form_Load();
}

void Form3::Command1_Click()
{
    const QString path = TreeKey::pathOf(tree()->SelectedKey());
    if (m_text2)
        m_text2->setText(!path.isEmpty() && FileExists(path) ? path : QString());
    accept();
}

} // namespace vmk
