#include "backup/ui/ArchivesPanel.h"
#include "backup/ui/BackTree.h"
#include "backup/ui/BackTreePanels.h"
#include "backup/ui/ServerPanel.h"
#include "filemanager/TreeKey.h"
#include "filemanager/ui/SmartTree.h"

namespace vmk
{

// Frame4, the remote store: "Servidor" connects (once) and lists the server's
// current folder; the form's unload closes the kept connection.
QWidget* MakeFrame4(BackTree& form)
{
    auto* frame = new ServerPanel;
    QObject::connect(&form, &BackTree::ServerShown, frame, [frame] { frame->Servidor(); });
    QObject::connect(&form, &BackTree::Closed, frame, [frame] { frame->Form_Unload(); });
    // "Subir a Servidor" sends the archive selected in the device's archive tree.
    frame->setSelectedArchive([&form]() -> QString {
        auto* archives = qobject_cast<ArchivesPanel*>(form.panel(BackTree::Panel::Frame1));
        if (!archives)
            return {};
        const QString key = archives->SmartUI1()->SelectedKey();
        return key.isEmpty() || TreeKey::isFolder(key) ? QString() : key;
    });
    return frame;
}

} // namespace vmk
