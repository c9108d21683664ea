#include "filemanager/TreeKey.h"

#include "platform/DriveInfo.h"
#include "platform/DriveMap.h"
#include "platform/FolderProbe.h"

namespace vmk
{
namespace
{
QString nativeOf(const QString& keyOrPath)
{
    const QString path = TreeKey::pathOf(keyOrPath);
    if (!DriveMap::hasDriveLetter(path))
        return {};
    return DriveMap::instance().toNative(path);
}
} // namespace

QString TreeKey::pathOf(const QString& key)
{
    QString path = key;
    path.remove(u'|');
    return path;
}

QString TreeKey::specialRoot(const QString& logicalFolder)
{
    return u'|' + (logicalFolder.endsWith(u'\\') ? logicalFolder : logicalFolder + u'\\');
}

QString TreeKey::driveRoot(const DriveInfo& drive)
{
    return QString(drive.letter.toUpper()) + QStringLiteral(":\\");
}

QString TreeKey::driveText(const DriveInfo& drive)
{
    return drive.display().toUpper();
}

QString TreeKey::deviceRoot(const QString& programDrive)
{
    return programDrive + u'\\';
}

QString TreeKey::child(const QString& parentKey, const QString& name, bool folder)
{
    return folder ? parentKey + name + u'\\' : parentKey + name;
}

QString TreeKey::fileImage(const QString& name)
{
    const qsizetype dot = name.lastIndexOf(u'.');
    return dot <= 0 ? QStringLiteral("|") : u'|' + name.mid(dot + 1).toLower();
}

bool TreeKey::FolderHasEntries(const QString& keyOrPath)
{
    return FolderProbe::hasEntries(nativeOf(keyOrPath));
}

bool TreeKey::FolderHasSubfolders(const QString& keyOrPath)
{
    return FolderProbe::hasSubfolders(nativeOf(keyOrPath));
}

QString TreeKey::SizeText(const QString& keyOrPath)
{
    const auto length = FolderProbe::fileLength(nativeOf(keyOrPath));
    if (!length)
        return QStringLiteral("-----");
    const QString bytes = QString::number(*length) + QStringLiteral(" Bytes");
    if (*length > 1024)
        return QString::number(*length / 1024) + QStringLiteral("KB, ") + bytes;
    return bytes;
}

} // namespace vmk
