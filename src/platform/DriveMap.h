#pragma once

#include "platform/DriveInfo.h"

#include <QList>
#include <QMap>
#include <QString>

#include <optional>

namespace vmk
{

// The drive-letter namespace. The logic speaks of "E:\Mis Documentos\x.txt";
// DriveMap says which host folder each letter stands for, by one rule that every
// process of the suite computes alike:
//   C: is "/"; each removable or user-mounted filesystem (under /media, /run/media,
//   /mnt, or flagged removable) takes the next letter from D: in the order of its
//   mount point. The device is the mount that holds the program folder; when that
//   is not a lettered mount, the program folder itself is the device and takes the
//   first free letter. A device override (--device DIR) wins over both.
// A child process started by the suite inherits the table through the environment
// (kInheritedVariable), so helpers see the same letters even under a test mapping.
class DriveMap
{
public:
    static constexpr const char* kInheritedVariable = "VMK_DRIVE_MAP";

    static DriveMap& instance();

    // Native folder of the running program; defaults to the executable's folder.
    void setProgramFolder(const QString& nativeFolder);
    QString programFolder() const { return m_programFolder; }
    // --device DIR; an empty text removes the override.
    void setDeviceOverride(const QString& nativeDir);
    // Tests: the table becomes exactly these letters (native folders); `device` is the device letter.
    void setTestDrives(const QMap<QChar, QString>& drives, QChar device);
    // Back to the host's mounts (drops test drives and the override).
    void resetToHost();
    // Re-reads the mounts (a drive plugged in or pulled out).
    void refresh();

    QList<DriveInfo> drives() const { return m_drives; }
    std::optional<DriveInfo> drive(QChar letter) const;
    std::optional<DriveInfo> device() const;
    QString deviceDrive() const; // "E:", or "" when there is no device

    // "E:\Dir\file.txt" to the native path. Each component missing under its exact
    // name is matched case-insensitively (then by its short alias), as the drive's
    // own filesystem would; unresolved components are kept as written so that a
    // new file can be created. An unknown letter gives "".
    QString toNative(const QString& logical) const;
    // A path given on a command line: one with a drive letter goes through the map,
    // a host path passes unchanged (helper programs and vmk accept both).
    QString nativeOfArgument(const QString& pathOrNative) const;
    // Native path to "E:\Dir\file.txt" by the drive with the longest root; folders
    // get no trailing "\" except drive roots ("E:\").
    QString toLogical(const QString& native) const;
    // The program folder in the namespace, e.g. "E:\" or "E:\VMK".
    QString logicalProgramFolder() const;

    // The table in the form a child process reads back from kInheritedVariable.
    QString exportForChildren() const;

    // Native names that cannot be written in the namespace (holding "\" or "|") map
    // to private-use characters and back, so nothing is dropped.
    static QString encodeName(const QString& nativeName);
    static QString decodeName(const QString& logicalName);
    // True for "E:", "E:\..." and "E:/...".
    static bool hasDriveLetter(const QString& path);

private:
    DriveMap();
    void computeFromHost();
    bool computeFromInherited();
    void assignDevice(const QString& deviceRoot);

    QString m_programFolder;
    QString m_deviceOverride;
    bool m_testMode = false;
    QList<DriveInfo> m_drives;
};

} // namespace vmk
