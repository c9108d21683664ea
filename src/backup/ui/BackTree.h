#pragma once

#include "backup/BackupSelection.h"
#include "components/zip/ZipArchiver.h"

#include <QWidget>

#include <initializer_list>

class QHBoxLayout;
class QPushButton;
class QTimer;

namespace vmk
{

class RunPanel;
class SmartTree;

// The backup tool. Five panels, one in view at a time (the archives and the remote
// store side by side): Frame3, the selection (SmartDataTree, whose ticks
// BackupSelection turns into ListAdd and ListExc); Frame2, a run of the zip
// component (RunPanel), shared by a backup and a restore; Frame1, the archives on
// the device; Frame5, restoring from one archive; Frame4, the remote store. Frame1,
// Frame5 and Frame4 are widgets of their own classes, made by the functions of
// BackTreePanels.h. The form owns the one zip component (XceedZip1) and the run's
// buttons; the controls keep their historic names as object names.
class BackTree : public QWidget
{
    Q_OBJECT
public:
    enum class Panel { Frame3, Frame2, Frame1, Frame5, Frame4 };

    explicit BackTree(QWidget* parent = nullptr);
    ~BackTree() override;

    // Translates the form, empties the lists, builds the host tree and shows Frame3.
    void Form_Load();

    // Puts exactly these panels in view, in the form's order, and hides the others.
    void ShowPanels(std::initializer_list<Panel> panels);
    QWidget* panel(Panel which) const;
    bool isShown(Panel which) const;

    // --- Frame3: the selection
    SmartTree* SmartDataTree() const { return m_tree; }
    BackupSelection& selection() { return m_selection; }
    QTimer* Timer() const { return m_timer; }
    void Timer_Timer(); // the deferred untick of a refused tick
    void Image7_Click(); // "Guardar": the selection into a file named with Form4
    void Image12_Click(); // "Abrir": a selection file picked with Form5, added to the lists
    void Image11_Click(); // "Comenzar": the backup run
    void Image4_Click(); // the archives on the device (Frame1)
    void Image2_Click(); // "Servidor": the archives and the remote store side by side

    // --- Frame2: a run, a backup's or a restore's
    RunPanel* Frame2() const { return m_frame2; }
    zip::ZipArchiver& XceedZip1() { return m_zip; }
    // False for a backup, true for a restore; only Terminar clears it.
    bool RestoreMode() const { return m_restoreMode; }
    void setRestoreMode(bool on) { m_restoreMode = on; }
    // Frame2 in view for a run: only Abortar and the stage word, the counters at 0,
    // the list of skipped files empty. A restore calls it with RestoreMode set.
    void PrepareRun();
    void ProcessCompleted(); // the component's last event: Guardar (backups only) and Terminar
    void Image6_Click(); // "Abortar"
    void Image8_Click(); // "Terminar": back to Frame3, or to Frame5 after a restore
    QPushButton* button(const char* name) const;
    // The last backup's archive (logical name), "" when the last run made none.
    QString LastArchive() const { return m_lastArchive; }
    // The sizes of the last backup's files, in whole megabytes.
    qint64 ArchivedBytesMB() const { return m_archivedMB; }

signals:
    // The form was closed: the panel comes back.
    void Closed();
    // Frame1 came into view (Image4): its list of archives is read anew.
    void ArchivesShown();
    // Frame1 and Frame4 came into view ("Servidor"): the store connects or lists again.
    void ServerShown();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void NodeCheck(const QString& key, bool checked);
    void showSelectionButtons(bool on);
    void showRunButtons(bool running, bool finished);
    QPushButton* addButton(const char* name, const QString& caption);

    BackupSelection m_selection;
    zip::ZipArchiver m_zip;
    SmartTree* m_tree = nullptr;
    QTimer* m_timer;
    QWidget* m_frame3;
    RunPanel* m_frame2;
    QWidget* m_frame1;
    QWidget* m_frame5;
    QWidget* m_frame4;
    QHBoxLayout* m_panels;
    QList<QPushButton*> m_buttons;
    bool m_restoreMode = false;
    bool m_running = false;
    QString m_lastArchive;
    qint64 m_archivedMB = 0;
};

} // namespace vmk
