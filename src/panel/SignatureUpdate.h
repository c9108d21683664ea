#pragma once

#include "platform/RunAndWait.h"

#include <QString>
#include <QStringList>

namespace vmk::panel
{

// How the update went, from the updater's exit status and its last log line.
enum class UpdateVerdict {
    Finished, // "Update finished": the restart question follows
    Error, // the updater failed: "¡Error al actualizar!"
    NothingToUpdate, // "Nothing to update": "¡Nada que actualizar!"
    Silent, // it succeeded, but its last line is none of the two (an empty one included): no message
    LogMissing, // it did not start, or left no log: reported as an error
};

// The panel's side of the signature update: the updater's program and arguments, its
// log and the verdict. The run itself (BarraUpdate, RunAndWait, the restart)
// is driven by Form1, which owns the screens it disables and shows.
class SignatureUpdate
{
public:
    // "<program folder>\avupdate.exe", a logical path.
    static QString UpdaterProgram(const QString& programFolder);
    // "--config=avupdate.conf" and "--log=<drive>\UPDLOG.TXT", passed as a list so
    // that a quote or a blank in a folder name cannot split them.
    static QStringList UpdaterArguments(const QString& programDrive);
    // The logical path of the log, "<drive>\UPDLOG.TXT".
    static QString LogPath(const QString& programDrive);
    // Reads the log line by line, pumping events after each, and returns the
    // last line. `found` is false when the log is missing or holds nothing.
    static QString ReadLastLine(const QString& logNativePath, bool* found);
    // The updater's own words on a log line: the line without the date and time
    // the updater puts in front of each ("2026-11-23 14:02:11 Update finished").
    static QString LogMessage(const QString& line);
    // A failed run is an error whatever its log says; a run that succeeded is
    // told by its last line, which must be exactly "Update finished" or
    // "Nothing to update". A source or error text that merely contains those
    // words decides nothing.
    static UpdateVerdict Judge(const platform::RunOutcome& run, const QString& lastLine);
    static UpdateVerdict JudgeLog(const platform::RunOutcome& run, const QString& logNativePath);
};

} // namespace vmk::panel
