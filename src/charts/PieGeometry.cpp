#include "charts/PieGeometry.h"

#include <cmath>

namespace vmk::charts
{

double AngleOf(double value, double pi)
{
    const double t = value == 38 ? 0.0 : (value - 38) / 50;
    return t * pi;
}

QPointF PointOnEllipse(double value, double w, double h)
{
    return PointAtAngle(AngleOf(value, kPiPoint), w, h);
}

QPointF PointAtAngle(double angle, double w, double h, double radiusFraction)
{
    return QPointF(
        w / 2 + (w / 2) * radiusFraction * std::cos(angle), h / 2 + (h / 2) * radiusFraction * std::sin(angle));
}

int CountValues(const QList<QVariant>& values)
{
    int n = 0;
    for (const QVariant& v : values) {
        if (!v.isValid() || v.isNull())
            break;
        ++n;
    }
    return n;
}

SliceLayout LayOutSlices(const QList<QVariant>& values)
{
    SliceLayout layout;
    const int count = CountValues(values);
    int end = 0;
    for (int k = 0; k < count; ++k) {
        bool ok = false;
        const double v = values.at(k).toDouble(&ok);
        if (!ok || !(v > 0))
            continue;
        const int start = end;
        end = start + int(std::floor(v));
        if (end > 100) {
            layout.overflow = true;
            layout.lastEnd = end;
            return layout;
        }
        // A value below 1 has no whole percent and so no slice.
        if (end > start)
            layout.spans.push_back(SliceSpan { k, start, end });
    }
    layout.lastEnd = end;
    return layout;
}

int ColourIndex(int k, int upperBound)
{
    if (upperBound <= 0)
        return 0;
    int index = 0;
    int step = 1;
    for (int i = 0; i < k; ++i) {
        if (step > 0) {
            if (index >= upperBound) {
                index = upperBound - 1;
                step = -1;
            } else {
                ++index;
            }
        } else {
            if (index <= 0) {
                index = 1;
                step = 1;
            } else {
                --index;
            }
        }
    }
    return index;
}

bool RimSpan(const SliceSpan& span, int* start, int* end)
{
    if (span.end <= 40 || span.start >= 86)
        return false;
    *start = span.start < 40 ? 40 : span.start;
    *end = span.end > 86 ? 86 : span.end;
    return true;
}

} // namespace vmk::charts
