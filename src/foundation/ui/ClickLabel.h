#pragma once

#include <QLabel>

namespace vmk
{

// A label that serves as a button on the message forms: it reports clicks and the
// mouse passing over it, and can be underlined to show which answer is under the mouse.
class ClickLabel : public QLabel
{
    Q_OBJECT
public:
    explicit ClickLabel(const QString& text, QWidget* parent = nullptr);

    void setUnderlined(bool on);
    bool isUnderlined() const { return font().underline(); }

signals:
    void clicked();
    void mouseMoved();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    bool m_pressed = false;
};

} // namespace vmk
