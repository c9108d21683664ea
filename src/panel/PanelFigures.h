#pragma once

#include <QString>

namespace vmk::panel
{

// The space figures of the control panel. The panel redraws the pie and the
// three figures only when the free-space caption has changed, so a tick over an
// idle drive costs two statvfs calls and one string compare.
class PanelFigures
{
public:
    // Digits grouped by thousands with "," as the separator; zero gives an empty
    // text, as the "###,###" picture does (a digit placeholder shows no zero).
    static QString FormatThousands(qint64 value);
    // "###,###,###,###,###" followed by "M".
    static QString FormatMegabytes(qint64 megabytes);
    // A decimal text from the engine through "###,###,###,###"; a text that is
    // no number comes back as it is.
    static QString FormatCount(const QString& decimal);

    // One reading of the drive. Returns true when the display is stale, i.e. the
    // free caption differs from `shownFreeCaption`; the new captions and chart
    // values are then in the accessors. A total of zero (a drive that has just
    // vanished) leaves the chart values as they were.
    bool Update(const QString& shownFreeCaption, qint64 freeMB, qint64 totalMB);

    const QString& FreeCaption() const { return m_free; }
    const QString& UsedCaption() const { return m_used; }
    const QString& TotalCaption() const { return m_total; }
    double UsedPercent() const { return m_chart[0]; }
    double FreePercent() const { return m_chart[1]; }

private:
    QString m_free, m_used, m_total;
    double m_chart[2] = { 0, 0 };
};

} // namespace vmk::panel
