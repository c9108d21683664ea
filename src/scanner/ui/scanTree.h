#pragma once

#include "scanner/TargetSelection.h"
#include "scanner/session/ScanSession.h"

#include <QWidget>

class QFrame;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableView;
class QTimer;

namespace vmk
{

class ClickLabel;
class SmartTree;

// The scanner: the target tree (SmartDataTree in Frame3) whose ticks TargetSelection
// turns into ListAdd and ListExc, then the session over ListAdd with its counters
// (Frame1), the event and threat lists (Frame5) and the verbs on threats. The
// controls keep their historic names as object names.
class scanTree : public QWidget
{
    Q_OBJECT
public:
    explicit scanTree(QWidget* parent = nullptr);
    ~scanTree() override;

    // Translates the form, empties the lists and builds the tree in the form that
    // G().ScanHost names (the host with "*Memory*", or the device alone).
    void Form_Load();

    void Image5_Click(); // Start
    void Image2_Click(); // Pause
    void Image1_Click(); // Continue
    void Image3_Click(); // Stop
    void Image4_Click(); // Back to the selection
    void Label12_Click(); // "Estadísticos"
    void Label13_Click(); // "Eventos"
    void Label14_Click(); // "Infectados"
    void Command6_Click(); // delete the ticked threats
    void Command7_Click(); // disinfect the ticked threats
    void Command8_Click(); // seal the ticked threats into the quarantine
    void Timer_Timer(); // the deferred untick of a refused tick

    SmartTree* SmartDataTree() const { return m_tree; }
    TargetSelection& selection() { return m_selection; }
    ScanSession& session() { return m_session; }
    QTimer* Timer() const { return m_timer; }
    // The view on show: 1 "Estadísticos", 2 "Eventos", 3 "Infectados".
    int CurrentView() const { return m_view; }

signals:
    // The form was closed: the panel comes back.
    void Closed();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void SelectView(int view);
    void showCounters();
    void showCurrent();
    void sessionFinished();
    void NodeCheck(const QString& key, bool checked);
    QLineEdit* addCounter(QWidget* parent, const char* name, const char* labelName, const QString& caption, int row);
    QPushButton* addButton(const char* name, const QString& caption);

    TargetSelection m_selection;
    ScanSession m_session;
    SmartTree* m_tree = nullptr;
    QTimer* m_timer;
    QTimer* m_refresh; // writes the counters and the current file while a session runs
    QFrame* m_frame3;
    QFrame* m_frame5;
    QFrame* m_frame1;
    QLabel* m_label3;
    QLineEdit* m_textFolder;
    QLineEdit* m_textScan;
    QLineEdit* m_txtScanTot;
    QLineEdit* m_txtNTot;
    QLineEdit* m_txtSkipTot;
    QLineEdit* m_txtInfFiles;
    QLineEdit* m_txtInfTot;
    QTableView* m_listView;
    QTableView* m_listViewInf;
    ClickLabel* m_tabs[3];
    QFrame* m_shapes[3];
    QPushButton* m_image5;
    QPushButton* m_image2;
    QPushButton* m_image1;
    QPushButton* m_image3;
    QPushButton* m_image4;
    QPushButton* m_command6;
    QPushButton* m_command7;
    QPushButton* m_command8;
    int m_view = 1;
};

} // namespace vmk
