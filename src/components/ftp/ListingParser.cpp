#include "components/ftp/ListingParser.h"

#include "platform/NativeName.h"

#include <array>

namespace vmk::ftp::ListingParser
{
namespace
{
bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

bool allDigits(QByteArrayView v)
{
    if (v.isEmpty())
        return false;
    for (char c : v) {
        if (c < '0' || c > '9')
            return false;
    }
    return true;
}

// A number of at most 18 digits (no overflow); -1 otherwise.
qint64 number(QByteArrayView v)
{
    if (!allDigits(v) || v.size() > 18)
        return -1;
    qint64 n = 0;
    for (char c : v)
        n = n * 10 + (c - '0');
    return n;
}

// The name as the rest of the code holds it, or nullopt for one no operation
// can reach.
std::optional<QString> usableName(QByteArrayView bytes)
{
    if (bytes.isEmpty() || bytes == "." || bytes == "..")
        return std::nullopt;
    for (char c : bytes) {
        if (c == '/' || c == '\0' || c == '\r' || c == '\n')
            return std::nullopt;
    }
    return NativeName::fromBytes(bytes.toByteArray());
}

struct Token {
    qsizetype begin, end;
};

QList<Token> tokens(QByteArrayView line)
{
    QList<Token> out;
    qsizetype i = 0;
    while (i < line.size()) {
        while (i < line.size() && isBlank(line[i]))
            ++i;
        if (i >= line.size())
            break;
        const qsizetype begin = i;
        while (i < line.size() && !isBlank(line[i]))
            ++i;
        out.append({ begin, i });
    }
    return out;
}

int monthNumber(QByteArrayView v)
{
    static constexpr std::array<const char*, 12> kMonths { "jan", "feb", "mar", "apr", "may", "jun", "jul", "aug",
        "sep", "oct", "nov", "dec" };
    if (v.size() < 3)
        return 0;
    for (int m = 0; m < 12; ++m) {
        bool same = true;
        for (int k = 0; k < 3; ++k) {
            char c = v[k];
            if (c >= 'A' && c <= 'Z')
                c = static_cast<char>(c - 'A' + 'a');
            same = same && c == kMonths[m][k];
        }
        if (same)
            return m + 1;
    }
    return 0;
}

// "14:05" or "14:05:09" as a time; invalid otherwise.
QTime clockTime(QByteArrayView v)
{
    if (v.size() != 5 && v.size() != 8)
        return {};
    if (v[2] != ':' || (v.size() == 8 && v[5] != ':'))
        return {};
    const qint64 h = number(v.sliced(0, 2));
    const qint64 m = number(v.sliced(3, 2));
    const qint64 s = v.size() == 8 ? number(v.sliced(6, 2)) : 0;
    if (h < 0 || m < 0 || s < 0)
        return {};
    return QTime(static_cast<int>(h), static_cast<int>(m), static_cast<int>(s));
}

// A month word: letters only (any script), as servers in other languages write them.
bool monthLike(QByteArrayView v)
{
    if (v.size() < 3 || v.size() > 12)
        return false;
    for (char c : v) {
        if ((c >= '0' && c <= '9') || c == ':' || c == '-' || c == '/' || c == ',')
            return false;
    }
    return true;
}

bool unixTypeChar(char c)
{
    return c == '-' || c == 'd' || c == 'l' || c == 'b' || c == 'c' || c == 'p' || c == 's';
}

std::optional<RemoteEntry> parseUnix(QByteArrayView line, QDate today)
{
    if (line.size() < 11 || !unixTypeChar(line[0]))
        return std::nullopt;
    for (int k = 1; k < 10; ++k) {
        const char c = line[k];
        if (c != '-' && c != 'r' && c != 'w' && c != 'x' && c != 's' && c != 'S' && c != 't' && c != 'T' && c != 'l'
            && c != 'L')
            return std::nullopt;
    }
    const QList<Token> t = tokens(line);
    auto text = [&](qsizetype i) { return line.sliced(t[i].begin, t[i].end - t[i].begin); };
    for (qsizetype i = 1; i + 2 < t.size(); ++i) {
        if (!allDigits(text(i)))
            continue;
        QDate date;
        QTime time;
        qsizetype last = -1; // the date's last token: the name follows it after one blank
        if (i + 3 < t.size() && monthLike(text(i + 1)) && allDigits(text(i + 2)) && text(i + 2).size() <= 2) {
            const int month = monthNumber(text(i + 1));
            const int day = static_cast<int>(number(text(i + 2)));
            const QByteArrayView when = text(i + 3);
            if (when.size() == 4 && allDigits(when)) {
                date = QDate(static_cast<int>(number(when)), month, day);
            } else if (clockTime(when).isValid()) {
                time = clockTime(when);
                // A time instead of a year: within the last months, so this year,
                // unless that lies in the future.
                date = QDate(today.year(), month, day);
                if (date.isValid() && date > today.addDays(1))
                    date = QDate(today.year() - 1, month, day);
            } else {
                continue;
            }
            last = i + 3;
        } else if (text(i + 1).size() == 10 && text(i + 1)[4] == '-' && text(i + 1)[7] == '-'
            && clockTime(text(i + 2)).isValid()) {
            const QByteArrayView d = text(i + 1);
            date = QDate(static_cast<int>(number(d.sliced(0, 4))), static_cast<int>(number(d.sliced(5, 2))),
                static_cast<int>(number(d.sliced(8, 2))));
            time = clockTime(text(i + 2));
            last = i + 2;
        } else {
            continue;
        }
        const qsizetype nameStart = t[last].end + 1;
        if (nameStart >= line.size())
            return std::nullopt;
        QByteArrayView name = line.sliced(nameStart);
        RemoteEntry e;
        e.folder = line[0] == 'd';
        e.link = line[0] == 'l';
        if (e.link) {
            const qsizetype arrow = name.indexOf(QByteArrayView(" -> "));
            if (arrow > 0)
                name = name.first(arrow);
        }
        if (line[0] == '-')
            e.size = number(text(i));
        if (date.isValid())
            e.modified = QDateTime(date, time.isValid() ? time : QTime(0, 0), Qt::UTC);
        const auto usable = usableName(name);
        if (!usable)
            return std::nullopt;
        e.name = *usable;
        return e;
    }
    return std::nullopt;
}

// "11-23-26  02:15PM       <DIR>          name" and
// "11-23-2026  14:15                   5 name": the date, the time, the size or
// <DIR> in a fixed-width field, then the name.
std::optional<RemoteEntry> parseDos(QByteArrayView line)
{
    qsizetype p = 0;
    auto digits = [&](qsizetype count) -> qint64 {
        if (p + count > line.size())
            return -1;
        const qint64 n = number(line.sliced(p, count));
        if (n >= 0)
            p += count;
        return n;
    };
    const qint64 month = digits(2);
    if (month < 0 || p >= line.size() || (line[p] != '-' && line[p] != '/'))
        return std::nullopt;
    ++p;
    const qint64 day = digits(2);
    if (day < 0 || p >= line.size() || (line[p] != '-' && line[p] != '/'))
        return std::nullopt;
    ++p;
    qint64 year = digits(4);
    if (year < 0) {
        year = digits(2);
        if (year < 0)
            return std::nullopt;
        year += year < 70 ? 2000 : 1900;
    }
    if (p >= line.size() || !isBlank(line[p]))
        return std::nullopt;
    while (p < line.size() && isBlank(line[p]))
        ++p;
    qint64 hour = digits(2);
    if (hour < 0)
        hour = digits(1);
    if (hour < 0 || p >= line.size() || line[p] != ':')
        return std::nullopt;
    ++p;
    const qint64 minute = digits(2);
    if (minute < 0)
        return std::nullopt;
    if (p + 1 < line.size() && (line[p + 1] == 'M' || line[p + 1] == 'm')) {
        const char half = line[p];
        if (half == 'P' || half == 'p') {
            if (hour < 12)
                hour += 12;
        } else if (half == 'A' || half == 'a') {
            if (hour == 12)
                hour = 0;
        } else {
            return std::nullopt;
        }
        p += 2;
    }
    if (p >= line.size() || !isBlank(line[p]))
        return std::nullopt;
    while (p < line.size() && isBlank(line[p]))
        ++p;
    RemoteEntry e;
    qsizetype nameStart = -1;
    if (line.sliced(p).startsWith(QByteArrayView("<DIR>"))) {
        e.folder = true;
        p += 5;
        // The name column lies ten blanks after <DIR>; blanks beyond belong to the name.
        if (p + 10 < line.size() && line.sliced(p, 10) == QByteArrayView("          ")) {
            nameStart = p + 10;
        } else {
            while (p < line.size() && isBlank(line[p]))
                ++p;
            nameStart = p;
        }
    } else {
        const qsizetype begin = p;
        while (p < line.size() && line[p] >= '0' && line[p] <= '9')
            ++p;
        e.size = number(line.sliced(begin, p - begin));
        if (e.size < 0 || p >= line.size() || !isBlank(line[p]))
            return std::nullopt;
        nameStart = p + 1; // one blank, then the name with its own blanks
    }
    if (nameStart >= line.size())
        return std::nullopt;
    const QDate date(static_cast<int>(year), static_cast<int>(month), static_cast<int>(day));
    const QTime time(static_cast<int>(hour), static_cast<int>(minute));
    if (date.isValid() && time.isValid())
        e.modified = QDateTime(date, time, Qt::UTC);
    const auto usable = usableName(line.sliced(nameStart));
    if (!usable)
        return std::nullopt;
    e.name = *usable;
    return e;
}

template<typename Parse> QList<RemoteEntry> eachLine(const QByteArray& listing, Parse parse)
{
    QList<RemoteEntry> out;
    qsizetype from = 0;
    while (from < listing.size()) {
        qsizetype end = listing.indexOf('\n', from);
        if (end < 0)
            end = listing.size();
        QByteArrayView line(listing.constData() + from, end - from);
        if (line.endsWith('\r'))
            line.chop(1);
        if (auto e = parse(line))
            out.append(std::move(*e));
        from = end + 1;
    }
    return out;
}
} // namespace

std::optional<RemoteEntry> parseMlsdLine(QByteArrayView line)
{
    const qsizetype space = line.indexOf(' ');
    if (space < 0)
        return std::nullopt;
    RemoteEntry e;
    bool typed = false;
    const QByteArrayView facts = line.first(space);
    qsizetype from = 0;
    while (from < facts.size()) {
        qsizetype end = facts.indexOf(';', from);
        if (end < 0)
            end = facts.size();
        const QByteArrayView fact = facts.sliced(from, end - from);
        from = end + 1;
        const qsizetype eq = fact.indexOf('=');
        if (eq <= 0)
            continue;
        const QByteArray key = fact.first(eq).toByteArray().toLower();
        const QByteArrayView value = fact.sliced(eq + 1);
        if (key == "type") {
            const QByteArray type = value.toByteArray().toLower();
            if (type == "cdir" || type == "pdir")
                return std::nullopt;
            typed = true;
            e.folder = type == "dir";
            e.link = type.startsWith("os.unix=slink") || type.startsWith("os.unix=symlink");
        } else if (key == "size") {
            e.size = number(value);
        } else if (key == "modify" && value.size() >= 14) {
            const QDate d(static_cast<int>(number(value.sliced(0, 4))), static_cast<int>(number(value.sliced(4, 2))),
                static_cast<int>(number(value.sliced(6, 2))));
            const QTime t(static_cast<int>(number(value.sliced(8, 2))), static_cast<int>(number(value.sliced(10, 2))),
                static_cast<int>(number(value.sliced(12, 2))));
            if (d.isValid() && t.isValid())
                e.modified = QDateTime(d, t, Qt::UTC);
        }
    }
    if (!typed)
        return std::nullopt;
    if (e.folder)
        e.size = -1;
    const auto usable = usableName(line.sliced(space + 1));
    if (!usable)
        return std::nullopt;
    e.name = *usable;
    return e;
}

std::optional<RemoteEntry> parseListLine(QByteArrayView line, QDate today)
{
    if (auto e = parseUnix(line, today))
        return e;
    return parseDos(line);
}

QList<RemoteEntry> parseMlsd(const QByteArray& listing)
{
    return eachLine(listing, [](QByteArrayView line) { return parseMlsdLine(line); });
}

QList<RemoteEntry> parseList(const QByteArray& listing, QDate today)
{
    return eachLine(listing, [today](QByteArrayView line) { return parseListLine(line, today); });
}

} // namespace vmk::ftp::ListingParser
