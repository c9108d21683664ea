#include "backup/BackupRun.h"

#include "components/engine/Engine.h"
#include "components/zip/ZipArchiver.h"
#include "components/zip/ZipCodes.h"
#include "foundation/FileServices.h"
#include "foundation/Globals.h"
#include "foundation/Settings.h"
#include "foundation/Translate.h"
#include "platform/DriveMap.h"
#include "platform/NativeFile.h"

#include <QCryptographicHash>
#include <QDir>
#include <QLockFile>

#include <cmath>
#include <memory>

namespace vmk
{
namespace
{
// Names a second run in the same second may take before it gives up.
constexpr int kAttempts = 1000;

bool folderLine(const QString& entry)
{
    return entry.endsWith(u'\\');
}

QString lineOf(const QString& entry)
{
    // The folder with everything below it.
    return folderLine(entry) ? entry + QStringLiteral("*<r>") : entry;
}

// Holds a name of the backups folder for one run: a lock in the host's temporary
// folder (the device is written once, by the archive itself), keyed by the host
// path, so that runs of two processes in the same second never take one name. A
// lock left by a killed run is stale and taken over.
std::unique_ptr<QLockFile> reserve(const QString& nativeArchive)
{
    const QByteArray key = QCryptographicHash::hash(nativeArchive.toUtf8(), QCryptographicHash::Sha1).toHex();
    auto lock = std::make_unique<QLockFile>(
        QDir::tempPath() + QStringLiteral("/vmk-backup-") + QString::fromLatin1(key) + QStringLiteral(".lock"));
    lock->setStaleLockTime(0);
    if (!lock->tryLock(0))
        return nullptr;
    // Locked, and free on the device: this run's name.
    if (NativeFile::exists(nativeArchive))
        return nullptr;
    return lock;
}
} // namespace

BackupRun::BackupRun(zip::ZipArchiver& zip)
    : m_zip(zip)
{
}

QString BackupRun::DatedName(const QDateTime& when, const QLocale& locale)
{
    QString month = locale.monthName(when.date().month(), QLocale::ShortFormat);
    month.removeIf([](QChar c) { return !c.isLetter(); });
    return month + when.toString(QStringLiteral("-dd-yyyy,hh.mm.ss")) + QStringLiteral(".zip");
}

QString BackupRun::NameOfAttempt(const QString& datedName, int attempt)
{
    if (attempt <= 1)
        return datedName;
    return datedName.chopped(4) + u'-' + QString::number(attempt) + QStringLiteral(".zip");
}

int BackupRun::MethodOf(int bCompAlgorithm)
{
    switch (bCompAlgorithm) {
    case 0:
        return zip::MethodBwt;
    case 1:
        return zip::MethodBzip2;
    case 2:
        return zip::MethodDeflate;
    default:
        return 0;
    }
}

BackupRun::Outcome BackupRun::Run(
    const QStringList& listAdd, const QStringList& listExc, const QString& folder, const Hooks& hooks)
{
    Outcome outcome;
    m_archivedMB = 0;
    m_zip.setFilesToExclude(QString());
    m_zip.setFilesToProcess(QString());
    for (const QString& entry : listAdd)
        m_zip.addFileToProcess(lineOf(entry));
    m_zip.setMinSizeToProcess(0);
    m_zip.setFilesToExclude(QString());
    for (const QString& entry : listExc)
        m_zip.addFileToExclude(lineOf(entry));

    if (FolderMissing(folder)) {
        outcome.failure = Failure::FolderMissing;
        return outcome;
    }
    // Two runs in one second: the second takes "-2" behind the time, and so on.
    const QString dated = DatedName(m_now(), QLocale());
    std::unique_ptr<QLockFile> reservation;
    for (int attempt = 1; attempt <= kAttempts && !reservation; ++attempt) {
        outcome.archive = folder + NameOfAttempt(dated, attempt);
        reservation = reserve(DriveMap::instance().toNative(outcome.archive));
    }
    if (!reservation) {
        outcome.failure = Failure::NoFreeName;
        return outcome;
    }
    m_zip.setArchiveName(outcome.archive);
    if (const int method = MethodOf(S().BCompAlgorithm); method != 0)
        m_zip.setCompressionMethod(method);
    m_zip.setCompressionLevel(9);
    // The name is new and reserved: no archive of it is there to keep entries of.
    m_zip.setReplaceArchive(true);
    m_zip.setPreservePaths(true);

    const bool scan = S().ScanBeforeBackup.trimmed().toInt() == 1 && G().EngineLoaded;
    zip::ZipEvents& events = m_zip.events();
    const auto previous = events.preprocessingFile;
    events.preprocessingFile = [&](QString& stored, const QString& source, qint64 size, bool& exclude) {
        m_archivedMB = std::llround(double(m_archivedMB) + double(size) / 1024.0 / 1024.0);
        if (scan) {
            if (hooks.stage)
                hooks.stage(QStringLiteral("Analizando"));
            const engine::ScanResult r = engine::ScanFile(reinterpret_cast<const char16_t*>(source.utf16()));
            const bool infected = r.ReturnCode == 0 && r.AlertCount >= 1;
            if (infected && hooks.excludeInfected && hooks.excludeInfected(source))
                exclude = true;
            if (hooks.scanned)
                hooks.scanned(infected);
            if (exclude)
                return;
        } else if (hooks.stage) {
            hooks.stage(QStringLiteral("Procesando"));
        }
        // The whole source path, drive included, is the stored name.
        stored = source;
    };
    outcome.result = m_zip.compress();
    events.preprocessingFile = previous;
    if (outcome.result != zip::ZipOk)
        outcome.failure = Failure::Component;
    return outcome;
}

} // namespace vmk
