#include "charts/ui/Pie.h"
#include "charts/PieGeometry.h"

#include <QDir>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>

#include <cmath>

#include <gtest/gtest.h>

using namespace vmk::charts;

namespace
{

QPoint at(double value, int w, int h, double fraction)
{
    const QPointF p = PointAtAngle(AngleOf(value, kPiEdges), w, h, fraction);
    return QPoint(int(std::lround(p.x())), int(std::lround(p.y())));
}

QList<QVariant> list(std::initializer_list<double> values)
{
    QList<QVariant> out;
    for (double v : values)
        out << QVariant(v);
    return out;
}

} // namespace

TEST(PieGeometry, AngleRuleAndBothPis)
{
    EXPECT_EQ(AngleOf(38, kPiPoint), 0.0);
    EXPECT_DOUBLE_EQ(AngleOf(88, kPiPoint), kPiPoint);
    EXPECT_DOUBLE_EQ(AngleOf(0, kPiPoint), -0.76 * kPiPoint);
    // The two constants are not the same and give different angles.
    EXPECT_NE(AngleOf(100, kPiPoint), AngleOf(100, kPiEdges));
    EXPECT_NEAR(AngleOf(100, kPiPoint) - AngleOf(100, kPiEdges), 1.24 * (3.14159265358979 - 3.141592653589), 1e-15);

    const QPointF right = PointOnEllipse(38, 200, 100);
    EXPECT_DOUBLE_EQ(right.x(), 200);
    EXPECT_DOUBLE_EQ(right.y(), 50);
    const QPointF left = PointOnEllipse(88, 200, 100);
    EXPECT_NEAR(left.x(), 0, 1e-9);
    EXPECT_NEAR(left.y(), 50, 1e-9);
    const QPointF front = PointOnEllipse(63, 200, 100); // the front is below the centre
    EXPECT_NEAR(front.x(), 100, 1e-9);
    EXPECT_NEAR(front.y(), 100, 1e-9);
    const QPointF back = PointOnEllipse(13, 200, 100);
    EXPECT_NEAR(back.y(), 0, 1e-9);
    // 0 lies in the upper left, 136.8 degrees before the right-hand point.
    const QPointF zero = PointOnEllipse(0, 200, 100);
    EXPECT_NEAR(zero.x(), 100 + 100 * std::cos(-136.8 * 3.14159265358979 / 180), 1e-9);
    EXPECT_LT(zero.y(), 50);
}

TEST(PieGeometry, SlicesColoursAndRim)
{
    QList<QVariant> values = list({ 30.7, 20.2, 0, -5, 0.9, 49 });
    values << QVariant() << QVariant(10); // ends at the first empty entry
    EXPECT_EQ(CountValues(values), 6);
    SliceLayout layout = LayOutSlices(values);
    ASSERT_FALSE(layout.overflow);
    ASSERT_EQ(layout.spans.size(), 3u); // 0 and -5 draw nothing; 0.9 counts as nothing
    EXPECT_EQ(layout.spans[0].index, 0);
    EXPECT_EQ(layout.spans[0].start, 0);
    EXPECT_EQ(layout.spans[0].end, 30);
    EXPECT_EQ(layout.spans[1].start, 30);
    EXPECT_EQ(layout.spans[1].end, 50);
    EXPECT_EQ(layout.spans[2].index, 5);
    EXPECT_EQ(layout.spans[2].start, 50);
    EXPECT_EQ(layout.spans[2].end, 99);
    EXPECT_EQ(layout.lastEnd, 99);
    EXPECT_TRUE(LayOutSlices(list({ 60, 40.9 })).spans.size() == 2);
    EXPECT_TRUE(LayOutSlices(list({ 60, 41 })).overflow);

    const int upDown[] = { 0, 1, 2, 3, 4, 5, 4, 3, 2, 1, 0, 1, 2 };
    for (int k = 0; k < 13; ++k)
        EXPECT_EQ(ColourIndex(k, 5), upDown[k]) << k;
    EXPECT_EQ(ColourIndex(7, 0), 0);
    EXPECT_EQ(ColourIndex(2, 1), 0);
    EXPECT_EQ(ColourIndex(3, 1), 1);

    int s = 0, e = 0;
    EXPECT_FALSE(RimSpan(SliceSpan { 0, 0, 40 }, &s, &e));
    EXPECT_TRUE(RimSpan(SliceSpan { 0, 30, 50 }, &s, &e));
    EXPECT_EQ(s, 40);
    EXPECT_EQ(e, 50);
    EXPECT_TRUE(RimSpan(SliceSpan { 0, 60, 95 }, &s, &e));
    EXPECT_EQ(e, 86);
    EXPECT_FALSE(RimSpan(SliceSpan { 0, 86, 100 }, &s, &e));
}

