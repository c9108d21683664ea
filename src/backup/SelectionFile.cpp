#include "backup/SelectionFile.h"

#include "foundation/FileServices.h"
#include "foundation/Translate.h"
#include "platform/DriveMap.h"
#include "platform/NativeName.h"

#include <QFile>
#include <QSaveFile>

namespace vmk
{
namespace
{
const QByteArray kAdd = QByteArrayLiteral("[Add]");
const QByteArray kExclude = QByteArrayLiteral("[Exclude]");
const QByteArray kLineEnd = QByteArrayLiteral("\r\n");

bool holdsLineBreak(const QString& entry)
{
    return entry.contains(u'\r') || entry.contains(u'\n');
}
} // namespace

QByteArray SelectionFile::Compose(const QStringList& listAdd, const QStringList& listExc, QStringList* leftOut)
{
    QByteArray bytes;
    const auto section = [&](const QByteArray& title, const QStringList& entries) {
        bytes += title + kLineEnd;
        for (const QString& entry : entries) {
            if (holdsLineBreak(entry)) {
                if (leftOut)
                    *leftOut << entry;
                continue;
            }
            bytes += NativeName::toBytes(entry) + kLineEnd;
        }
    };
    section(kAdd, listAdd);
    section(kExclude, listExc);
    return bytes;
}

SelectionFile::Lists SelectionFile::Parse(const QByteArray& bytes)
{
    Lists lists;
    int section = 0;
    qsizetype at = 0;
    while (at < bytes.size()) {
        qsizetype end = at;
        while (end < bytes.size() && bytes[end] != '\r' && bytes[end] != '\n')
            ++end;
        const QByteArray line = bytes.mid(at, end - at);
        at = end;
        if (at < bytes.size() && bytes[at] == '\r')
            ++at;
        if (at < bytes.size() && bytes[at] == '\n')
            ++at;
        if (line == kAdd)
            section = 1;
        else if (line == kExclude)
            section = 2;
        else if (!line.isEmpty() && section == 1)
            lists.add << NativeName::fromBytes(line);
        else if (!line.isEmpty() && section == 2)
            lists.exclude << NativeName::fromBytes(line);
    }
    return lists;
}

QString SelectionFile::Save(const QString& path, const QStringList& listAdd, const QStringList& listExc)
{
    QStringList leftOut;
    const QByteArray bytes = Compose(listAdd, listExc, &leftOut);
    QSaveFile file(DriveMap::instance().toNative(path));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        return Translate(QStringLiteral("¡No se pudo guardar la configuración de respaldo!")) + QStringLiteral("\r\n")
            + path;
    if (!leftOut.isEmpty())
        return Translate(QStringLiteral("Estas rutas tienen un salto de línea y no se guardaron:"))
            + QStringLiteral("\r\n") + leftOut.join(QStringLiteral("\r\n"));
    return {};
}

SelectionFile::Lists SelectionFile::Load(const QString& path)
{
    QFile file(DriveMap::instance().toNative(path));
    if (!file.open(QIODevice::ReadOnly) || file.size() > kMaxBytes) {
        Lists refused;
        refused.failure = Translate(QStringLiteral("¡No se pudo leer la configuración de respaldo!"))
            + QStringLiteral("\r\n") + path;
        return refused;
    }
    const Lists read = Parse(file.read(kMaxBytes + 1));
    Lists kept;
    for (const QString& entry : read.add) {
        if (FileExists(entry))
            kept.add << entry;
    }
    for (const QString& entry : read.exclude) {
        if (FileExists(entry))
            kept.exclude << entry;
    }
    return kept;
}

} // namespace vmk
