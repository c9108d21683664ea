#include "backup/ui/BackTreePanels.h"

#include "backup/ui/BackTree.h"

#include <QFrame>
#include <QPushButton>
#include <QVBoxLayout>

namespace vmk
{

// Until its own class is plugged in here, Frame4 (the remote store) is an empty frame with a way back.
QWidget* MakeFrame4(BackTree& form)
{
    auto* frame = new QFrame;
    frame->setObjectName(QStringLiteral("Frame4"));
    // The way back to the selection.
    auto* close = new QPushButton(QStringLiteral("Cerrar"), frame);
    QObject::connect(close, &QPushButton::clicked, &form, [&form] { form.ShowPanels({ BackTree::Panel::Frame3 }); });
    auto* layout = new QVBoxLayout(frame);
    layout->addStretch();
    layout->addWidget(close, 0, Qt::AlignRight);
    return frame;
}

} // namespace vmk
