#include "foundation/ui/Splash.h"

#include "foundation/ForceDelete.h"
#include "foundation/Globals.h"
#include "foundation/Settings.h"
#include "foundation/StartUp.h"
#include "foundation/Translate.h"
#include "foundation/ui/ApplyLanguage.h"
#include "platform/Pump.h"

#include <QAction>
#include <QCloseEvent>
#include <QCursor>
#include <QGuiApplication>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QScreen>
#include <QSystemTrayIcon>
#include <QTimer>

namespace vmk
{

Splash::Splash(QPixmap picture, QIcon icon, Hooks hooks, QWidget* parent)
    : QWidget(parent, Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
    , m_picture(std::move(picture))
    , m_icon(std::move(icon))
    , m_hooks(std::move(hooks))
    , m_label1(new QLabel(this))
    , m_label2(new QLabel(QStringLiteral("V.1.2.0"), this))
    , m_timerLoader(new QTimer(this))
    , m_timer2(new QTimer(this))
    , m_menu(new QMenu(this))
{
    setObjectName(QStringLiteral("Splash"));
    setWindowTitle(QStringLiteral("Vormak"));
    setWindowIcon(m_icon);
    setFixedSize(m_picture.isNull() ? QSize(420, 240) : m_picture.size());
    m_label1->setObjectName(QStringLiteral("Label1"));
    m_label1->setGeometry(20, height() - 44, width() - 120, 24);
    m_label1->setStyleSheet(QStringLiteral("color:#d8efe8;"));
    m_label2->setObjectName(QStringLiteral("Label2"));
    m_label2->setGeometry(width() - 100, height() - 44, 80, 24);
    m_label2->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_label2->setStyleSheet(QStringLiteral("color:#8fb8c4;"));

    m_menu->setObjectName(QStringLiteral("menu"));
    m_panelEntry = m_menu->addAction(QStringLiteral("Panel"));
    m_panelEntry->setObjectName(QStringLiteral("Panel"));
    m_panelEntry->setVisible(false);
    m_exitEntry = m_menu->addAction(QStringLiteral("Exit"));
    m_exitEntry->setObjectName(QStringLiteral("Exit"));
    connect(m_panelEntry, &QAction::triggered, this, [this] {
        m_panelEntry->setVisible(false);
        if (m_hooks.restorePanel)
            m_hooks.restorePanel();
    });
    connect(m_exitEntry, &QAction::triggered, this, [this] {
        if (m_hooks.exitPanel)
            m_hooks.exitPanel();
    });

    m_timerLoader->setObjectName(QStringLiteral("TimerLoader"));
    m_timerLoader->setInterval(100);
    connect(m_timerLoader, &QTimer::timeout, this, &Splash::TimerLoader_Timer);
    m_timer2->setObjectName(QStringLiteral("Timer2"));
    m_timer2->setInterval(50);
    connect(m_timer2, &QTimer::timeout, this, [this] {
        m_timer2->stop();
        m_menu->popup(QCursor::pos());
    });

    if (QScreen* s = QGuiApplication::primaryScreen()) {
        const QRect g = s->availableGeometry();
        move(g.x() + (g.width() - width()) / 2, g.y() + (g.height() - height()) / 2);
    }
}

void Splash::setCaption(const QString& spanish)
{
    m_label1->setText(Translate(spanish));
    m_captions << m_label1->text();
    m_label1->repaint();
}

void Splash::Form_Load()
{
    SettleLanguage();
    ApplyLanguage(this);
    setCaption(QStringLiteral("Registrando componentes"));
    SetUpComponents();
    // Files that resisted removal in an earlier run are removed now, before
    // anything holds them.
    ProcessPendingRemovals();
    SettleProgramDrive();
    GuardAutorun();
    m_timerLoader->start();
}

void Splash::TimerLoader_Timer()
{
    m_timerLoader->stop();
    if (HasTray()) {
        m_tray = new QSystemTrayIcon(m_icon, this);
        m_tray->setObjectName(QStringLiteral("TrayIcon"));
        m_tray->setToolTip(windowTitle());
        m_tray->setContextMenu(m_menu);
        connect(m_tray, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
            // A left click opens the menu a moment later, out of the tray's own event.
            if (reason == QSystemTrayIcon::Trigger)
                m_timer2->start();
        });
        m_tray->show();
    }
    setCaption(QStringLiteral("Leyendo configuración"));
    ReadSettings();
    setCaption(QStringLiteral("Iniciando servicio"));
    StartEngine(m_hooks.loadEngine);
    hide();
    if (m_hooks.showPanel)
        m_hooks.showPanel();
}

bool Splash::HasTray() const
{
    return QSystemTrayIcon::isSystemTrayAvailable();
}

void Splash::RemoveTrayIcon()
{
    if (m_tray) {
        m_tray->hide();
        m_tray->deleteLater();
        m_tray = nullptr;
    }
}

void Splash::ShowPanelEntry()
{
    m_panelEntry->setVisible(true);
}

void Splash::closeEvent(QCloseEvent* event)
{
    // The splash never dies: closing it only hides it.
    event->ignore();
    hide();
}

void Splash::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    if (!m_picture.isNull())
        p.drawPixmap(0, 0, m_picture);
    else
        p.fillRect(rect(), QColor(0x12, 0x2a, 0x3a));
}

} // namespace vmk
