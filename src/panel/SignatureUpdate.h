#pragma once

#include <QString>

namespace vmk::panel
{

// What the last line of the updater's log says.
enum class UpdateVerdict {
    Finished, // "Update finished": the restart question follows
    Error, // "error": "¡Error al actualizar!"
    NothingToUpdate, // "Nothing to update": "¡Nada que actualizar!"
    Silent, // any other last line, an empty one included: no message
    LogMissing, // no log, or an empty one: reported as an error
};

// The panel's side of the signature update: the updater's command line, its
// log and the verdict. The run itself (BarraUpdate, RunAndWait, the restart)
// is driven by Form1, which owns the screens it disables and shows.
class SignatureUpdate
{
public:
    // "\"<program folder>\avupdate.exe\"--config=avupdate.conf --log=<drive>\UPDLOG.TXT",
    // with no blank after the closing quote.
    static QString UpdateCommandLine(const QString& programFolder, const QString& programDrive);
    // The logical path of the log, "<drive>\UPDLOG.TXT".
    static QString LogPath(const QString& programDrive);
    // Reads the log line by line, pumping events after each, and returns the
    // last line. `found` is false when the log is missing or holds nothing.
    static QString ReadLastLine(const QString& logNativePath, bool* found);
    // The plain text searches, success first: a line with both "Update finished"
    // and "error" counts as success.
    static UpdateVerdict Judge(const QString& lastLine);
    static UpdateVerdict JudgeLog(const QString& logNativePath);
};

} // namespace vmk::panel
