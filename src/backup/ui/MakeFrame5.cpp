#include "backup/ui/BackTree.h"
#include "backup/ui/BackTreePanels.h"
#include "backup/ui/RestorePanel.h"

namespace vmk
{

// Frame5, restoring from one archive, over the form's zip component: Restaurar
// shows the run panel in restore mode, whose Terminar leads back here; Cerrar
// goes back to the archives.
QWidget* MakeFrame5(BackTree& form)
{
    auto* frame = new RestorePanel(form.XceedZip1());
    QObject::connect(frame, &RestorePanel::RestoreStarting, &form, [&form] {
        form.setRestoreMode(true);
        form.PrepareRun();
    });
    QObject::connect(
        frame, &RestorePanel::CloseRequested, &form, [&form] { form.ShowPanels({ BackTree::Panel::Frame1 }); });
    return frame;
}

} // namespace vmk
