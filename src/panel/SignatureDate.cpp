#include "panel/SignatureDate.h"

#include <QFile>
#include <QLocale>

namespace vmk::panel
{
namespace
{
// Month names of the caption. They are fixed rather than taken from the user's
// locale so that the caption always reads back into a date.
const char* const kMonths[12] = { "JAN", "FEB", "MAR", "APR", "MAY", "JUN", "JUL", "AUG", "SEP", "OCT", "NOV", "DEC" };
} // namespace

QString SignatureDate::ReadSignatureDate(const QString& indexNativePath)
{
    QFile f(indexNativePath);
    if (!f.open(QIODevice::ReadOnly))
        return QString();
    const QByteArray first = f.readLine();
    return CaptionFromIndexLine(QString::fromUtf8(first));
}

QString SignatureDate::CaptionFromIndexLine(const QString& line)
{
    QString field = line.mid(line.lastIndexOf(QLatin1Char('=')) + 1);
    const qsizetype lf = field.indexOf(QLatin1Char('\n'));
    if (lf >= 0)
        field.truncate(lf);
    field.remove(QLatin1Char('\r'));
    const qsizetype underscore = field.indexOf(QLatin1Char('_'));
    const QString digits = underscore >= 0 ? field.left(underscore) : field;
    // "####/##/##": the digits laid into four, two and two.
    QString laid = digits;
    if (digits.size() >= 8)
        laid = digits.left(4) + QLatin1Char('/') + digits.mid(4, 2) + QLatin1Char('/') + digits.mid(6);
    const QDate date = QDate::fromString(laid, QStringLiteral("yyyy/MM/dd"));
    if (!date.isValid())
        return laid.toUpper();
    return CaptionFromDate(date);
}

QString SignatureDate::CaptionFromDate(const QDate& date)
{
    if (!date.isValid())
        return QString();
    return QStringLiteral("%1/%2/%3")
        .arg(date.year(), 4, 10, QLatin1Char('0'))
        .arg(QLatin1String(kMonths[date.month() - 1]))
        .arg(date.day(), 2, 10, QLatin1Char('0'));
}

QDate SignatureDate::DateFromCaption(const QString& caption)
{
    const QStringList parts = caption.trimmed().split(QLatin1Char('/'));
    if (parts.size() != 3)
        return QDate();
    int month = 0;
    for (int m = 0; m < 12; ++m)
        if (parts[1].compare(QLatin1String(kMonths[m]), Qt::CaseInsensitive) == 0)
            month = m + 1;
    bool okYear = false, okDay = false;
    const int year = parts[0].toInt(&okYear);
    const int day = parts[2].toInt(&okDay);
    if (!okYear || !okDay || month == 0)
        return QDate();
    return QDate(year, month, day);
}

qint64 SignatureDate::DaysOld(const QString& caption, const QDate& today)
{
    const QDate d = DateFromCaption(caption);
    if (!d.isValid() || !today.isValid())
        return -1;
    return d.daysTo(today);
}

bool SignatureDate::NeedsUpdateWarning(const QString& caption, const QDate& today)
{
    return DaysOld(caption, today) > 5;
}

} // namespace vmk::panel
