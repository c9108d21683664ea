#include "panel/PanelFigures.h"

namespace vmk::panel
{

QString PanelFigures::FormatThousands(qint64 value)
{
    if (value == 0)
        return QString();
    const bool negative = value < 0;
    QString digits = QString::number(negative ? -value : value);
    for (qsizetype i = digits.size() - 3; i > 0; i -= 3)
        digits.insert(i, QLatin1Char(','));
    return negative ? QLatin1Char('-') + digits : digits;
}

QString PanelFigures::FormatMegabytes(qint64 megabytes)
{
    return FormatThousands(megabytes) + QLatin1Char('M');
}

QString PanelFigures::FormatCount(const QString& decimal)
{
    bool ok = false;
    const qint64 n = decimal.trimmed().toLongLong(&ok);
    return ok ? FormatThousands(n) : decimal;
}

bool PanelFigures::Update(const QString& shownFreeCaption, qint64 freeMB, qint64 totalMB)
{
    const QString free = FormatMegabytes(freeMB);
    if (free == shownFreeCaption)
        return false;
    if (totalMB != 0) {
        m_chart[0] = double(totalMB - freeMB) / double(totalMB) * 100.0;
        m_chart[1] = 100.0 - m_chart[0];
    }
    m_free = free;
    m_used = FormatMegabytes(totalMB - freeMB);
    m_total = FormatMegabytes(totalMB);
    return true;
}

} // namespace vmk::panel
