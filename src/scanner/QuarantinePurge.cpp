#include "scanner/QuarantinePurge.h"

#include "foundation/ForceDelete.h"
#include "foundation/WalkGuard.h"
#include "platform/DriveMap.h"
#include "platform/FileSearch.h"

#include <QFileInfo>

namespace vmk::scanner
{
namespace
{
CreationTimeHook& hookSlot()
{
    static CreationTimeHook hook;
    return hook;
}
} // namespace

QDateTime FileCreationTime(const QString& nativePath)
{
    if (hookSlot())
        return hookSlot()(nativePath);
    const QFileInfo info(nativePath);
    const QDateTime born = info.birthTime();
    return born.isValid() ? born : info.lastModified();
}

void SetCreationTimeHook(CreationTimeHook hook)
{
    hookSlot() = std::move(hook);
}

namespace
{
// The walk goes by the host names the listing gives, never back through the
// namespace, and enters real folders only: links to folders and kernel mounts
// carry the junction word and are passed by, so it cannot leave the folder.
int purgeNative(const QString& nativeFolder, int deleteAfterDays, const QDate& today)
{
    int removed = 0;
    for (const FoundEntry& e : FileSearch::listNative(nativeFolder, QStringLiteral("*.*"))) {
        if (e.attributes == AttrJunction)
            continue;
        if (e.attributes & AttrDirectory) {
            removed += purgeNative(e.nativePath, deleteAfterDays, today);
            continue;
        }
        // The creation day is taken in UTC, as the file system records it, and
        // counted in calendar days to today: crossing midnight counts as one.
        const QDateTime created = FileCreationTime(e.nativePath);
        if (!created.isValid())
            continue;
        const qint64 days = created.toUTC().date().daysTo(today);
        if (days > deleteAfterDays) {
            ForceDelete(DriveMap::instance().toLogical(e.nativePath));
            ++removed;
        }
    }
    return removed;
}
} // namespace

int PurgeOldFiles(const QString& folder, int deleteAfterDays, const QDate& today)
{
    const auto native = WalkGuard::folderForDeletingWalk(folder, QStringLiteral("#QuarenteneFolder"));
    return native ? purgeNative(*native, deleteAfterDays, today) : 0;
}

} // namespace vmk::scanner
