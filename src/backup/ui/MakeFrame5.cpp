#include "backup/ui/BackTreePanels.h"

namespace vmk
{

// Frame5: restoring from one archive.
QWidget* MakeFrame5(BackTree& form)
{
    return MakeEmptyPanel(form, "Frame5");
}

} // namespace vmk
