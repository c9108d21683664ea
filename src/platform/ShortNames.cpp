#include "platform/ShortNames.h"

#include <QDir>
#include <QStringList>

namespace vmk
{
namespace
{
bool isShortChar(QChar c)
{
    if (c.unicode() > 127)
        return false;
    if (c.isLetterOrNumber())
        return true;
    return QStringLiteral("!#$%&'()@^_`{}~-").contains(c);
}

// Base and extension as FAT cuts them: upper case, spaces and extra dots dropped,
// other characters that 8.3 cannot hold written as "_".
void cutName(const QString& name, QString& base, QString& ext)
{
    QString n = name;
    while (n.startsWith(u'.'))
        n.remove(0, 1);
    const qsizetype dot = n.lastIndexOf(u'.');
    QString b = dot >= 0 ? n.left(dot) : n;
    QString e = dot >= 0 ? n.mid(dot + 1) : QString();
    auto clean = [](const QString& s) {
        QString out;
        for (QChar c : s) {
            if (c == u' ' || c == u'.')
                continue;
            out += isShortChar(c) ? c.toUpper() : QChar(u'_');
        }
        return out;
    };
    base = clean(b);
    ext = clean(e).left(3);
    if (base.isEmpty())
        base = QStringLiteral("_");
}

QStringList entriesOf(const QString& folder)
{
    QDir d(folder);
    return d.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}
} // namespace

bool ShortNames::isShortValid(const QString& name)
{
    if (name.isEmpty() || name.startsWith(u'.') || name.count(u'.') > 1)
        return false;
    const qsizetype dot = name.indexOf(u'.');
    const QString base = dot >= 0 ? name.left(dot) : name;
    const QString ext = dot >= 0 ? name.mid(dot + 1) : QString();
    if (base.isEmpty() || base.size() > 8 || ext.size() > 3 || (dot >= 0 && ext.isEmpty()))
        return false;
    for (QChar c : base + ext) {
        if (!isShortChar(c))
            return false;
    }
    return true;
}

QString ShortNames::aliasFor(const QString& folder, const QString& name)
{
    if (isShortValid(name))
        return name;
    QString base, ext;
    cutName(name, base, ext);
    // Number among the siblings that need an alias and share its first six characters.
    int n = 1;
    for (const QString& sibling : entriesOf(folder)) {
        if (sibling == name)
            break;
        if (isShortValid(sibling))
            continue;
        QString sb, se;
        cutName(sibling, sb, se);
        if (sb.left(6) == base.left(6) && se == ext)
            ++n;
    }
    const QString tail = u'~' + QString::number(n);
    QString alias = base.left(8 - tail.size()) + tail;
    if (!ext.isEmpty())
        alias += u'.' + ext;
    return alias;
}

QString ShortNames::resolve(const QString& folder, const QString& alias)
{
    for (const QString& entry : entriesOf(folder)) {
        if (isShortValid(entry))
            continue;
        if (aliasFor(folder, entry).compare(alias, Qt::CaseInsensitive) == 0)
            return entry;
    }
    return {};
}

} // namespace vmk
