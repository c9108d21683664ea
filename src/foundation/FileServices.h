#pragma once

#include <QString>

namespace vmk
{

// The shared path, drive and file services (module Modulo/File/FolderPath).
// Paths are logical ("E:\Mis Documentos\x.txt", "E:"); the drive map turns them
// into host paths.

// True for files and folders alike; "E:" is true when the drive is mounted.
bool FileExists(const QString& path);
// True when the path is no folder (missing, or a file).
bool FolderMissing(const QString& path);
// 0 desktop, 2 programs, 5 personal documents; "" for any other identifier.
QString SpecialFolderPath(int id);

// Drive figures as exact decimal text. `path` is a drive ("E:") or any path on
// it; "" means the drive of the current folder. A missing drive gives "".
bool HasDiskFreeSpaceEx();
QString DriveFreeBytes(const QString& path);
QString DriveTotalBytes(const QString& path);
QString DriveFreeKB(const QString& path);
QString DriveTotalKB(const QString& path);
QString DriveFreeMB(const QString& path);
QString DriveTotalMB(const QString& path);

// Starts the command line and waits for its end with the pump running. False when
// the program could not be started: that is the caller's error to handle.
bool RunAndWait(const QString& command);

// Copies in blocks of kCopyBlock bytes; after each block ProgressBarF shows the
// percentage, the pump runs and G().CancelRequested is polled. An existing target
// (a link included, never written through) is removed first. Either path may be
// a host path. An empty or missing source, a cancel or an I/O error return
// false and leave no target behind.
constexpr qint64 kCopyBlock = 10240;
bool CopyFileInBlocks(const QString& source, const QString& target);

} // namespace vmk
