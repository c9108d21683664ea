#pragma once

#include <QDate>
#include <QDateTime>
#include <QString>

#include <functional>

namespace vmk::scanner
{

// The quarantine purge run when the panel loads: every file of the folder and
// its subfolders whose creation day lies more than `deleteAfterDays` calendar
// days before `today` is removed with ForceDelete. The ledger is not touched.
// `folder` is logical ("E:" followed by #QuarenteneFolder). It must pass the
// WalkGuard: a refused folder is told, naming #QuarenteneFolder, and nothing is
// removed. Returns the number of files removed.
int PurgeOldFiles(const QString& folder, int deleteAfterDays, const QDate& today);

// The creation time of a native file. Linux keeps it as the birth time where
// the filesystem records one; elsewhere the last change of the data stands in.
QDateTime FileCreationTime(const QString& nativePath);

// Tests replace the clock of the files; an empty hook restores the real one.
using CreationTimeHook = std::function<QDateTime(const QString& nativePath)>;
void SetCreationTimeHook(CreationTimeHook hook);

} // namespace vmk::scanner
