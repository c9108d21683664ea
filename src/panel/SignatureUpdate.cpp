#include "panel/SignatureUpdate.h"

#include "platform/LogicalPath.h"
#include "platform/Pump.h"

#include <QFile>
#include <QRegularExpression>

namespace vmk::panel
{

QString SignatureUpdate::UpdaterProgram(const QString& programFolder)
{
    return LogicalPath::join(programFolder, QStringLiteral("avupdate.exe"));
}

QStringList SignatureUpdate::UpdaterArguments(const QString& programDrive)
{
    return { QStringLiteral("--config=avupdate.conf"), QStringLiteral("--log=") + LogPath(programDrive) };
}

QString SignatureUpdate::LogPath(const QString& programDrive)
{
    return programDrive + QStringLiteral("\\UPDLOG.TXT");
}

QString SignatureUpdate::ReadLastLine(const QString& logNativePath, bool* found)
{
    if (found)
        *found = false;
    QFile f(logNativePath);
    if (!f.open(QIODevice::ReadOnly) || f.size() == 0)
        return QString();
    if (found)
        *found = true;
    // Line input: CR LF, LF or CR end a line; a final line break leaves no
    // empty line behind it, but an empty line before the end is a line.
    const QByteArray all = f.readAll();
    QString last;
    qsizetype start = 0;
    while (start < all.size()) {
        qsizetype end = start;
        while (end < all.size() && all[end] != '\r' && all[end] != '\n')
            ++end;
        last = QString::fromUtf8(all.mid(start, end - start));
        if (end < all.size() && all[end] == '\r' && end + 1 < all.size() && all[end + 1] == '\n')
            ++end;
        start = end + 1;
        DoEvents();
    }
    return last;
}

QString SignatureUpdate::LogMessage(const QString& line)
{
    static const QRegularExpression stamp(QStringLiteral("^\\d{4}-\\d{2}-\\d{2} \\d{2}:\\d{2}:\\d{2} "));
    const QRegularExpressionMatch m = stamp.match(line);
    return m.hasMatch() ? line.mid(m.capturedLength()) : line;
}

UpdateVerdict SignatureUpdate::Judge(const platform::RunOutcome& run, const QString& lastLine)
{
    if (!run.started)
        return UpdateVerdict::LogMissing;
    if (run.crashed || run.exitCode != 0)
        return UpdateVerdict::Error;
    const QString message = LogMessage(lastLine);
    if (message == QLatin1String("Update finished"))
        return UpdateVerdict::Finished;
    if (message == QLatin1String("Nothing to update"))
        return UpdateVerdict::NothingToUpdate;
    // A run that says it ended well but whose last line reports an error is not trusted.
    if (message.startsWith(QLatin1String("Update error")))
        return UpdateVerdict::Error;
    return UpdateVerdict::Silent;
}

UpdateVerdict SignatureUpdate::JudgeLog(const platform::RunOutcome& run, const QString& logNativePath)
{
    if (!run.started)
        return UpdateVerdict::LogMissing;
    bool found = false;
    const QString last = ReadLastLine(logNativePath, &found);
    if (!found)
        return run.crashed || run.exitCode != 0 ? UpdateVerdict::Error : UpdateVerdict::LogMissing;
    return Judge(run, last);
}

} // namespace vmk::panel
