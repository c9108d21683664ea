#include "foundation/ui/ClickLabel.h"

#include <QMouseEvent>

namespace vmk
{

ClickLabel::ClickLabel(const QString& text, QWidget* parent)
    : QLabel(text, parent)
{
    setAlignment(Qt::AlignCenter);
    setMouseTracking(true);
    setCursor(Qt::PointingHandCursor);
    setFrameShape(QFrame::Panel);
    setFrameShadow(QFrame::Raised);
    setLineWidth(1);
}

void ClickLabel::setUnderlined(bool on)
{
    QFont f = font();
    if (f.underline() == on)
        return;
    f.setUnderline(on);
    setFont(f);
}

void ClickLabel::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) {
        m_pressed = true;
        setFrameShadow(QFrame::Sunken);
    }
    QLabel::mousePressEvent(event);
}

void ClickLabel::mouseReleaseEvent(QMouseEvent* event)
{
    const bool wasPressed = m_pressed;
    m_pressed = false;
    setFrameShadow(QFrame::Raised);
    // Like a button, the click counts only when released over the label.
    if (wasPressed && event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()))
        emit clicked();
    else
        QLabel::mouseReleaseEvent(event);
}

void ClickLabel::mouseMoveEvent(QMouseEvent* event)
{
    emit mouseMoved();
    QLabel::mouseMoveEvent(event);
}

} // namespace vmk
