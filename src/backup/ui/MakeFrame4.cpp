#include "backup/ui/BackTree.h"
#include "backup/ui/BackTreePanels.h"
#include "backup/ui/ServerPanel.h"

namespace vmk
{

// Frame4, the remote store: "Servidor" connects (once) and lists the server's
// current folder; the form's unload closes the kept connection.
QWidget* MakeFrame4(BackTree& form)
{
    auto* frame = new ServerPanel;
    QObject::connect(&form, &BackTree::ServerShown, frame, [frame] { frame->Servidor(); });
    QObject::connect(&form, &BackTree::Closed, frame, [frame] { frame->Form_Unload(); });
    return frame;
}

} // namespace vmk
