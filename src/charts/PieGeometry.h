#pragma once

#include <QList>
#include <QPoint>
#include <QVariant>

#include <vector>

namespace vmk::charts
{

// The chart's geometry. Values are percents that run 0 to 100 around the pie: 38
// points right, 88 left, and with y growing downward 38 to 88 is the front.
//
// Two values of pi are in use, and they are kept apart on purpose: the point helper
// uses the first, the slice edges of the chart the second.
constexpr double kPiPoint = 3.14159265358979;
constexpr double kPiEdges = 3.141592653589;

// The angle of a percent on the pie: 0 for 38, else (value - 38) / 50 times pi.
double AngleOf(double value, double pi);

// The point of a percent on the ellipse that fills a w by h box, by the helper's pi.
QPointF PointOnEllipse(double value, double w, double h);

// The point on the same ellipse at a given angle and a fraction of the radius.
QPointF PointAtAngle(double angle, double w, double h, double radiusFraction = 1.0);

// The number of values before the first empty entry.
int CountValues(const QList<QVariant>& values);

// One drawn slice: the index of its value and its whole-percent span.
struct SliceSpan {
    int index = 0;
    int start = 0;
    int end = 0;
};

// The spans of the slices with a whole part above 0. Fractions are dropped, each start
// is the end before it. `overflow` is set when a span would end above 100: no chart then.
struct SliceLayout {
    std::vector<SliceSpan> spans;
    bool overflow = false;
    int lastEnd = 0;
};
SliceLayout LayOutSlices(const QList<QVariant>& values);

// The palette entry for slice k: k itself until the top of the palette, then back
// down and up again, so a long list walks the palette to and fro instead of wrapping.
int ColourIndex(int k, int upperBound);

// The part of a span that shows on the rim (40 to 86), or false if it has none.
bool RimSpan(const SliceSpan& span, int* start, int* end);

} // namespace vmk::charts
