#include "platform/FolderProbe.h"

#include <QFile>

#include <dirent.h>
#include <sys/stat.h>

namespace vmk
{
namespace
{
bool isDotName(const char* name)
{
    return name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0));
}

bool isFolderEntry(const QByteArray& folder, const struct dirent* de)
{
    if (de->d_type == DT_DIR)
        return true;
    if (de->d_type != DT_LNK && de->d_type != DT_UNKNOWN)
        return false;
    struct stat st;
    const QByteArray path = folder + '/' + de->d_name;
    return ::stat(path.constData(), &st) == 0 && S_ISDIR(st.st_mode);
}

// Reads the folder until `wanted` says yes for an entry.
template<typename Wanted> bool anyEntry(const QString& nativeFolder, Wanted wanted)
{
    if (nativeFolder.isEmpty())
        return false;
    const QByteArray folder = QFile::encodeName(nativeFolder);
    DIR* dir = ::opendir(folder.constData());
    if (!dir)
        return false;
    bool found = false;
    while (const struct dirent* de = ::readdir(dir)) {
        if (isDotName(de->d_name))
            continue;
        if (wanted(folder, de)) {
            found = true;
            break;
        }
    }
    ::closedir(dir);
    return found;
}
} // namespace

bool FolderProbe::hasEntries(const QString& nativeFolder)
{
    return anyEntry(nativeFolder, [](const QByteArray&, const struct dirent*) { return true; });
}

bool FolderProbe::hasSubfolders(const QString& nativeFolder)
{
    return anyEntry(nativeFolder, isFolderEntry);
}

std::optional<qint64> FolderProbe::fileLength(const QString& nativePath)
{
    struct stat st;
    if (nativePath.isEmpty() || ::stat(QFile::encodeName(nativePath).constData(), &st) != 0 || !S_ISREG(st.st_mode))
        return std::nullopt;
    return static_cast<qint64>(st.st_size);
}

} // namespace vmk
