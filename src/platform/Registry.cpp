#include "platform/Registry.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QSaveFile>
#include <QStandardPaths>

namespace vmk
{
namespace
{
QString& fileSlot()
{
    static QString path;
    return path;
}

struct Key {
    QString name;
    std::optional<QString> value;
};

// Lower-cased key -> key. The file: "[key]" lines, each followed by an optional
// "@=value" line, UTF-8, CR LF.
using KeyTable = QMap<QString, Key>;

KeyTable load()
{
    KeyTable table;
    QFile f(Registry::file());
    if (!f.open(QIODevice::ReadOnly))
        return table;
    QString current;
    for (QByteArray raw : f.readAll().split('\n')) {
        if (raw.endsWith('\r'))
            raw.chop(1);
        const QString line = QString::fromUtf8(raw);
        if (line.startsWith(u'[') && line.endsWith(u']')) {
            current = line.mid(1, line.size() - 2);
            table.insert(current.toLower(), Key { current, std::nullopt });
        } else if (line.startsWith(QLatin1String("@=")) && !current.isEmpty()) {
            table[current.toLower()].value = line.mid(2);
        }
    }
    return table;
}

bool save(const KeyTable& table)
{
    QDir().mkpath(QFileInfo(Registry::file()).absolutePath());
    QSaveFile f(Registry::file());
    if (!f.open(QIODevice::WriteOnly))
        return false;
    QByteArray out;
    for (const Key& k : table) {
        out += '[' + k.name.toUtf8() + "]\r\n";
        if (k.value)
            out += "@=" + k.value->toUtf8() + "\r\n";
    }
    f.write(out);
    return f.commit();
}

QString normalise(const QString& key)
{
    QString k = key;
    while (k.endsWith(u'\\'))
        k.chop(1);
    while (k.startsWith(u'\\'))
        k.remove(0, 1);
    return k;
}
} // namespace

void Registry::setFile(const QString& nativePath)
{
    fileSlot() = nativePath;
}

QString Registry::file()
{
    if (fileSlot().isEmpty())
        return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
            + QStringLiteral("/Vormak/classes-root.reg");
    return fileSlot();
}

bool Registry::keyExists(const QString& key)
{
    return load().contains(normalise(key).toLower());
}

bool Registry::createKey(const QString& key)
{
    const QString k = normalise(key);
    if (k.isEmpty())
        return false;
    KeyTable table = load();
    bool changed = false;
    const QStringList parts = k.split(u'\\');
    for (qsizetype i = 1; i <= parts.size(); ++i) {
        const QString sub = parts.mid(0, i).join(u'\\');
        if (!table.contains(sub.toLower())) {
            table.insert(sub.toLower(), Key { sub, std::nullopt });
            changed = true;
        }
    }
    return !changed || save(table);
}

bool Registry::deleteKey(const QString& key)
{
    const QString k = normalise(key).toLower();
    KeyTable table = load();
    if (!table.contains(k))
        return false;
    for (auto it = table.begin(); it != table.end(); ++it) {
        if (it.key().startsWith(k + u'\\'))
            return false;
    }
    table.remove(k);
    return save(table);
}

bool Registry::setDefaultValue(const QString& key, const QString& value)
{
    const QString k = normalise(key);
    KeyTable table = load();
    if (!table.contains(k.toLower()))
        return false;
    if (value.contains(u'\n') || value.contains(u'\r'))
        return false;
    table[k.toLower()].value = value;
    return save(table);
}

std::optional<QString> Registry::defaultValue(const QString& key)
{
    const KeyTable table = load();
    const auto it = table.find(normalise(key).toLower());
    if (it == table.end())
        return std::nullopt;
    return it->value;
}

QStringList Registry::keys()
{
    QStringList out;
    for (const Key& k : load())
        out << k.name;
    return out;
}

} // namespace vmk
