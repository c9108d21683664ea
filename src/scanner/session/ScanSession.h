#pragma once

#include "scanner/EventListModel.h"
#include "scanner/ThreatListModel.h"
#include "scanner/session/ScanRecord.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>

namespace vmk
{

class ScanAhead;

// One scan session of the form scanTree, from Start to the closing message: each
// line of the selection is walked, every file goes to the engine and its outcome
// becomes rows of ListView and ListViewInf and moves the five counters. It runs on
// the calling thread and pumps (DoEvents) after each file's row and each alert, so
// Pause, Continue and Stop act re-entrantly from the pump. With more than one job
// the engine scans ahead on worker threads, while rows, counters, alerts and the
// quarantine mark are still recorded strictly in the walk's order; a stop
// discards what was scanned ahead.
class ScanSession : public QObject
{
    Q_OBJECT
public:
    static constexpr int kPausePollMs = 500;
    static constexpr int kFlushIntervalMs = 100; // rows reach the views at most this often
    static QString memoryTarget() { return QStringLiteral("*Memory*"); }

    explicit ScanSession(QObject* parent = nullptr);
    ~ScanSession() override;

    // Engine threads that may scan ahead of the walk; 1 (the default): the walk
    // scans each file itself.
    void setJobs(int jobs);
    int jobs() const { return m_jobs; }
    // Whether the closing words go to ShowMessage (the command-line tool prints
    // its own summary instead).
    void setClosingMessage(bool show) { m_closingMessage = show; }

    // Start (`Image5`): zeroes the counters, empties both lists, clears the flags
    // and walks `listAdd` in its order. Each line is the path of a file, the path
    // of a folder ending in "\" (walked depth-first by ScanFolder) or "*Memory*".
    // `ListExc` is the selection's business and is not read here. Returns after
    // the closing message; a second call during a session does nothing.
    void Start(const QStringList& listAdd);
    bool running() const { return m_running; }

    void Pause(); // `Image2`: ScanPause true
    void Continue(); // `Image1`: ScanPause false
    void Stop(); // `Image3`, and closing the form: ScanAbort true, ScanPause false

    bool ScanAbort() const { return m_scanAbort; }
    bool ScanPause() const { return m_scanPause; }
    QString TextScan() const { return m_textScan; } // the file now scanned ("Archivo")
    QString textfolder() const { return m_textFolder; } // its folder ("Carpeta"), ending in "\"

    qint64 txtscantot() const { return m_txtscantot; } // handed to the engine ("Analizados")
    qint64 TxtNtot() const { return m_txtNtot; } // clean ("No infectados")
    qint64 txtskiptot() const { return m_txtskiptot; } // not processed ("No procesados")
    qint64 txtinfFiles() const { return m_txtinfFiles; } // infected files ("Infectados")
    qint64 txtinftot() const { return m_txtinftot; } // alerts listed

    EventListModel& ListView() { return m_listView; }
    ThreatListModel& ListViewInf() { return m_listViewInf; }

    // The quarantine mark of the file targets: set once a quarantined item was
    // scanned among them, and from then on every later file target F has its
    // F + ".tmp" removed (each folder level of ScanFolder keeps its own mark).
    bool fileTargetsMarked() const { return m_fileTargetMark; }
    // True when `path` lies in the program drive's #QuarenteneFolder (not case-sensitive).
    static bool IsQuarantineItem(const QString& path);

signals:
    void countersChanged();
    void currentChanged(); // TextScan or textfolder changed
    void fileRecorded(const vmk::ScanRecord& record);
    void finished(bool aborted); // before the closing message

private:
    struct Pending;
    void scanOneFileTarget(const QString& path);
    void ScanFolder(const QString& folder);
    void scanMemory();
    void memoryFile(const QString& path, qint64 ticket);
    void ScanAndRecord(ScanRecord& rec, qsizetype row, qint64 ticket, bool& mark);
    void recordOutcome(ScanRecord& rec, qsizetype row, bool memory);
    void recordNotScanned(ScanRecord& rec, qsizetype row);
    qsizetype addEventRow(const QString& path);
    void setCurrent(const QString& folder, const QString& name);
    void setCurrentFromPath(const QString& path);
    void waitWhilePaused();
    void pump();
    void flushRows();

    EventListModel m_listView;
    ThreatListModel m_listViewInf;
    std::unique_ptr<ScanAhead> m_ahead;
    QElapsedTimer m_flushClock;
    int m_jobs = 1;
    bool m_closingMessage = true;
    bool m_running = false;
    bool m_scanAbort = false;
    bool m_scanPause = false;
    bool m_fileTargetMark = false;
    QString m_textScan;
    QString m_textFolder;
    qint64 m_txtscantot = 0;
    qint64 m_txtNtot = 0;
    qint64 m_txtskiptot = 0;
    qint64 m_txtinfFiles = 0;
    qint64 m_txtinftot = 0;
};

} // namespace vmk
