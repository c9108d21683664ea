#pragma once

#include <QString>
#include <QStringList>

namespace vmk::panel
{

// What the program does to the device and the host because it lives on a
// removable drive: the shell verbs of the host, the device's autorun file and
// the hand-over to eject.exe.
class DeviceIntegration
{
public:
    // The four keys under HKEY_CLASSES_ROOT, in the order they are removed
    // (each command child before its verb, since a key with subkeys stays).
    static QStringList ShellKeys();

    // Creates the verb key with "<SystemFolder>\eject.exe \"%1\"" as its value,
    // unless it exists; a refused creation is told.
    static void AddShellVerb(const QString& key);
    // Deletes one key; the result is not looked at.
    static void RemoveShellKey(const QString& key);
    static void RemoveShellKeys();

    // On quitting: AUTORUN.inf is released, and when \VMK\AUTORUN.bck exists
    // it replaces the autorun file.
    static void RestoreAutorun(const QString& programDrive);

    // "\"<system folder>\eject.exe\"<language>|<drive>", no blank after the quote.
    static QString EjectCommandLine(const QString& systemFolder, int languageIndex, const QString& programDrive);
    // Moves the current folder to the system folder and starts the helper
    // without waiting. The helper inherits the drive map, so that it finds the
    // device behind the letter. False when it could not be started.
    static bool StartEjectHelper(const QString& systemFolder, int languageIndex, const QString& programDrive);
};

} // namespace vmk::panel
