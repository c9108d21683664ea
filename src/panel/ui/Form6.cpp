#include "panel/ui/Form6.h"

#include "filemanager/TreeKey.h"
#include "filemanager/ui/SmartTree.h"
#include "foundation/FileServices.h"
#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "foundation/Settings.h"
#include "platform/DriveMap.h"

namespace vmk
{
namespace
{
void setPickedFolder(const QString& folder)
{
    G().PickedFolder = folder;
    S().OtherLocation = folder;
}
} // namespace

Form6::Form6(QWidget* parent)
    : PickerForm(TreeOptions::Form6(), QStringLiteral("Seleccione una carpeta"), parent)
{
    setObjectName(QStringLiteral("Form6"));
    Form_Load();
}

void Form6::Form_Load()
{
    PickerForm::Form_Load();
    setPickedFolder(QString());
}

void Form6::Command1_Click()
{
    const QString key = tree()->SelectedKey();
    if (key == TreeKey::deviceRoot(G().ProgramDrive)) {
        ShowMessage(QStringLiteral("¡No se puede seleccionar la unidad, seleccione una carpeta!"));
        return;
    }
    QString path = TreeKey::pathOf(key);
    if (DriveMap::hasDriveLetter(path))
        path = path.mid(2);
    setPickedFolder(!path.isEmpty() && FileExists(G().ProgramDrive + path) ? path : QString());
    accept();
}

} // namespace vmk