TEST(Pie, HitMapReportsThePercentUnderAPixel)
{
    vmk::Pie pie;
    EXPECT_EQ(pie.CaptionText(), QStringLiteral("creating pie..."));
    int length = 24;
    pie.CreatePie(list({ 25, 25, 50 }), 240, 120, length);
    EXPECT_EQ(length, 144); // the height of the whole solid comes back
    EXPECT_EQ(pie.PieChartWidth(), 240);
    EXPECT_EQ(pie.PieChartHeight(), 120);
    EXPECT_EQ(pie.PieChartLength(), 24);
    EXPECT_EQ(pie.Picture4().size(), QSize(242, 146));
    EXPECT_EQ(pie.Picture3().size(), pie.Picture4().size());

    // Inside the top, at a known angle, the map gives that position in percent.
    for (int p : { 0, 5, 13, 20, 30, 37, 45, 55, 63, 70, 80, 88, 95, 99 }) {
        const QPoint px = at(p + 0.5, 240, 120, 0.75);
        EXPECT_EQ(pie.SliceAt(px.x(), px.y()), p) << p;
    }
    // On the rim, below the front.
    for (int p : { 45, 60, 80 }) {
        const QPoint px = at(p + 0.5, 240, 120, 1.0) + QPoint(0, 12);
        EXPECT_EQ(pie.SliceAt(px.x(), px.y()), p) << p;
    }
    // Outside the solid and outside the picture: nothing.
    EXPECT_EQ(pie.SliceAt(1, 1), -1);
    EXPECT_EQ(pie.SliceAt(239, 140), -1);
    EXPECT_EQ(pie.SliceAt(-3, 40), -1);
    EXPECT_EQ(pie.SliceAt(5000, 40), -1);

    // Each chart repaints the map first, at its own size.
    int other = 10;
    pie.CreatePie(list({ 100 }), 100, 60, other);
    EXPECT_EQ(pie.Picture4().size(), QSize(102, 72));
    EXPECT_EQ(pie.SliceAt(101, 71), -1);
    // Small slices are narrow there: the first pixel off the outline along the ray answers.
    for (int p : { 5, 30, 62, 90 }) {
        int found = -1;
        for (double f = 0.5; f < 0.99 && found <= 0; f += 0.01) {
            const QPoint q = at(p + 0.5, 100, 60, f);
            found = pie.SliceAt(q.x(), q.y());
        }
        EXPECT_EQ(found, p);
    }
}

// Over the whole top, every pixel that the map gives a position (outline pixels read 0)
// lies within one percent of that position, and nearly all of the top is covered.
TEST(Pie, HitMapMatchesTheGeometryEverywhere)
{
    for (QSize size : { QSize(240, 120), QSize(150, 60), QSize(400, 260) }) {
        vmk::Pie pie;
        int length = 16;
        pie.CreatePie(list({ 50, 50 }), size.width(), size.height(), length);
        const double w = size.width(), h = size.height();
        int inTop = 0, filled = 0, holes = 0, off = 0;
        for (int y = 0; y < size.height(); ++y) {
            for (int x = 0; x < size.width(); ++x) {
                const double nx = (x - w / 2) / (w / 2), ny = (y - h / 2) / (h / 2);
                if (nx * nx + ny * ny > 0.8)
                    continue;
                ++inTop;
                const int r = pie.SliceAt(x, y);
                if (r < 0)
                    ++holes;
                if (r <= 0)
                    continue;
                ++filled;
                double v = 38 + 50 * std::atan2(ny, nx) / kPiEdges;
                if (v < 0)
                    v += 100;
                double d = std::abs(v - (r + 0.5));
                d = std::min(d, 100 - d);
                if (d > 1.5)
                    ++off;
            }
        }
        EXPECT_EQ(off, 0) << size.width() << "x" << size.height();
        // The hundred radii are outline (grey 0); what lies between them is all filled.
        EXPECT_EQ(holes, 0) << size.width() << "x" << size.height();
        EXPECT_GT(filled, inTop / 4) << size.width() << "x" << size.height() << " " << filled << "/" << inTop;
    }
}

