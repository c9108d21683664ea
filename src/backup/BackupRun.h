#pragma once

#include <QDateTime>
#include <QLocale>
#include <QString>
#include <QStringList>

#include <functional>

namespace vmk
{

namespace zip
{
class ZipArchiver;
}

// One backup: the two lists of the selection into one dated zip archive in the
// backups folder, each file scanned on its way in when the settings ask for it and
// the engine is ready. The archive is built on the host and written to the device
// in one pass (the zip component does both); every file of the selection is in it
// or named through the component's skipping event. The screen and `vmk backup`
// run the same steps and differ only in their hooks.
class BackupRun
{
public:
    struct Hooks {
        std::function<void(const QString& word)> stage; // "Analizando", "Procesando"
        std::function<void(bool infected)> scanned; // one file scanned before it went in
        // An infected file: true leaves it out (the user's "yes"), false archives it all the same.
        std::function<bool(const QString& file)> excludeInfected;
    };

    enum class Failure {
        None,
        FolderMissing, // the backups folder does not exist: nothing was done
        NoFreeName, // every name of this second is taken (or cannot be reserved)
        Component, // the zip component's result is not 0 (an abort among them)
    };

    struct Outcome {
        Failure failure = Failure::None;
        int result = 0; // the component's result (ZipResult)
        QString archive; // logical name of the archive (also after a failure: the one meant)
    };

    explicit BackupRun(zip::ZipArchiver& zip);

    // Makes the archive in `folder` (logical, with its trailing "\"): ProgramDrive
    // followed by #BackupsFolder for the screen. The method follows #BCompAlgorithm
    // (0 and 1 bzip2, 2 deflate; other values leave the component's method as it
    // was); level 9; the paths whole, drive included, as the stored names.
    Outcome Run(const QStringList& listAdd, const QStringList& listExc, const QString& folder, const Hooks& hooks);

    // Where the run takes the present time from (the system's clock by default).
    void setClock(std::function<QDateTime()> now) { m_now = std::move(now); }

    // The sizes of the files taken in, in whole megabytes, summed and rounded per file.
    qint64 ArchivedBytesMB() const { return m_archivedMB; }

    // "mmm-dd-yyyy,hh.mm.ss.zip" with the month's abbreviation in `locale` (letters
    // only: a dot some languages put behind it would be a second extension).
    static QString DatedName(const QDateTime& when, const QLocale& locale);
    // The name of the second `attempt` of a run in the same second: attempt 1 is the
    // dated name itself, attempt 2 gives "...,hh.mm.ss-2.zip" and so on.
    static QString NameOfAttempt(const QString& datedName, int attempt);
    // The method number the component takes for a #BCompAlgorithm value; 0 for
    // a value out of range (the component then keeps its method).
    static int MethodOf(int bCompAlgorithm);

private:
    zip::ZipArchiver& m_zip;
    qint64 m_archivedMB = 0;
    std::function<QDateTime()> m_now = [] { return QDateTime::currentDateTime(); };
};

} // namespace vmk
