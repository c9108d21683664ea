#pragma once

#include <QColor>
#include <QImage>
#include <QList>
#include <QVariant>
#include <QWidget>

#include <vector>

class QLabel;

namespace vmk
{

// The panel's pie chart with a 3-D look: an elliptic top, a rim of a given length along
// the front, each slice in its face and side colours. Every chart is preceded by a hit
// map of the same size in which a pixel's grey level is its position on the pie in
// percent; the mouse events report that position. All pictures are drawn without
// smoothing so that the map is exact.
class Pie : public QWidget
{
    Q_OBJECT
public:
    explicit Pie(QWidget* parent = nullptr);

    // Draws the chart. Values are percents ending at the first empty entry, meant to add
    // up to 100 at most. `length` is the rim length and comes back with `height` added:
    // the height of the whole solid.
    void CreatePie(const QList<QVariant>& values, int width, int height, int& length);

    void NewColor(const QColor& face, const QColor& side);
    void ClearColors();

    QColor Backcolor() const { return m_backColor; }
    void setBackcolor(const QColor& color);

    int PieChartWidth() const { return m_pieChartWidth; }
    int PieChartHeight() const { return m_pieChartHeight; }
    int PieChartLength() const { return m_pieChartLength; }
    QString CaptionText() const { return m_captionText; }
    bool ColorsUndefined() const { return m_colorsUndefined; }

    // The position on the pie, in percent, under the point (x, y) of the hit map; -1
    // where there is none.
    int SliceAt(int x, int y) const;

    // The colours each value's slice was drawn in (invalid for values not drawn).
    struct SliceRecord {
        QColor face;
        QColor side;
    };
    const std::vector<SliceRecord>& Slices() const { return m_slices; }

    // The pictures: Picture1 the black mask of the outline, Picture2 the chart being
    // drawn, Picture3 the chart at rest (what is shown), Picture4 the hit map.
    const QImage& Picture1() const { return m_picture1; }
    const QImage& Picture2() const { return m_picture2; }
    const QImage& Picture3() const { return m_picture3; }
    const QImage& Picture4() const { return m_picture4; }
    bool ChartVisible() const { return m_chartVisible; }

    QLabel* LblInfo() const { return m_lblInfo; }
    // Label1 to Label5 by number; nullptr outside 1..5.
    QLabel* Label(int n) const;

    QSize sizeHint() const override;

signals:
    void PieMouseDown(int result, int button, int x, int y);
    void PieMouseUp(int result, int button, int x, int y);
    void PieMouseMove(int result, int button, int x, int y);
    void PieMouseOut(int result, int button, int x, int y);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    void drawPie(const QList<QVariant>& values, int width, int height, int length, bool mapPass);
    void loadDefaultPalette();
    QColor faceColor(int index, int k, bool mapPass) const;
    QColor sideColor(int index, int k, bool mapPass) const;

    std::vector<QColor> m_faceColors;
    std::vector<QColor> m_sideColors;
    bool m_colorsUndefined = true;
    int m_pieChartWidth = 0;
    int m_pieChartHeight = 0;
    int m_pieChartLength = 0;
    int m_mapPass = 0;
    QString m_captionText;
    std::vector<SliceRecord> m_slices;
    QColor m_backColor = QColor(255, 255, 255);
    QImage m_picture1;
    QImage m_picture2;
    QImage m_picture3;
    QImage m_picture4;
    bool m_chartVisible = false;
    QLabel* m_lblInfo;
    QLabel* m_labels[5];
};

} // namespace vmk
