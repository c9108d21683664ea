#pragma once

#include <QFrame>
#include <QString>

class QLabel;
class QProgressBar;
class QTreeWidget;

namespace vmk
{

// Frame2 of BackTree: a run of the zip component in progress, a backup's or a
// restore's. It shows the stage word (Label12), the counters, the progress bar and
// the files the component skipped with their reasons (ListView1). The component's
// shared events land here through BackTree, which owns the buttons.
class RunPanel : public QFrame
{
    Q_OBJECT
public:
    explicit RunPanel(QWidget* parent = nullptr);

    // The six counters to "0", the list emptied, the bar at 0 and in view.
    void Reset();
    // Label12: the stage word, translated.
    void ShowStage(const QString& word);

    // The component's events.
    void GlobalStatus(int total, int processed, int skipped, int percent);
    void SkippingFile(const QString& name, int reason);
    void TempFileProgress(int percent);
    void WriteProgress(int percent);
    // A file was scanned before it went in (Label14), and found infected (Label16).
    void CountScanned(bool infected);

    QLabel* Label12() const { return m_label12; }
    QLabel* lblFilesTotal() const { return m_total; }
    QLabel* lblFilesProcessed() const { return m_processed; }
    QLabel* lblFilesSkipped() const { return m_skipped; }
    QLabel* lblstatus() const { return m_status; }
    QLabel* Label14() const { return m_scanned; }
    QLabel* Label16() const { return m_infected; }
    QProgressBar* ProgressBar1() const { return m_progress; }
    QTreeWidget* ListView1() const { return m_listView1; }

private:
    QLabel* addCounter(const char* name, const char* captionName, const QString& caption, int row, int column);

    QLabel* m_label12;
    QLabel* m_total;
    QLabel* m_processed;
    QLabel* m_skipped;
    QLabel* m_status;
    QLabel* m_scanned;
    QLabel* m_infected;
    QProgressBar* m_progress;
    QTreeWidget* m_listView1;
};

} // namespace vmk
