#pragma once

#include <QDialog>
#include <QPolygon>

class QLabel;

namespace vmk
{

// The borderless message window with rounded corners: the window is clipped to a
// round-cornered rectangle (corner ellipse 15 by 15 pixels) and carries a two-tone
// outline, white on the lit edges and RGB(95, 95, 95) on the shadowed ones.
class RoundedForm : public QDialog
{
    Q_OBJECT
public:
    explicit RoundedForm(QWidget* parent = nullptr);

    // Line width 2 instead of 1 for the outline.
    void setRaised(bool raised);
    bool isRaised() const { return m_raised; }

    // Points of a quarter arc of radius r around (cx, cy), from startDegrees onwards
    // through 90 degrees, with angles turned into radians by pi taken as 22/7.
    static QPolygon QuarterArc(int cx, int cy, int r, int startDegrees);

    static constexpr int kCorner = 15;

protected:
    // The message label LblCap that every such form carries: centred, wrapped, at `area`.
    QLabel* makeCaption(const QRect& area);

    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    bool m_raised = true;
};

} // namespace vmk
