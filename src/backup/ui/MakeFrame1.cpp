#include "backup/ui/BackTreePanels.h"

#include <QFrame>

namespace vmk
{

// Until its own class is plugged in here, Frame1 (the archives on the device) is an empty frame.
QWidget* MakeFrame1(BackTree& /*form*/)
{
    auto* frame = new QFrame;
    frame->setObjectName(QStringLiteral("Frame1"));
    return frame;
}

} // namespace vmk
