#include "panel/SignatureUpdate.h"

#include "platform/Pump.h"

#include <QFile>

namespace vmk::panel
{

QString SignatureUpdate::UpdateCommandLine(const QString& programFolder, const QString& programDrive)
{
    return QLatin1Char('"') + programFolder + QStringLiteral("\\avupdate.exe") + QLatin1Char('"')
        + QStringLiteral("--config=avupdate.conf ") + QStringLiteral("--log=") + LogPath(programDrive);
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

UpdateVerdict SignatureUpdate::Judge(const QString& lastLine)
{
    if (lastLine.contains(QStringLiteral("Update finished")))
        return UpdateVerdict::Finished;
    if (lastLine.contains(QStringLiteral("error")))
        return UpdateVerdict::Error;
    if (lastLine.contains(QStringLiteral("Nothing to update")))
        return UpdateVerdict::NothingToUpdate;
    return UpdateVerdict::Silent;
}

UpdateVerdict SignatureUpdate::JudgeLog(const QString& logNativePath)
{
    bool found = false;
    const QString last = ReadLastLine(logNativePath, &found);
    if (!found)
        return UpdateVerdict::LogMissing;
    return Judge(last);
}

} // namespace vmk::panel
