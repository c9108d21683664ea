#include "foundation/ForceDelete.h"

#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "foundation/Progress.h"
#include "foundation/Translate.h"
#include "platform/DriveMap.h"
#include "platform/FileRemoval.h"
#include "platform/FileReplace.h"
#include "platform/PathForm.h"
#include "platform/RunAndWait.h"
#include "platform/ShortNames.h"
#include "platform/SpecialFolders.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMultiHash>
#include <QSaveFile>

#include <utility>

namespace vmk
{
namespace
{
HelperRunner& runnerSlot()
{
    static HelperRunner runner
        = [](const QString& program, const QStringList& arguments) { platform::RunAndWait(program, arguments); };
    return runner;
}

void runHelper(const QString& program, const QString& path)
{
    HelperRunner runner = runnerSlot();
    if (runner)
        runner(program, { path });
}

// A host path ("/...", which PathForm accepts) is taken as it is, never as a
// path on the drive of the current folder.
QString nativeOf(const QString& path)
{
    return path.startsWith(u'/') ? path : DriveMap::instance().toNative(path);
}

// Anything under the host name first resolved, a dangling link included: that too
// is still to remove. Resolving the path again once the entry is gone would find
// a name that differs only in case and take it for the file.
bool stillThere(const QString& native)
{
    return FileRemoval::entryExists(native);
}
} // namespace

HelperRunner SetHelperRunner(HelperRunner runner)
{
    return std::exchange(runnerSlot(), std::move(runner));
}

void ForceDelete(const QString& path)
{
    if (!PathForm::namesEntry(path)) {
        ShowMessage(
            Translate(QStringLiteral("¡Ruta no válida, no se elimina nada!")) + QStringLiteral("\r\n") + path, 0);
        return;
    }
    SetMousePointer(11);
    const QString native = nativeOf(path);
    FileRemoval::makeWritableAndRemove(native, false);
    if (stillThere(native)) {
        const bool scheduled = ScheduleDeleteAtReboot(path);
        runHelper(QStringLiteral("Unlock.exe"), path);
        FileRemoval::makeWritable(native);
        runHelper(QStringLiteral("Delete.exe"), path);
        if (scheduled && stillThere(native))
            ShowMessage(QStringLiteral("¡El archivo será eliminado en el próximo reinicio de su sistema!"), 0);
    }
    SetMousePointer(1);
}

QString GetShortPath(const QString& path)
{
    if (!DriveMap::hasDriveLetter(path) || !QFileInfo::exists(nativeOf(path)))
        return {};
    const DriveMap& map = DriveMap::instance();
    const auto drive = map.drive(path[0]);
    if (!drive)
        return {};
    QString folder = drive->root;
    QString out = path.left(2);
    const QStringList parts = path.mid(2).split(u'\\', Qt::SkipEmptyParts);
    for (const QString& part : parts) {
        // The component as the host spells it (the path may differ in case).
        const QString native = map.toNative(out + u'\\' + part);
        const QString name = QFileInfo(native).fileName();
        out += u'\\' + DriveMap::encodeName(ShortNames::aliasFor(folder, name));
        folder = native;
    }
    if (parts.isEmpty() || path.endsWith(u'\\'))
        out += u'\\';
    return out;
}

QString PendingRemovalListPath()
{
    const QString system = G().SystemFolder;
    if (system.isEmpty())
        return SpecialFolders::system() + QStringLiteral("/WinInit.ini");
    return DriveMap::instance().toNative(system + QStringLiteral("\\WinInit.ini"));
}

namespace
{
// Short names here are computed from the folder's other entries, so unlike on the
// drive's original filesystem they can move: once the file an entry meant is gone,
// its short name may come to stand for a neighbour. Beside the rename list we keep
// which long path each entry meant, and the next start removes a file only while
// its short name still leads to that same file.
QString longNamesPath(const QString& list)
{
    return list + QStringLiteral(".names");
}

void rememberLongName(const QString& list, const QString& shortPath, const QString& longPath)
{
    QFile old(longNamesPath(list));
    QByteArray content;
    if (old.open(QIODevice::ReadOnly))
        content = old.readAll();
    old.close();
    content += shortPath.toUtf8() + '\t' + longPath.toUtf8() + "\r\n";
    QSaveFile f(longNamesPath(list));
    if (f.open(QIODevice::WriteOnly)) {
        f.write(content);
        f.commit();
    }
}

QMultiHash<QString, QString> readLongNames(const QString& list)
{
    QMultiHash<QString, QString> names;
    QFile f(longNamesPath(list));
    if (!f.open(QIODevice::ReadOnly))
        return names;
    for (QByteArray raw : f.readAll().split('\n')) {
        if (raw.endsWith('\r'))
            raw.chop(1);
        const qsizetype tab = raw.indexOf('\t');
        if (tab > 0)
            names.insert(QString::fromUtf8(raw.left(tab)), QString::fromUtf8(raw.mid(tab + 1)));
    }
    return names;
}

// True when the entry's short path still names one of the files it was written for
// (or when no record exists, as for a list written by hand).
bool stillMeantFile(const QMultiHash<QString, QString>& names, const QString& shortPath, const QString& native)
{
    if (!names.contains(shortPath))
        return true;
    const QString here = QFileInfo(native).absoluteFilePath();
    for (const QString& longPath : names.values(shortPath)) {
        const QString meant = DriveMap::instance().toNative(longPath);
        if (!meant.isEmpty() && QFileInfo(meant).absoluteFilePath() == here
            && QFileInfo(meant).fileName() == QFileInfo(here).fileName())
            return true;
    }
    return false;
}
} // namespace

bool ScheduleDeleteAtReboot(const QString& path)
{
    const QString shortPath = GetShortPath(path);
    // There is no removal at reboot on this host: the program's next start
    // processes the rename list instead (ProcessPendingRemovals).
    const QString list = PendingRemovalListPath();
    if (list.isEmpty())
        return false;
    QDir().mkpath(QFileInfo(list).absolutePath());
    QByteArray content;
    QFile old(list);
    if (old.exists()) {
        if (old.open(QIODevice::ReadOnly))
            content = old.readAll();
        old.close();
        const qsizetype nul = content.indexOf('\0');
        if (nul >= 0)
            content.truncate(nul);
        if (!content.endsWith("\r\n"))
            content += "\r\n";
    } else {
        content = "[Rename]\r\n";
    }
    const QByteArray entry = "NUL=" + shortPath.toUtf8() + "\r\n";
    // A list cut to its size limit would end in half a name, and the next start
    // would remove whatever that half names: the entry is refused whole instead.
    if (content.size() + entry.size() > kPendingRemovalListLimit) {
        ShowMessage(Translate(QStringLiteral("¡La lista de archivos a eliminar en el próximo reinicio está llena!"))
                + QStringLiteral("\r\n") + path,
            0);
        return false;
    }
    content += entry;
    QSaveFile f(list);
    if (!f.open(QIODevice::WriteOnly) || f.write(content) != content.size() || !f.commit())
        return false;
    rememberLongName(list, shortPath, path);
    return true;
}

int ProcessPendingRemovals()
{
    const QString list = PendingRemovalListPath();
    QFile f(list);
    if (!f.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray content = f.readAll();
    f.close();
    const DriveMap& map = DriveMap::instance();
    const QMultiHash<QString, QString> longNames = readLongNames(list);
    int done = 0;
    bool inRename = false;
    for (QByteArray raw : content.split('\n')) {
        if (raw.endsWith('\r'))
            raw.chop(1);
        const QString line = QString::fromUtf8(raw).trimmed();
        if (line.startsWith(u'[')) {
            inRename = line.compare(QLatin1String("[Rename]"), Qt::CaseInsensitive) == 0;
            continue;
        }
        const qsizetype eq = line.indexOf(u'=');
        if (!inRename || eq <= 0)
            continue;
        const QString target = line.left(eq);
        const QString source = line.mid(eq + 1);
        // A hand-made or damaged entry that could climb out of its folder is passed over.
        if (!PathForm::namesEntry(source))
            continue;
        const QString from = map.toNative(source);
        if (from.isEmpty())
            continue;
        bool ok;
        if (target.compare(QLatin1String("NUL"), Qt::CaseInsensitive) == 0) {
            if (!stillMeantFile(longNames, source, from))
                continue;
            ok = FileRemoval::entryExists(from) && FileRemoval::makeWritableAndRemove(from, true);
        } else {
            ok = PathForm::namesEntry(target) && FileReplace::move(from, map.toNative(target));
        }
        if (ok)
            ++done;
    }
    QFile::remove(list);
    QFile::remove(longNamesPath(list));
    return done;
}

} // namespace vmk
