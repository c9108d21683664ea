#include "backup/ui/ArchivesPanel.h"
#include "backup/ui/BackTree.h"
#include "backup/ui/BackTreePanels.h"
#include "backup/ui/RestorePanel.h"
#include "backup/ui/ServerPanel.h"
#include "filemanager/FileTreeModel.h"
#include "filemanager/ui/SmartTree.h"

namespace vmk
{

// Frame1, the archives on the device: read anew each time it comes into view; its
// RestorFiles item lists the archive in Frame5 and shows that panel alone; Image10
// is the selection's "Servidor"; its last button goes back to the selection.
QWidget* MakeFrame1(BackTree& form)
{
    auto* frame = new ArchivesPanel;
    QObject::connect(&form, &BackTree::ArchivesShown, frame, &ArchivesPanel::FillArchives);
    QObject::connect(&form, &BackTree::ServerShown, frame, &ArchivesPanel::FillArchives);
    QObject::connect(
        frame, &ArchivesPanel::RestorFilesChosen, &form, [&form](const QString& archiveKey, const QString& caption) {
            auto* restore = qobject_cast<RestorePanel*>(form.panel(BackTree::Panel::Frame5));
            if (!restore)
                return;
            form.ShowPanels({ BackTree::Panel::Frame5 });
            restore->RestorFiles_Click(archiveKey, caption);
        });
    QObject::connect(frame, &ArchivesPanel::ServerRequested, &form, &BackTree::Image2_Click);
    // Delete asks as the server's delete does and drops the node once the file is gone.
    QObject::connect(frame, &ArchivesPanel::DeleteChosen, frame, [frame](const QString& archiveKey, const QString&) {
        if (ServerPanel::Delete_Click(archiveKey))
            frame->SmartUI1()->treeModel()->RemoveNodeTree(archiveKey);
    });
    // Unpload sends the archive to the server's current folder; the server panel
    // ignores it while not connected.
    QObject::connect(
        frame, &ArchivesPanel::UnploadChosen, &form, [&form](const QString& archiveKey, const QString& caption) {
            if (auto* server = qobject_cast<ServerPanel*>(form.panel(BackTree::Panel::Frame4)))
                server->Unpload_Click(archiveKey, caption);
        });
    QObject::connect(
        frame, &ArchivesPanel::BackRequested, &form, [&form] { form.ShowPanels({ BackTree::Panel::Frame3 }); });
    return frame;
}

} // namespace vmk
