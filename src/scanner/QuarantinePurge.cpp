#include "scanner/QuarantinePurge.h"

#include "foundation/ForceDelete.h"
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

int PurgeOldFiles(const QString& folder, int deleteAfterDays, const QDate& today)
{
    QString base = folder;
    if (!base.endsWith(QLatin1Char('\\')))
        base += QLatin1Char('\\');
    int removed = 0;
    for (const FoundEntry& e : FileSearch::list(base, QStringLiteral("*.*"))) {
        if (e.attributes == AttrJunction)
            continue;
        if (e.attributes & AttrDirectory) {
            removed += PurgeOldFiles(base + e.name + QLatin1Char('\\'), deleteAfterDays, today);
            continue;
        }
        // The creation day is taken in UTC, as the file system records it, and
        // counted in calendar days to today: crossing midnight counts as one.
        const QDateTime created = FileCreationTime(e.nativePath);
        if (!created.isValid())
            continue;
        const qint64 days = created.toUTC().date().daysTo(today);
        if (days > deleteAfterDays) {
            ForceDelete(base + e.name);
            ++removed;
        }
    }
    return removed;
}

} // namespace vmk::scanner
