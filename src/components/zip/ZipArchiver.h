#pragma once

#include "components/zip/FileMask.h"
#include "components/zip/ZipEvents.h"

#include <QString>
#include <QStringList>

#include <atomic>

namespace vmk::zip
{

// The zip component: one long-lived object whose properties persist from one
// operation to the next, as the screens that own it expect. Names at its
// interface use "\" and the drive-letter namespace; inside the archive they use
// "/". Archives are built in a temporary file on the host and copied to their
// destination in one pass, so an abort or failure leaves no archive behind.
class ZipArchiver
{
public:
    ZipArchiver();
    ~ZipArchiver();
    ZipArchiver(const ZipArchiver&) = delete;
    ZipArchiver& operator=(const ZipArchiver&) = delete;

    // The archive to build, list or unpack.
    void setArchiveName(const QString& name) { m_archiveName = name; }
    QString archiveName() const { return m_archiveName; }

    // Files smaller than this are left out of an archive (0: none are).
    void setMinSizeToProcess(qint64 bytes) { m_minSize = bytes; }
    qint64 minSizeToProcess() const { return m_minSize; }

    // Off: a file is stored under its bare name. On: under its path below the
    // folder of the line that found it. The preprocessing event may change either.
    void setPreservePaths(bool on) { m_preservePaths = on; }
    bool preservePaths() const { return m_preservePaths; }

    // Where extraction puts relative names; empty: beside the archive, and names
    // that carry their own drive go back where they came from.
    void setExtractFolder(const QString& folder) { m_extractFolder = folder; }
    QString extractFolder() const { return m_extractFolder; }

    // The lists of file masks (see FileMask), one per line as text; the add
    // functions take one line as it is, so a name holding a line break stays whole.
    void setFilesToProcess(const QString& text);
    QString filesToProcess() const { return m_process.join(QStringLiteral("\r\n")); }
    void addFileToProcess(const QString& line);
    void setFilesToExclude(const QString& text);
    QString filesToExclude() const { return m_exclude.join(QStringLiteral("\r\n")); }
    void addFileToExclude(const QString& line);

    // 0 stores, 1 fastest .. 9 smallest.
    void setCompressionLevel(int level);
    int compressionLevel() const { return m_level; }

    // On: compressing replaces an existing archive. Off: its entries are kept and
    // files of the same stored name are replaced.
    void setReplaceArchive(bool on) { m_replace = on; }
    bool replaceArchive() const { return m_replace; }

    // 8 deflate, 12 bzip2, 18 the Burrows-Wheeler family (bzip2); any other number
    // leaves the method as it was.
    void setCompressionMethod(int method);
    int compressionMethod() const { return m_method; }

    // Stops the running operation at its next step; each operation starts with it clear.
    void setAbort(bool on) { m_abort = on; }
    bool abortRequested() const { return m_abort; }

    // Each returns a ZipResult (0 is success) and fires processCompleted last
    // (compress and extract).
    int compress();
    int listArchive();
    int extract();

    ZipEvents& events() { return m_events; }

    // Why the last extract answered ZipNoSpace: the folder (interface form), the
    // bytes its entries need and the bytes free there.
    struct SpaceShortage {
        QString folder;
        qint64 needed = 0;
        qint64 available = 0;
    };
    SpaceShortage spaceShortage() const { return m_shortage; }

private:
    struct PlannedFile;
    class Run;

    void walkLine(const QString& line, QList<PlannedFile>& out, Run& run);
    void skipUnreadable(const QString& source, int reason, Run& run);
    void addFile(PlannedFile file, const QString& baseFolder, QList<PlannedFile>& out, Run& run);
    bool isExcluded(const QString& logical) const;
    int finish(int result);
    int copyToDestination(const QString& tempPath);

    QString m_archiveName, m_extractFolder;
    QStringList m_process, m_exclude;
    QList<FileMask> m_excludeMasks; // m_exclude as the running compress matches it
    qint64 m_minSize = 0;
    bool m_preservePaths = false;
    bool m_replace = true;
    int m_level = 6;
    int m_method = 8;
    std::atomic<bool> m_abort { false };
    ZipEvents m_events;
    SpaceShortage m_shortage;
};

} // namespace vmk::zip
