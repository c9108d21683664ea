#include "backup/ui/BackTreePanels.h"

#include <QFrame>

namespace vmk
{

// Until its own class is plugged in here, Frame4 (the remote store) is an empty frame.
QWidget* MakeFrame4(BackTree& /*form*/)
{
    auto* frame = new QFrame;
    frame->setObjectName(QStringLiteral("Frame4"));
    return frame;
}

} // namespace vmk
