#include "components/zip/FileMask.h"

namespace vmk::zip
{

FileMask::FileMask(const QString& line, bool literal)
{
    // Blanks are part of names: a name may begin or end with one.
    QString s = line;
    if (s.endsWith(QLatin1String("<r>"), Qt::CaseInsensitive)) {
        m_recursive = true;
        s.chop(3);
    }
    if (literal) {
        m_exact = s;
        m_case = Qt::CaseSensitive;
        return;
    }
    if (s.endsWith('\\')) {
        m_folder = s.chopped(1);
        m_mask = QStringLiteral("*");
        return;
    }
    const qsizetype cut = s.lastIndexOf('\\');
    const QString last = cut < 0 ? s : s.mid(cut + 1);
    if (last.contains('*') || last.contains('?')) {
        m_folder = cut < 0 ? QString() : s.left(cut);
        m_mask = last;
    } else {
        m_exact = s;
    }
}

bool FileMask::matches(const QString& path) const
{
    if (isExact()) {
        if (path.compare(m_exact, m_case) == 0)
            return true;
        // A folder named exactly with "<r>" covers what lies below it.
        return m_recursive && path.startsWith(m_exact + '\\', m_case);
    }
    const qsizetype cut = path.lastIndexOf('\\');
    const QStringView name = cut < 0 ? QStringView(path) : QStringView(path).mid(cut + 1);
    if (!wildcardMatch(m_mask, name))
        return false;
    if (m_folder.isEmpty())
        return true;
    const QStringView dir = cut < 0 ? QStringView() : QStringView(path).left(cut);
    if (dir.compare(m_folder, Qt::CaseInsensitive) == 0)
        return true;
    return m_recursive && dir.size() > m_folder.size() && dir.at(m_folder.size()) == '\\'
        && dir.left(m_folder.size()).compare(m_folder, Qt::CaseInsensitive) == 0;
}

bool FileMask::wildcardMatch(QStringView pattern, QStringView text)
{
    // Iterative match with one backtrack point for the last "*".
    qsizetype p = 0, t = 0, star = -1, mark = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            mark = t;
        } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p].toCaseFolded() == text[t].toCaseFolded())) {
            ++p;
            ++t;
        } else if (star >= 0) {
            p = star + 1;
            t = ++mark;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*')
        ++p;
    return p == pattern.size();
}

} // namespace vmk::zip
