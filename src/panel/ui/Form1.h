#pragma once

#include "filemanager/ui/frmDataTree.h"
#include "panel/PanelFigures.h"

#include <QHash>
#include <QPointer>
#include <QWidget>

#include <functional>

class QLabel;
class QTimer;

namespace vmk
{
class BarraUpdate;
class FormEject;
class BackTree;
class Pie;
class scanTree;
} // namespace vmk

namespace vmk::panel
{

class ControlPanel;

// The control panel: the device's space as a pie and in figures, the signature
// data, the tool buttons, the signature update and the shut-down of the program.
// The logic that needs no window lives in ControlPanel; this form wires it to
// the controls, which keep their historic names (objectName) so that every
// screen of the suite is addressed the same way.
class Form1 : public QWidget
{
    Q_OBJECT
public:
    // Hooks of the surroundings: the tray icon owner and the way the process ends.
    struct Hooks {
        std::function<void()> removeTrayIcon; // Shell_NotifyIcon delete
        // Label13 and Label4: the tray menu's Panel entry shown; false when no
        // tray icon is there to bring the panel back, and the panel is minimised instead.
        std::function<bool()> hideToTray;
        std::function<void(int code)> endProgram; // ends the process (tests record it)
    };

    explicit Form1(ControlPanel& panel, Hooks hooks, QWidget* parent = nullptr);
    ~Form1() override;

    // Event procedures, public so that the tray menu and the tests can reach them.
    void Form_Load();
    void Timer1_Timer();
    void TimerUpdate_Timer();
    void Image15_Click(); // signature update
    void Image20_Click(); // quit with eject (also the tray's Exit)
    void Label13_Click(); // hide to the tray, or minimise where there is none
    void Label4_Click(); // as Label13
    // A second start of the program on this device: the panel comes back from
    // the tray or the task bar and to the front.
    void BringToFront();
    void Image17_Click(); // the maker's web site (also Label11, Image23)
    void Image16_Click(); // the lock, then the password manager (PassTree)
    void Image18_Click(); // the lock, then the settings dialog (FrmConf)
    void Image12_Click(); // the file manager (frmDataTree)
    void Image13_Click(); // scan the computer
    void Image14_Click(); // scan the device
    void Image11_Click(); // the backups (BackTree)

    // The scanner, once a scan button has opened it.
    scanTree* ScanForm() const { return m_scanTree; }
    // The backup tool, once Image11 has opened it.
    BackTree* BackupForm() const { return m_backTree; }
    // The file manager, while the last one Image12 opened is open.
    frmDataTree* DataTreeForm() const { return m_dataTree; }

    QTimer* Timer1() const { return m_timer1; }
    QTimer* TimerUpdate() const { return m_timerUpdate; }
    // How many times the pie and the figures were redrawn (a tick over an idle
    // drive redraws nothing).
    int RedrawCount() const { return m_redraws; }
    // True once the unload went through and the program was told to end.
    bool Unloaded() const { return m_unloaded; }

    QLabel* label(const char* name) const;

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    QLabel* addLabel(const char* name, const QString& text, const QRect& geometry, const QString& style = QString());
    void addButton(const char* hotZone, const char* lit, const char* captionName, const QString& caption,
        const QString& icon, QPoint at, std::function<void()> click, const QString& unavailable = QString());
    void hideLitImages();
    void drawFigures(const PanelFigures& figures);
    void showEngineData();
    void showEngineFailure(const QString& reason);
    void showSignatureDate();
    bool formUnload(); // false when the user declines to quit
    void openScanner(bool scanHost);

    ControlPanel& m_panel;
    Hooks m_hooks;
    QTimer* m_timer1;
    QTimer* m_timerUpdate;
    Pie* m_pie = nullptr;
    BarraUpdate* m_barraUpdate = nullptr;
    FormEject* m_formEject = nullptr;
    scanTree* m_scanTree = nullptr;
    BackTree* m_backTree = nullptr;
    QPointer<frmDataTree> m_dataTree;
    QLabel* m_background = nullptr;
    QLabel* m_shield = nullptr;
    QLabel* m_engineReason = nullptr;
    QHash<QObject*, QLabel*> m_hotZones; // lower image -> its lit image
    QHash<QObject*, std::function<void()>> m_clicks; // clickable control -> its click
    QList<QLabel*> m_litImages;
    PanelFigures m_figures;
    int m_redraws = 0;
    bool m_unloaded = false;
    bool m_inUnload = false;
};

} // namespace vmk::panel
