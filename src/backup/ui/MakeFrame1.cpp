#include "backup/ui/BackTreePanels.h"

namespace vmk
{

// Frame1: the archives on the device.
QWidget* MakeFrame1(BackTree& form)
{
    return MakeEmptyPanel(form, "Frame1");
}

} // namespace vmk
