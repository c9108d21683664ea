#pragma once

#include <QString>
#include <QStringView>

namespace vmk::zip
{

// One line of the lists of files to process or exclude, in the interface form:
//   "E:\Docs\a.txt"    that path
//   "E:\Docs\*.txt"    files of that folder whose names match the wildcard
//   "E:\Docs\*<r>"     the folder and everything below it ("<r>" after any mask)
//   "*.tmp", "*"       file names anywhere
// Matching ignores case, as the drive's own filesystem does. "*" and "?" are
// wildcards only in a line meant as a mask: a line made `literal` (its owner
// found a path spelled exactly so) names that one path, "*" and "?" included,
// and matches it with its case, so it never takes in a name differing in case.
class FileMask
{
public:
    explicit FileMask(const QString& line, bool literal = false);

    bool recursive() const { return m_recursive; }
    // The folder part without a trailing "\"; empty for a bare mask.
    QString folder() const { return m_folder; }
    // The wildcard on names; empty when the line names one path exactly.
    QString mask() const { return m_mask; }
    // The whole path when the line has no wildcard.
    QString exactPath() const { return m_exact; }
    bool isExact() const { return m_mask.isEmpty(); }

    // Does the path ("E:\Docs\a.txt" or "Docs\a.txt") fall under this line?
    bool matches(const QString& path) const;

    // "*" any run, "?" one character, case-insensitive.
    static bool wildcardMatch(QStringView pattern, QStringView text);

private:
    QString m_folder, m_mask, m_exact;
    bool m_recursive = false;
    Qt::CaseSensitivity m_case = Qt::CaseInsensitive;
};

} // namespace vmk::zip
