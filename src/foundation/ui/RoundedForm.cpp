#include "foundation/ui/RoundedForm.h"

#include <QBitmap>
#include <QLabel>
#include <QPainter>
#include <QPen>

#include <cmath>

namespace vmk
{
namespace
{
constexpr double kPi = 22.0 / 7.0;
const QColor kLight(255, 255, 255);
const QColor kShadow(95, 95, 95);
} // namespace

RoundedForm::RoundedForm(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint)
{
    setAutoFillBackground(true);
    QPalette pal = palette();
    pal.setColor(QPalette::Window, QColor(226, 228, 232));
    pal.setColor(QPalette::WindowText, QColor(20, 20, 20));
    setPalette(pal);
    setMouseTracking(true);
}

void RoundedForm::setRaised(bool raised)
{
    m_raised = raised;
    update();
}

QPolygon RoundedForm::QuarterArc(int cx, int cy, int r, int startDegrees)
{
    QPolygon points;
    for (int d = startDegrees; d <= startDegrees + 90; d += 5) {
        const double a = d * kPi / 180.0;
        points << QPoint(int(std::lround(cx + r * std::cos(a))), int(std::lround(cy - r * std::sin(a))));
    }
    return points;
}

void RoundedForm::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    // The region of a round-cornered rectangle, drawn without smoothing so that the
    // window is cut on whole pixels.
    QBitmap mask(size());
    mask.fill(Qt::color0);
    QPainter p(&mask);
    p.setPen(Qt::color1);
    p.setBrush(Qt::color1);
    p.drawRoundedRect(QRect(0, 0, width(), height()), kCorner / 2.0, kCorner / 2.0);
    p.end();
    setMask(mask);
}

void RoundedForm::paintEvent(QPaintEvent* event)
{
    QDialog::paintEvent(event);
    QPainter p(this);
    const int lw = m_raised ? 2 : 1;
    const int r = kCorner / 2;
    // A pen of width 2 covers the pixel it is drawn on and the one before, so the lit
    // edges sit one pixel in and the shadowed edges on the last pixel.
    const int left = lw / 2, top = lw / 2, right = width() - 1, bottom = height() - 1;
    QPen light(kLight, lw);
    QPen shadow(kShadow, lw);

    // Lit edges: top and left, with the corners between them.
    p.setPen(light);
    p.drawLine(left + r, top, right - r, top);
    p.drawLine(left, top + r, left, bottom - r);
    p.drawPolyline(QuarterArc(left + r, top + r, r, 90));
    p.drawPolyline(QuarterArc(right - r, top + r, r, 0));
    // Shadowed edges: bottom and right.
    p.setPen(shadow);
    p.drawLine(left + r, bottom, right - r, bottom);
    p.drawLine(right, top + r, right, bottom - r);
    p.drawPolyline(QuarterArc(left + r, bottom - r, r, 180));
    p.drawPolyline(QuarterArc(right - r, bottom - r, r, 270));
}

QLabel* RoundedForm::makeCaption(const QRect& area)
{
    auto* caption = new QLabel(this);
    caption->setObjectName(QStringLiteral("LblCap"));
    caption->setWordWrap(true);
    caption->setAlignment(Qt::AlignCenter);
    caption->setGeometry(area);
    return caption;
}

} // namespace vmk
