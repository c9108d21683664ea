#include "backup/ui/BackTreePanels.h"

namespace vmk
{

// Frame4: the remote store.
QWidget* MakeFrame4(BackTree& form)
{
    return MakeEmptyPanel(form, "Frame4");
}

} // namespace vmk
