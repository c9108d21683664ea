#include "foundation/Translate.h"

#include "foundation/Globals.h"

#include <QFile>
#include <QStringList>
#include <QtGlobal>

// The resource lives in a static library, so its registration must be pulled in by hand.
static void initTranslationResource()
{
    Q_INIT_RESOURCE(translations);
}

namespace vmk {
namespace {

// Cells are stored with \r, \n, \t and \\ escaped, so that one row stays one line.
QString unescape(const QString& cell)
{
    QString out;
    out.reserve(cell.size());
    for (qsizetype i = 0; i < cell.size(); ++i) {
        const QChar c = cell.at(i);
        if (c != u'\\' || i + 1 == cell.size()) {
            out.append(c);
            continue;
        }
        const QChar next = cell.at(++i);
        if (next == u'r')
            out.append(u'\r');
        else if (next == u'n')
            out.append(u'\n');
        else if (next == u't')
            out.append(u'\t');
        else if (next == u'\\')
            out.append(u'\\');
        else
            out.append(c).append(next);
    }
    return out;
}

std::vector<TranslationRow> loadTable()
{
    initTranslationResource();
    std::vector<TranslationRow> rows;
    QFile file(QStringLiteral(":/vmk/translations.tsv"));
    if (!file.open(QIODevice::ReadOnly)) {
        qWarning("translation table missing: every text stays Spanish");
        return rows;
    }
    const QString all = QString::fromUtf8(file.readAll());
    const QStringList lines = all.split(u'\n');
    rows.reserve(lines.size());
    int lineNo = 0;
    for (QString line : lines) {
        ++lineNo;
        if (line.endsWith(u'\r'))
            line.chop(1);
        if (line.isEmpty() || line.startsWith(u'#'))
            continue;
        const QStringList fields = line.split(u'\t');
        if (fields.size() != 6) {
            qWarning("translation table line %d has %d fields, skipped", lineNo, int(fields.size()));
            continue;
        }
        TranslationRow row;
        row.key = unescape(fields.at(0));
        for (int i = 0; i < 5; ++i)
            row.cells[i] = unescape(fields.at(i + 1));
        rows.push_back(std::move(row));
    }
    return rows;
}

}  // namespace

const std::vector<TranslationRow>& TranslationTable()
{
    static const std::vector<TranslationRow> table = loadTable();
    return table;
}

QString Translate(const QString& text)
{
    const int language = G().LanguageIndex;
    if (language == 0)
        return text;
    // A linear run of whole, case-sensitive comparisons: the first row that matches wins.
    for (const TranslationRow& row : TranslationTable()) {
        if (row.key != text)
            continue;
        if (language >= 1 && language <= 5)
            return row.cells[language - 1];
        // Chinese has no column of its own, so every known text blanks out.
        if (language == 6)
            return QString();
        return text;
    }
    return text;
}

}  // namespace vmk
