#include "charts/ui/Pie.h"

#include "charts/PieGeometry.h"
#include "platform/Pump.h"

#include <QLabel>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace vmk
{
namespace
{

using charts::kPiEdges;

constexpr QRgb kBlack = 0xFF000000;
constexpr int kMaxSide = 4000; // larger sizes are taken for a bad argument
constexpr double kOutlineStep = 0.05; // whole percents fall on outline samples

QPoint rounded(const QPointF& p)
{
    return QPoint(int(std::lround(p.x())), int(std::lround(p.y())));
}

void setPixel(QImage& img, int x, int y, QRgb c)
{
    if (x >= 0 && y >= 0 && x < img.width() && y < img.height())
        img.setPixel(x, y, c);
}

// Bresenham's line, both ends included: 8-connected, so a 4-connected fill never
// slips through it.
void drawLine(QImage& img, QPoint a, QPoint b, QRgb c)
{
    int dx = std::abs(b.x() - a.x()), sx = a.x() < b.x() ? 1 : -1;
    int dy = -std::abs(b.y() - a.y()), sy = a.y() < b.y() ? 1 : -1;
    int err = dx + dy;
    int x = a.x(), y = a.y();
    for (;;) {
        setPixel(img, x, y, c);
        if (x == b.x() && y == b.y())
            break;
        const int e2 = 2 * err;
        if (e2 >= dy) {
            err += dy;
            x += sx;
        }
        if (e2 <= dx) {
            err += dx;
            y += sy;
        }
    }
}

// The ellipse outline between two percents, shifted down by `dy`.
void drawArc(QImage& img, double from, double to, int w, int h, int dy, QRgb c)
{
    const int steps = int(std::lround((to - from) / kOutlineStep));
    QPoint prev = rounded(charts::PointAtAngle(charts::AngleOf(from, kPiEdges), w, h)) + QPoint(0, dy);
    for (int i = 1; i <= steps; ++i) {
        const double v = from + i * kOutlineStep;
        const QPoint p = rounded(charts::PointAtAngle(charts::AngleOf(v, kPiEdges), w, h)) + QPoint(0, dy);
        drawLine(img, prev, p, c);
        prev = p;
    }
}

// Fills the 4-connected area of the seed's colour (the surface) with `c`.
void floodFill(QImage& img, QPoint seed, QRgb c)
{
    if (!img.rect().contains(seed))
        return;
    const QRgb surface = img.pixel(seed);
    if (surface == c)
        return;
    std::vector<QPoint> stack { seed };
    while (!stack.empty()) {
        const QPoint p = stack.back();
        stack.pop_back();
        if (!img.rect().contains(p) || img.pixel(p) != surface)
            continue;
        // Run left and right along the row, then queue the rows above and below.
        int l = p.x(), r = p.x();
        while (l - 1 >= 0 && img.pixel(l - 1, p.y()) == surface)
            --l;
        while (r + 1 < img.width() && img.pixel(r + 1, p.y()) == surface)
            ++r;
        for (int x = l; x <= r; ++x)
            img.setPixel(x, p.y(), c);
        for (int ny : { p.y() - 1, p.y() + 1 }) {
            if (ny < 0 || ny >= img.height())
                continue;
            bool inRun = false;
            for (int x = l; x <= r; ++x) {
                const bool match = img.pixel(x, ny) == surface;
                if (match && !inRun)
                    stack.emplace_back(x, ny);
                inRun = match;
            }
        }
    }
}

// The position in percent of a pixel on the top of a w by h pie.
double percentOf(QPoint p, int w, int h)
{
    const double a = std::atan2((p.y() - h / 2.0) / (h / 2.0), (p.x() - w / 2.0) / (w / 2.0));
    double v = 38 + 50 * a / kPiEdges;
    if (v < 0)
        v += 100;
    if (v >= 100)
        v -= 100;
    return v;
}

bool inside(double v, int start, int end)
{
    constexpr double margin = 0.02;
    return v > start + margin && v < end - margin;
}

// Fills the face of a slice. The seed is the point at half the radius on the slice's
// mean angle. A thin slice may have its outline there, or be cut into pieces where its
// two edges run close together; so every unfilled pixel along a few rays through the
// slice that lies within its span seeds a fill too.
void fillFace(QImage& img, int start, int end, int w, int h, QRgb surface, QRgb c)
{
    const double a1 = charts::AngleOf(start, kPiEdges);
    const double a2 = charts::AngleOf(end, kPiEdges);
    const bool whole = end - start >= 100;
    auto trySeed = [&](QPoint p) {
        if (!img.rect().contains(p) || img.pixel(p) != surface)
            return;
        if (!whole && !inside(percentOf(p, w, h), start, end))
            return;
        floodFill(img, p, c);
    };
    trySeed(rounded(charts::PointAtAngle((a1 + a2) / 2, w, h, 0.5)));
    const double step = 1.0 / std::max(w, h);
    for (int j = 1; j < 8; ++j) {
        const double a = a1 + (a2 - a1) * j / 8;
        for (double f = 0.04; f < 1.0; f += step)
            trySeed(rounded(charts::PointAtAngle(a, w, h, f)));
    }
}

// Fills a slice's part of the rim (start and end already within 40..86) from points
// below the top's edge, halfway down the rim, at the mean angle first.
void fillRim(QImage& img, int start, int end, int w, int h, int length, QRgb surface, QRgb c)
{
    const double a1 = charts::AngleOf(start, kPiEdges);
    const double a2 = charts::AngleOf(end, kPiEdges);
    auto trySeed = [&](double a) {
        const QPoint top = rounded(charts::PointAtAngle(a, w, h));
        for (int dy = length / 2; dy >= 1; --dy) {
            const QPoint p = top + QPoint(0, dy);
            if (!img.rect().contains(p) || img.pixel(p) != surface)
                continue;
            // Below the front the percent follows from the column alone.
            const double cosA = std::clamp((p.x() - w / 2.0) / (w / 2.0), -1.0, 1.0);
            if (!inside(38 + 50 * std::acos(cosA) / kPiEdges, start, end))
                continue;
            floodFill(img, p, c);
            return;
        }
    };
    trySeed((a1 + a2) / 2);
    for (int j = 1; j < 8; ++j)
        trySeed(a1 + (a2 - a1) * j / 8);
}

} // namespace

Pie::Pie(QWidget* parent)
    : QWidget(parent)
    , m_captionText(QStringLiteral("creating pie..."))
    , m_lblInfo(new QLabel(this))
{
    setObjectName(QStringLiteral("Pie"));
    setMouseTracking(true);
    m_lblInfo->setObjectName(QStringLiteral("LblInfo"));
    for (int i = 0; i < 5; ++i) {
        m_labels[i] = new QLabel(this);
        m_labels[i]->setObjectName(QStringLiteral("Label%1").arg(i + 1));
        m_labels[i]->hide();
    }
    loadDefaultPalette();
}

QLabel* Pie::Label(int n) const
{
    return n >= 1 && n <= 5 ? m_labels[n - 1] : nullptr;
}

void Pie::loadDefaultPalette()
{
    m_faceColors = { QColor(254, 176, 16), QColor(0, 145, 215), QColor(1, 169, 44), QColor(210, 44, 2),
        QColor(250, 206, 1), QColor(193, 2, 170) };
    m_sideColors = { QColor(214, 145, 1), QColor(0, 115, 165), QColor(1, 122, 32), QColor(155, 33, 2),
        QColor(205, 169, 1), QColor(135, 1, 122) };
    m_colorsUndefined = true;
}

void Pie::NewColor(const QColor& face, const QColor& side)
{
    if (m_colorsUndefined) {
        m_colorsUndefined = false;
        m_faceColors.assign(1, QColor());
        m_sideColors.assign(1, QColor());
    } else {
        m_faceColors.emplace_back();
        m_sideColors.emplace_back();
    }
    m_faceColors.back() = face;
    m_sideColors.back() = side;
}

void Pie::ClearColors()
{
    m_colorsUndefined = true;
}

void Pie::setBackcolor(const QColor& color)
{
    m_backColor = color;
    update();
}

QColor Pie::faceColor(int index, int k, bool mapPass) const
{
    if (mapPass)
        return QColor(k, k, k);
    return index < int(m_faceColors.size()) ? m_faceColors[index] : QColor();
}

QColor Pie::sideColor(int index, int k, bool mapPass) const
{
    if (mapPass)
        return QColor(k, k, k);
    return index < int(m_sideColors.size()) ? m_sideColors[index] : QColor();
}

void Pie::CreatePie(const QList<QVariant>& values, int width, int height, int& length)
{
    // A bad argument leaves the picture as it stands.
    if (width < 2 || height < 2 || length < 0 || width > kMaxSide || height > kMaxSide || length > kMaxSide)
        return;
    // First the hit map, of the same size, in which slice K of 100 is painted grey K.
    if (m_mapPass < 2) {
        m_mapPass = 2;
        const QList<QVariant> hundred(100, QVariant(1));
        drawPie(hundred, width, height, length, true);
        m_mapPass = 0;
        for (int i = 0; i <= 2000; ++i)
            DoEvents();
    }
    drawPie(values, width, height, length, false);
    length += height;
}

void Pie::drawPie(const QList<QVariant>& values, int width, int height, int length, bool mapPass)
{
    if (m_faceColors.empty() || !m_faceColors.front().isValid())
        loadDefaultPalette();

    const int w = width, h = height;
    const int total = length + height;
    if (!mapPass) {
        m_pieChartWidth = width;
        m_pieChartHeight = height;
        m_pieChartLength = length;
    }

    // Picture1 and Picture2 start clear and hidden; all pictures take the chart's size.
    const QSize size(w + 2, total + 2);
    m_chartVisible = false;
    m_picture2 = QImage(size, QImage::Format_RGB32);
    const QRgb surface = mapPass ? qRgb(255, 255, 255) : m_backColor.rgb();
    m_picture2.fill(surface);

    if (!mapPass) {
        // The black silhouette of the solid: top ellipse, rim band, bottom ellipse.
        m_picture1 = QImage(size, QImage::Format_RGB32);
        m_picture1.fill(Qt::white);
        QPainter mask(&m_picture1);
        mask.setRenderHint(QPainter::Antialiasing, false);
        mask.setPen(Qt::black);
        mask.setBrush(Qt::black);
        mask.drawEllipse(QRect(QPoint(1, 1), QPoint(w - 1, h - 1)));
        for (int y = h / 2 - 4; y <= h / 2 + length + 4; ++y)
            mask.drawLine(0, y, w, y);
        mask.drawEllipse(QRect(QPoint(1, total - h), QPoint(w, total - 1)));
        mask.end();
        m_lblInfo->clear();
    }

    // The solid's outline: the whole top, the front of the bottom and the two sides.
    QImage& pic = m_picture2;
    drawArc(pic, 0, 100, w, h, 0, kBlack);
    if (length > 0) {
        drawArc(pic, 38, 88, w, h, length, kBlack);
        for (double side : { 38.0, 88.0 }) {
            const QPoint top = rounded(charts::PointAtAngle(charts::AngleOf(side, kPiEdges), w, h));
            drawLine(pic, top, top + QPoint(0, length), kBlack);
        }
    }

    const charts::SliceLayout layout = charts::LayOutSlices(values);
    if (!mapPass)
        m_slices.assign(charts::CountValues(values), SliceRecord {});
    if (layout.overflow) {
        if (!mapPass)
            m_lblInfo->setText(QStringLiteral("---------------------------"));
        m_lblInfo->adjustSize();
        update();
        return;
    }

    // Outline pass: the radii of each slice and its edge down the rim where it ends on the front.
    const QPoint centre(w / 2, h / 2);
    auto edgeAt = [&](int value, bool radius) {
        const double a = charts::AngleOf(value, kPiEdges);
        const QPoint onEllipse = rounded(charts::PointAtAngle(a, w, h));
        if (radius)
            drawLine(pic, centre, onEllipse, kBlack);
        if (value > 37 && value < 89 && length > 0) {
            const QPoint front = rounded(charts::PointOnEllipse(value, w, h));
            drawLine(pic, front, front + QPoint(0, length), kBlack);
        }
    };
    for (size_t i = 0; i < layout.spans.size(); ++i) {
        const charts::SliceSpan& s = layout.spans[i];
        const bool wholePie = i == 0 && s.start == 0 && s.end == 100;
        edgeAt(s.start, !wholePie);
        edgeAt(s.end, !wholePie);
    }

    // Colour pass.
    const int upper = int(m_faceColors.size()) - 1;
    for (const charts::SliceSpan& s : layout.spans) {
        const int k = s.index;
        const int index = charts::ColourIndex(k, upper);
        const QColor face = faceColor(index, k, mapPass);
        const QColor side = sideColor(index, k, mapPass);
        if (face.isValid())
            fillFace(pic, s.start, s.end, w, h, surface, face.rgb());
        int rs = 0, re = 0;
        if (length > 1 && side.isValid() && charts::RimSpan(s, &rs, &re))
            fillRim(pic, rs, re, w, h, length, surface, side.rgb());
        if (!mapPass && k < int(m_slices.size()))
            m_slices[k] = SliceRecord { face, side };
    }

    if (mapPass) {
        m_picture4 = m_picture2;
        return;
    }
    m_picture3 = m_picture2;
    m_chartVisible = true;
    m_lblInfo->move(0, total + 6);
    m_lblInfo->adjustSize();
    updateGeometry();
    update();
}

int Pie::SliceAt(int x, int y) const
{
    if (!m_picture4.rect().contains(x, y))
        return -1;
    const QRgb p = m_picture4.pixel(x, y);
    for (int i = 0; i <= 100; ++i) {
        if (p == qRgb(i, i, i))
            return i;
    }
    return -1;
}

QSize Pie::sizeHint() const
{
    if (m_picture3.isNull())
        return QSize(160, 120);
    return QSize(m_picture3.width(), m_picture3.height() + 24);
}

void Pie::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    p.fillRect(rect(), m_backColor);
    if (m_chartVisible)
        p.drawImage(0, 0, m_picture3);
    else if (m_picture3.isNull() && m_lblInfo->text().isEmpty())
        p.drawText(rect(), Qt::AlignCenter, m_captionText);
}

void Pie::mousePressEvent(QMouseEvent* event)
{
    const QPoint at = event->position().toPoint();
    const int r = SliceAt(at.x(), at.y());
    if (r > -1)
        emit PieMouseDown(r, int(event->button()), at.x(), at.y());
}

void Pie::mouseReleaseEvent(QMouseEvent* event)
{
    const QPoint at = event->position().toPoint();
    const int r = SliceAt(at.x(), at.y());
    if (r > -1)
        emit PieMouseUp(r, int(event->button()), at.x(), at.y());
}

void Pie::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint at = event->position().toPoint();
    const int r = SliceAt(at.x(), at.y());
    if (r > -1)
        emit PieMouseMove(r, int(event->buttons()), at.x(), at.y());
    else
        emit PieMouseOut(r, int(event->buttons()), at.x(), at.y());
}

} // namespace vmk