TEST(Pie, ChartColoursMaskAndOverflow)
{
    vmk::Pie pie;
    int length = 20;
    pie.CreatePie(list({ 25, 25, 50 }), 200, 100, length);
    ASSERT_TRUE(pie.ChartVisible());
    const QImage& chart = pie.Picture3();
    auto colourAt = [&](QPoint p) { return QColor(chart.pixel(p)); };
    EXPECT_EQ(colourAt(at(12, 200, 100, 0.7)), QColor(254, 176, 16));
    EXPECT_EQ(colourAt(at(37, 200, 100, 0.7)), QColor(0, 145, 215));
    EXPECT_EQ(colourAt(at(75, 200, 100, 0.7)), QColor(1, 169, 44));
    EXPECT_EQ(colourAt(at(60, 200, 100, 1.0) + QPoint(0, 10)), QColor(1, 122, 32)); // slice 2's rim
    EXPECT_EQ(colourAt(QPoint(100, 50)), QColor(0, 0, 0)); // the centre: radii meet
    EXPECT_EQ(colourAt(QPoint(1, 1)), QColor(255, 255, 255)); // background
    ASSERT_EQ(pie.Slices().size(), 3u);
    EXPECT_EQ(pie.Slices()[1].face, QColor(0, 145, 215));
    EXPECT_EQ(pie.Slices()[2].side, QColor(1, 122, 32));
    // The mask is black over the solid, clear beside it.
    EXPECT_EQ(QColor(pie.Picture1().pixel(100, 50)), QColor(0, 0, 0));
    EXPECT_EQ(QColor(pie.Picture1().pixel(100, 110)), QColor(0, 0, 0));
    EXPECT_EQ(QColor(pie.Picture1().pixel(1, 1)), QColor(255, 255, 255));

    // Whole parts above 100: dashes and no chart.
    int l2 = 20;
    pie.CreatePie(list({ 70, 31 }), 200, 100, l2);
    EXPECT_FALSE(pie.ChartVisible());
    EXPECT_EQ(pie.LblInfo()->text(), QStringLiteral("---------------------------"));
    // A fraction below 1 counts as nothing, a 0 or negative value draws no slice.
    int l3 = 20;
    pie.CreatePie(list({ 0.5, -3, 0, 100 }), 200, 100, l3);
    EXPECT_TRUE(pie.ChartVisible());
    EXPECT_TRUE(pie.LblInfo()->text().isEmpty());
    EXPECT_EQ(QColor(pie.Picture3().pixel(at(10, 200, 100, 0.6))), QColor(210, 44, 2)); // slice 3's colour
    EXPECT_EQ(QColor(pie.Picture3().pixel(at(60, 200, 100, 0.6))), QColor(210, 44, 2));
    EXPECT_FALSE(pie.Slices()[0].face.isValid())
        << pie.Slices().size() << " " << pie.Slices()[0].face.name().toStdString();

    // A bad argument leaves everything as it stands.
    int bad = 5;
    pie.CreatePie(list({ 50 }), -10, 100, bad);
    EXPECT_EQ(bad, 5);
    EXPECT_EQ(pie.PieChartWidth(), 200);
}

