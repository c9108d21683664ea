#pragma once

#include <QDate>
#include <QString>

namespace vmk::panel
{

// The date of the signature set, read from the first line of idx\master.idx,
// whose text ends in "=" and a field "<yyyymmdd>_<version>_<tail>".
class SignatureDate
{
public:
    // The caption of Label8, "yyyy/mmm/dd" upper-cased (e.g. "2024/MAR/05"),
    // or an empty text when the index file cannot be read.
    static QString ReadSignatureDate(const QString& indexNativePath);
    // The caption for a first line of the index.
    static QString CaptionFromIndexLine(const QString& line);
    static QString CaptionFromDate(const QDate& date);
    // The date a caption stands for; invalid when the caption is no date.
    static QDate DateFromCaption(const QString& caption);
    // Whole calendar days from the caption's date to `today`; -1 for no date.
    static qint64 DaysOld(const QString& caption, const QDate& today);
    // The warning is asked when the set is more than five days old.
    static bool NeedsUpdateWarning(const QString& caption, const QDate& today);
};

} // namespace vmk::panel
