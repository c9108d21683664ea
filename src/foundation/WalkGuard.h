#pragma once

#include <QString>

#include <optional>

namespace vmk
{

// The gate of every walk that deletes (the quarantine purge, a folder delete, the
// clean-up of a restore): such a walk runs only in an existing real folder strictly
// below the device root that does not hold the program. A folder setting that is
// empty, missing from VMK.cnf or damaged would otherwise turn the walk loose on
// the whole device.
class WalkGuard
{
public:
    enum Refusal {
        Accepted,
        NoFolder, // no folder given: "E:" with nothing after it
        DeviceRoot, // "E:\", or a folder that leads back to it
        DotComponent, // a "." or ".." component
        OutsideDevice, // another drive, or a link that leads off the device
        Link, // the folder itself is a symbolic link
        HoldsProgram, // the program folder is the folder or lies in it
        Missing, // not there, or not a folder
    };

    // Checks a logical folder ("E:\Mis Documentos\Cuarentena\") without a word.
    // When accepted, `nativeFolder` receives the host path the walk is to use.
    static Refusal check(const QString& logicalFolder, QString* nativeFolder = nullptr);
    // The same rule for a folder the user picked in the file manager, which may
    // lie on any drive: strictly below that drive's root, no link, not holding
    // the program. OutsideDevice never comes back.
    static Refusal checkChosen(const QString& logicalFolder, QString* nativeFolder = nullptr);
    // checkChosen, telling the user why a folder is refused (as folderForDeletingWalk).
    static std::optional<QString> chosenFolderForDeletingWalk(const QString& logicalFolder, const QString& key);
    // The same, telling the user why a folder is refused: the reason, then `key`
    // (the setting or item the folder came from) and the folder. A missing folder
    // is refused without a message: the panel's start tells of it already.
    static std::optional<QString> folderForDeletingWalk(const QString& logicalFolder, const QString& key);
    // The Spanish text of a refusal (a key of the translation table).
    static QString refusalText(Refusal refusal);

private:
    static Refusal checkOn(const QString& logicalFolder, QString* nativeFolder, bool anyDrive);
    static std::optional<QString> tell(
        Refusal refusal, const QString& native, const QString& logicalFolder, const QString& key);
};

} // namespace vmk
