#include "backup/ui/BackTreePanels.h"

#include <QFrame>

namespace vmk
{

// Until its own class is plugged in here, Frame5 (restoring from one archive) is an empty frame.
QWidget* MakeFrame5(BackTree& /*form*/)
{
    auto* frame = new QFrame;
    frame->setObjectName(QStringLiteral("Frame5"));
    return frame;
}

} // namespace vmk
