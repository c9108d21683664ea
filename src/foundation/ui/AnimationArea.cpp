#include "foundation/ui/AnimationArea.h"

#include <QPainter>
#include <QPainterPath>

namespace vmk
{
namespace
{
constexpr int kFrames = 24;

void drawFolder(QPainter& p, const QRectF& r)
{
    p.setPen(QPen(QColor(150, 110, 20), 1));
    p.setBrush(QColor(240, 196, 80));
    QPainterPath tab;
    tab.addRoundedRect(QRectF(r.left(), r.top(), r.width() * 0.45, r.height() * 0.3), 2, 2);
    p.drawPath(tab);
    p.drawRoundedRect(QRectF(r.left(), r.top() + r.height() * 0.18, r.width(), r.height() * 0.82), 2, 2);
}

void drawBin(QPainter& p, const QRectF& r)
{
    p.setPen(QPen(QColor(70, 80, 90), 1));
    p.setBrush(QColor(170, 180, 190));
    p.drawRect(QRectF(r.left() - 2, r.top(), r.width() + 4, r.height() * 0.12));
    QPolygonF body;
    body << QPointF(r.left(), r.top() + r.height() * 0.15) << QPointF(r.right(), r.top() + r.height() * 0.15)
         << QPointF(r.right() - r.width() * 0.12, r.bottom()) << QPointF(r.left() + r.width() * 0.12, r.bottom());
    p.drawPolygon(body);
}

void drawGlobe(QPainter& p, const QRectF& r)
{
    p.setPen(QPen(QColor(20, 80, 150), 1));
    p.setBrush(QColor(90, 160, 230));
    p.drawEllipse(r);
    p.setBrush(Qt::NoBrush);
    p.drawEllipse(r.adjusted(r.width() * 0.3, 0, -r.width() * 0.3, 0));
    p.drawLine(QPointF(r.left(), r.center().y()), QPointF(r.right(), r.center().y()));
}

void drawSheet(QPainter& p, const QPointF& at)
{
    p.setPen(QPen(QColor(90, 90, 90), 1));
    p.setBrush(Qt::white);
    QPolygonF sheet;
    sheet << at << at + QPointF(10, 0) << at + QPointF(14, 4) << at + QPointF(14, 18) << at + QPointF(0, 18);
    p.drawPolygon(sheet);
    p.drawLine(at + QPointF(3, 7), at + QPointF(11, 7));
    p.drawLine(at + QPointF(3, 11), at + QPointF(11, 11));
}
} // namespace

AnimationArea::AnimationArea(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("Animation"));
    setMinimumSize(200, 48);
    m_timer.setInterval(60);
    connect(&m_timer, &QTimer::timeout, this, &AnimationArea::tick);
}

AnimationArea::Kind AnimationArea::KindOfFile(const QString& file)
{
    if (file.contains(QLatin1String("del"), Qt::CaseInsensitive))
        return Kind::Delete;
    if (file.contains(QLatin1String("update"), Qt::CaseInsensitive)
        || file.contains(QLatin1String("down"), Qt::CaseInsensitive))
        return Kind::Download;
    return Kind::Copy;
}

void AnimationArea::Open(const QString& file)
{
    m_file = file;
    m_kind = KindOfFile(file);
    m_frame = 0;
    m_open = true;
    Play();
}

void AnimationArea::Play()
{
    if (m_open)
        m_timer.start();
}

void AnimationArea::Stop()
{
    m_timer.stop();
}

void AnimationArea::Close()
{
    m_timer.stop();
    m_open = false;
    m_frame = 0;
    update();
}

void AnimationArea::tick()
{
    m_frame = (m_frame + 1) % kFrames;
    update();
}

void AnimationArea::paintEvent(QPaintEvent*)
{
    if (!m_open)
        return;
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const qreal h = qMin<qreal>(height() - 8, 36);
    const qreal y = (height() - h) / 2;
    const QRectF leftBox(12, y, h * 1.2, h);
    const QRectF rightBox(width() - 12 - h * 1.2, y, h * 1.2, h);
    if (m_kind == Kind::Download)
        drawGlobe(p, QRectF(leftBox.left(), y, h, h));
    else
        drawFolder(p, leftBox);
    if (m_kind == Kind::Delete)
        drawBin(p, QRectF(rightBox.left() + h * 0.1, y, h, h));
    else
        drawFolder(p, rightBox);
    // The sheet travels on an arc from the left picture to the right one.
    const qreal t = qreal(m_frame) / (kFrames - 1);
    const qreal x0 = leftBox.center().x() - 7, x1 = rightBox.center().x() - 7;
    const qreal x = x0 + (x1 - x0) * t;
    const qreal lift = 4 * t * (1 - t) * (h * 0.4);
    drawSheet(p, QPointF(x, y + h * 0.45 - lift));
}

} // namespace vmk