TEST(Pie, PaletteListAndBackcolor)
{
    vmk::Pie pie;
    EXPECT_TRUE(pie.ColorsUndefined());
    pie.ClearColors();
    pie.NewColor(QColor(10, 20, 30), QColor(1, 2, 3));
    EXPECT_FALSE(pie.ColorsUndefined());
    int length = 10;
    pie.CreatePie(list({ 30, 30, 40 }), 160, 80, length);
    // One pair only: every slice takes it.
    for (int p : { 15, 45, 80 })
        EXPECT_EQ(QColor(pie.Picture3().pixel(at(p, 160, 80, 0.7))), QColor(10, 20, 30)) << p;
    pie.NewColor(QColor(200, 0, 0), QColor(100, 0, 0));
    length = 10;
    pie.CreatePie(list({ 30, 30, 40 }), 160, 80, length);
    EXPECT_EQ(QColor(pie.Picture3().pixel(at(15, 160, 80, 0.7))), QColor(10, 20, 30));
    EXPECT_EQ(QColor(pie.Picture3().pixel(at(45, 160, 80, 0.7))), QColor(200, 0, 0));
    EXPECT_EQ(QColor(pie.Picture3().pixel(at(80, 160, 80, 0.7))), QColor(10, 20, 30)); // walks back down

    pie.setBackcolor(QColor(240, 240, 200));
    EXPECT_EQ(pie.Backcolor(), QColor(240, 240, 200));
    length = 10;
    pie.CreatePie(list({ 50 }), 160, 80, length);
    EXPECT_EQ(QColor(pie.Picture3().pixel(1, 1)), QColor(240, 240, 200));
    // The map keeps its own background, which no grey level matches.
    EXPECT_EQ(pie.SliceAt(1, 1), -1);
}

TEST(Pie, MouseEventsCarryThePercent)
{
    vmk::Pie pie;
    int length = 20;
    pie.CreatePie(list({ 40, 60 }), 200, 100, length);
    pie.resize(pie.sizeHint());
    pie.show();
    QSignalSpy down(&pie, &vmk::Pie::PieMouseDown);
    QSignalSpy up(&pie, &vmk::Pie::PieMouseUp);
    QSignalSpy move(&pie, &vmk::Pie::PieMouseMove);
    QSignalSpy out(&pie, &vmk::Pie::PieMouseOut);
    const QPoint inside = at(70.5, 200, 100, 0.7);
    QTest::mouseClick(&pie, Qt::LeftButton, Qt::NoModifier, inside);
    ASSERT_EQ(down.count(), 1);
    EXPECT_EQ(down.at(0).at(0).toInt(), 70);
    EXPECT_EQ(down.at(0).at(1).toInt(), 1);
    EXPECT_EQ(down.at(0).at(2).toInt(), inside.x());
    EXPECT_EQ(down.at(0).at(3).toInt(), inside.y());
    ASSERT_EQ(up.count(), 1);
    EXPECT_EQ(up.at(0).at(0).toInt(), 70);

    QMouseEvent over(QEvent::MouseMove, QPointF(inside), QPointF(inside), pie.mapToGlobal(QPointF(inside)),
        Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(&pie, &over);
    ASSERT_EQ(move.count(), 1);
    EXPECT_EQ(move.at(0).at(0).toInt(), 70);
    QMouseEvent away(QEvent::MouseMove, QPointF(2, 2), QPointF(2, 2), pie.mapToGlobal(QPointF(2, 2)), Qt::NoButton,
        Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(&pie, &away);
    ASSERT_EQ(out.count(), 1);
    EXPECT_EQ(out.at(0).at(0).toInt(), -1);
    // Down outside the pie raises nothing.
    QTest::mousePress(&pie, Qt::LeftButton, Qt::NoModifier, QPoint(2, 2));
    EXPECT_EQ(down.count(), 1);

    const QString dir = qEnvironmentVariable("VMK_SHOTS");
    if (!dir.isEmpty()) {
        QDir().mkpath(dir);
        pie.grab().save(dir + QStringLiteral("/Pie.png"));
        pie.Picture4().save(dir + QStringLiteral("/PieMap.png"));
    }
}
