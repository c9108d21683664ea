#pragma once

#include <QIcon>
#include <QPixmap>
#include <QWidget>

#include <functional>

class QAction;
class QLabel;
class QMenu;
class QSystemTrayIcon;
class QTimer;

namespace vmk
{

// The start-up object: settles the language, the components, the drive and the
// autorun guard before it is painted, then, 100 ms later, places the tray icon,
// reads the settings, starts the engine and hands over to the control panel.
// It is never destroyed: hidden after start-up, it owns the tray icon and menu.
class Splash : public QWidget
{
    Q_OBJECT
public:
    struct Hooks {
        std::function<int()> loadEngine; // LoadEngine
        std::function<void()> showPanel; // Form1 shown (its Form_Load runs)
        std::function<void()> exitPanel; // the tray's Exit: as the panel's eject button
        std::function<void()> restorePanel; // the tray's Panel: the panel shown again
    };

    Splash(QPixmap picture, QIcon icon, Hooks hooks, QWidget* parent = nullptr);

    void Form_Load();
    void TimerLoader_Timer();

    // The tray icon, or null where the desktop has no tray.
    QSystemTrayIcon* TrayIcon() const { return m_tray; }
    bool HasTray() const;
    // Removes the tray icon (on quitting and when the device was pulled).
    void RemoveTrayIcon();
    // Label13 of the panel: the menu's Panel entry becomes visible.
    void ShowPanelEntry();
    QAction* PanelEntry() const { return m_panelEntry; }
    QAction* ExitEntry() const { return m_exitEntry; }
    // The captions Label1 has shown, in order.
    const QStringList& Captions() const { return m_captions; }
    QTimer* TimerLoader() const { return m_timerLoader; }
    QTimer* Timer2() const { return m_timer2; }

protected:
    void closeEvent(QCloseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void setCaption(const QString& spanish);

    QPixmap m_picture;
    QIcon m_icon;
    Hooks m_hooks;
    QLabel* m_label1;
    QLabel* m_label2;
    QTimer* m_timerLoader;
    QTimer* m_timer2;
    QMenu* m_menu;
    QAction* m_panelEntry;
    QAction* m_exitEntry;
    QSystemTrayIcon* m_tray = nullptr;
    QStringList m_captions;
};

} // namespace vmk
