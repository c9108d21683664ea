#pragma once

#include "components/zip/ZipArchiver.h"
#include "platform/DriveMap.h"

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <fcntl.h>
#include <unistd.h>

// Archives for the restore's tests: a backup as the run makes it (each file stored
// under its whole source name, drive included), Info-ZIP's, and hand-made ones.
namespace vmk::test
{

inline int runProgram(const QString& program, const QStringList& args, const QString& folder = QString())
{
    QProcess p;
    p.setProcessChannelMode(QProcess::MergedChannels);
    if (!folder.isEmpty())
        p.setWorkingDirectory(folder);
    p.start(program, args);
    if (!p.waitForFinished(60000))
        return -1;
    return p.exitCode();
}

// A file whose path is raw bytes (the name need not be UTF-8).
inline bool writeRaw(const QByteArray& path, const QByteArray& bytes)
{
    const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd < 0)
        return false;
    const bool ok = ::write(fd, bytes.constData(), static_cast<size_t>(bytes.size())) == bytes.size();
    return ::close(fd) == 0 && ok;
}

inline QByteArray readRaw(const QByteArray& path)
{
    QByteArray out;
    const int fd = ::open(path.constData(), O_RDONLY);
    if (fd < 0)
        return "<missing>";
    char buf[4096];
    ssize_t got;
    while ((got = ::read(fd, buf, sizeof buf)) > 0)
        out.append(buf, static_cast<qsizetype>(got));
    ::close(fd);
    return out;
}

// A backup of `folderLogical` (with "\" at its end) into `archiveLogical`, every
// file stored under its source name: the run's own form.
inline int backupArchive(const QString& folderLogical, const QString& archiveLogical)
{
    zip::ZipArchiver zip;
    zip.setArchiveName(archiveLogical);
    zip.setCompressionLevel(9);
    zip.setReplaceArchive(true);
    zip.setFilesToProcess(folderLogical + QStringLiteral("*<r>"));
    zip.events().preprocessingFile = [](QString& stored, const QString& source, qint64, bool&) { stored = source; };
    return zip.compress();
}

// An archive written by Python's zipfile: one entry per (name, data), in order,
// names kept exactly as given ("..", a leading "/", a drive).
inline bool pythonZip(const QString& path, const QList<QPair<QString, QString>>& entries)
{
    const QString script = QStringLiteral("import sys,zipfile,warnings\n"
                                          "warnings.simplefilter('ignore')\n"
                                          "z=zipfile.ZipFile(sys.argv[1],'w',zipfile.ZIP_DEFLATED)\n"
                                          "for i in range(2, len(sys.argv), 2):\n"
                                          "    z.writestr(zipfile.ZipInfo(sys.argv[i]), sys.argv[i+1])\n"
                                          "z.close()\n");
    QStringList args { QStringLiteral("-c"), script, path };
    for (const auto& [name, data] : entries)
        args << name << data;
    return runProgram(QStringLiteral("/usr/bin/python3"), args) == 0;
}

inline QString logicalOf(const QString& native)
{
    return DriveMap::instance().toLogical(native);
}

} // namespace vmk::test
