#include "panel/ui/Form1.h"

#include "backup/ui/BackTree.h"
#include "panel/ControlPanel.h"
#include "panel/ui/FrmConf.h"
#include "passwords/ui/FrmPass.h"
#include "passwords/ui/PassTree.h"

#include "charts/ui/Pie.h"
#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "foundation/Translate.h"
#include "foundation/ui/ApplyLanguage.h"
#include "foundation/ui/BarraUpdate.h"
#include "foundation/ui/FormEject.h"
#include "platform/Pump.h"
#include "scanner/ui/scanTree.h"

#include <QCloseEvent>
#include <QDate>
#include <QGuiApplication>
#include <QLabel>
#include <QMouseEvent>
#include <QPixmap>
#include <QScreen>
#include <QSystemTrayIcon>
#include <QTimer>

// The pictures are compiled into this static library; their registration must
// be pulled in by name.
static void initPanelResources()
{
    Q_INIT_RESOURCE(panel);
}

namespace vmk::panel
{
namespace
{
const QString kTitleStyle = QStringLiteral("color:#3d4a57;font-weight:bold;");
const QString kValueStyle = QStringLiteral("color:#0b4d5c;font-weight:bold;");
const QString kCaptionStyle = QStringLiteral("color:#2c3640;");
const QString kHeaderLinkStyle = QStringLiteral("color:#d8efe8;");
const QString kFailureStyle = QStringLiteral("color:#b3261e;font-weight:bold;");
const QString kEmptyDate = QStringLiteral("-----");
} // namespace

Form1::Form1(ControlPanel& panel, Hooks hooks, QWidget* parent)
    : QWidget(parent)
    , m_panel(panel)
    , m_hooks(std::move(hooks))
    , m_timer1(new QTimer(this))
    , m_timerUpdate(new QTimer(this))
{
    initPanelResources();
    setObjectName(QStringLiteral("Form1"));
    setWindowTitle(QStringLiteral("Vormak"));
    setWindowIcon(QIcon(QStringLiteral(":/panel/icons/vormak.png")));
    setFixedSize(640, 460);

    m_background = addLabel("Image21", QString(), QRect(0, 0, 640, 460));
    m_background->setPixmap(QPixmap(QStringLiteral(":/panel/icons/background.png")));
    m_background->setMouseTracking(true);
    m_background->installEventFilter(this);

    // Header band: the shield, the title and the small links on the right.
    m_shield = addLabel("Image22", QString(), QRect(14, 7, 44, 44));
    QLabel* title = addLabel(
        "LabelEspecial", QStringLiteral("Panel de control"), QRect(66, 10, 330, 38), QStringLiteral("color:white;"));
    QFont titleFont(QStringLiteral("DejaVu Sans"));
    titleFont.setPixelSize(22);
    titleFont.setBold(true);
    title->setFont(titleFont);
    QLabel* helpIcon = addLabel("Image23", QString(), QRect(452, 17, 24, 24));
    helpIcon->setPixmap(QPixmap(QStringLiteral(":/panel/icons/help.png"))
                            .scaled(24, 24, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    QLabel* help = addLabel("Label11", QStringLiteral("Ayuda"), QRect(480, 17, 64, 24), kHeaderLinkStyle);
    QLabel* hide = addLabel("Label13", QStringLiteral("Ocultar"), QRect(546, 17, 64, 24), kHeaderLinkStyle);
    QLabel* minimise = addLabel("Label4", QStringLiteral("_"), QRect(612, 12, 18, 24), kHeaderLinkStyle);
    for (QLabel* l : { helpIcon, help, hide, minimise }) {
        l->setCursor(Qt::PointingHandCursor);
        l->installEventFilter(this);
    }
    m_clicks.insert(help, [this] { Image17_Click(); });
    m_clicks.insert(helpIcon, [this] { Image17_Click(); });
    m_clicks.insert(hide, [this] { Label13_Click(); });
    m_clicks.insert(minimise, [this] { Label4_Click(); });

    // Space card.
    addLabel("Lab_USB", QStringLiteral("Espacio"), QRect(32, 80, 150, 24), kTitleStyle);
    addLabel("Label18", QString(), QRect(190, 80, 100, 24), kValueStyle)
        ->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_pie = new Pie(this);
    m_pie->setObjectName(QStringLiteral("Pie"));
    m_pie->setGeometry(86, 112, 152, 100);
    m_pie->setBackcolor(QColor(0xfa, 0xfb, 0xfc));
    const int rows[3] = { 222, 248, 274 };
    const char* titles[3] = { "Lbl_Tit_Lib", "Label12", "Lbl_Tit_Tot" };
    const char* values[3] = { "Lbl_Lib", "LblUsed", "Lbl_Tot" };
    const QString words[3] = { QStringLiteral("Disponible:"), QStringLiteral("Usado:"), QStringLiteral("Total:") };
    for (int i = 0; i < 3; ++i) {
        addLabel(titles[i], words[i], QRect(40, rows[i], 120, 22), kCaptionStyle);
        addLabel(values[i], QString(), QRect(160, rows[i], 130, 22), kValueStyle)
            ->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    }

    // Signature card.
    const char* sigTitles[3] = { "Label5", "Label6", "Label7" };
    const char* sigValues[3] = { "Label8", "Label9", "Label10" };
    const QString sigWords[3] = { QStringLiteral("Última actualización"), QStringLiteral("Versión de firmas"),
        QStringLiteral("Firmas de Virus") };
    // Each caption over its value: the version text of a signature set can be long.
    for (int i = 0; i < 3; ++i) {
        addLabel(sigTitles[i], sigWords[i], QRect(32, 322 + i * 40, 260, 18), kCaptionStyle);
        addLabel(sigValues[i], QString(), QRect(32, 339 + i * 40, 260, 20), kValueStyle);
    }

    // Where the engine's failure is told, over the version and count rows it empties.
    m_engineReason = addLabel("LblEngineReason", QString(), QRect(32, 401, 260, 40), kFailureStyle);
    m_engineReason->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    m_engineReason->setWordWrap(true);
    m_engineReason->setVisible(false);
    showEngineFailure(QString());

    // The nine tool buttons, each a resting picture (hot zone) under its lit one.
    auto cell = [](int col, int row) { return QPoint(334 + col * 100, 80 + row * 120); };
    addButton("Image9", "Image12", "Lbl_but1", QStringLiteral("Adm. Archivos"), QStringLiteral("filemanager"),
        cell(0, 0), [this] { Image12_Click(); });
    addButton("Image7", "Image13", "Lbl_but7", QStringLiteral("Analizar PC"), QStringLiteral("scanpc"), cell(1, 0),
        [this] { Image13_Click(); });
    addButton("Image5", "Image14", "Lbl_but2", QStringLiteral("Analizar Dispositivo"), QStringLiteral("scandevice"),
        cell(2, 0), [this] { Image14_Click(); });
    addButton("Image4", "Image15", "Lbl_but3", QStringLiteral("Actualizar"), QStringLiteral("update"), cell(0, 1),
        [this] { Image15_Click(); });
    addButton("Image3", "Image11", "Lbl_but4", QStringLiteral("Respaldos"), QStringLiteral("backups"), cell(1, 1),
        [this] { Image11_Click(); });
    addButton("Image8", "Image16", "Lbl_but5", QStringLiteral("Contraseñas"), QStringLiteral("passwords"), cell(2, 1),
        [this] { Image16_Click(); });
    addButton("Image10", "Image18", "Label2", QStringLiteral("Configuración"), QStringLiteral("settings"), cell(0, 2),
        [this] { Image18_Click(); });
    addButton("Image2", "Image17", "Label1", QStringLiteral("Noticias"), QStringLiteral("news"), cell(1, 2),
        [this] { Image17_Click(); });
    addButton("Image6", "Image20", "Lbl_but6", QStringLiteral("Expulsar"), QStringLiteral("eject"), cell(2, 2),
        [this] { Image20_Click(); });

    m_timer1->setObjectName(QStringLiteral("Timer1"));
    m_timer1->setInterval(3000);
    connect(m_timer1, &QTimer::timeout, this, &Form1::Timer1_Timer);
    m_timerUpdate->setObjectName(QStringLiteral("TimerUpdate"));
    m_timerUpdate->setInterval(500);
    connect(m_timerUpdate, &QTimer::timeout, this, &Form1::TimerUpdate_Timer);
}

Form1::~Form1()
{
    delete m_barraUpdate;
    delete m_formEject;
    delete m_scanTree;
    delete m_backTree;
}

void Form1::Image12_Click()
{
    hide();
    G().TreeSide = 0;
    // A new file manager at each opening: its trees show the drives of that moment.
    auto* form = new frmDataTree;
    form->setAttribute(Qt::WA_DeleteOnClose);
    form->setPanelTimer(m_timer1);
    connect(form, &frmDataTree::unloaded, this, &QWidget::show);
    m_dataTree = form;
    form->Form_Load();
    form->show();
}

void Form1::Image13_Click()
{
    openScanner(true);
}

void Form1::Image14_Click()
{
    openScanner(false);
}

void Form1::openScanner(bool scanHost)
{
    ShowMessage(QStringLiteral("¡Si cuenta con otro antivirus en este equipo, recomendamos pausarlo!"));
    hide();
    G().ScanHost = scanHost;
    // One scanner window for the run, a window of its own like the update's
    // progress form; each opening loads it afresh.
    if (!m_scanTree) {
        m_scanTree = new scanTree;
        connect(m_scanTree, &scanTree::Closed, this, [this] { show(); });
    }
    m_scanTree->Form_Load();
    m_scanTree->show();
}

void Form1::Image11_Click()
{
    hide();
    // One backup window for the run; each opening loads it afresh.
    if (!m_backTree) {
        m_backTree = new BackTree;
        connect(m_backTree, &BackTree::Closed, this, [this] { show(); });
    }
    m_backTree->Form_Load();
    m_backTree->show();
}

QLabel* Form1::addLabel(const char* name, const QString& text, const QRect& geometry, const QString& style)
{
    auto* l = new QLabel(text, this);
    l->setObjectName(QLatin1String(name));
    l->setGeometry(geometry);
    if (!style.isEmpty())
        l->setStyleSheet(style);
    return l;
}

void Form1::addButton(const char* hotZone, const char* lit, const char* captionName, const QString& caption,
    const QString& icon, QPoint at, std::function<void()> click, const QString& unavailable)
{
    QLabel* zone = addLabel(hotZone, QString(), QRect(at, QSize(72, 72)));
    zone->setPixmap(QPixmap(QStringLiteral(":/panel/icons/%1.png").arg(icon)));
    zone->setMouseTracking(true);
    zone->installEventFilter(this);
    QLabel* upper = addLabel(lit, QString(), QRect(at, QSize(72, 72)));
    upper->setPixmap(QPixmap(QStringLiteral(":/panel/icons/%1-lit.png").arg(icon)));
    upper->setCursor(Qt::PointingHandCursor);
    upper->setVisible(false);
    upper->installEventFilter(this);
    QLabel* text = addLabel(captionName, caption, QRect(at.x() - 18, at.y() + 74, 108, 34), kCaptionStyle);
    text->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    text->setWordWrap(true);
    if (!click) {
        // A tool not yet built: greyed, never lit, and its tip says why.
        for (QLabel* part : { zone, text }) {
            part->setEnabled(false);
            part->setToolTip(Translate(unavailable));
        }
        return;
    }
    m_hotZones.insert(zone, upper);
    m_litImages << upper;
    m_clicks.insert(upper, std::move(click));
}

QLabel* Form1::label(const char* name) const
{
    return findChild<QLabel*>(QLatin1String(name));
}

bool Form1::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseMove:
        if (watched == m_background) {
            hideLitImages();
        } else if (QLabel* upper = m_hotZones.value(watched)) {
            if (!upper->isVisible()) {
                hideLitImages();
                upper->setVisible(true);
            }
        }
        break;
    case QEvent::Leave:
        if (m_litImages.contains(static_cast<QLabel*>(watched)))
            static_cast<QLabel*>(watched)->setVisible(false);
        break;
    case QEvent::MouseButtonRelease: {
        auto it = m_clicks.find(watched);
        auto* me = static_cast<QMouseEvent*>(event);
        if (it != m_clicks.end() && me->button() == Qt::LeftButton
            && static_cast<QWidget*>(watched)->rect().contains(me->position().toPoint())) {
            // The click may close or hide this form; run it once the event is done.
            std::function<void()> click = it.value();
            QTimer::singleShot(0, this, [click] { click(); });
            return true;
        }
        break;
    }
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

void Form1::leaveEvent(QEvent* event)
{
    hideLitImages();
    QWidget::leaveEvent(event);
}

void Form1::hideLitImages()
{
    for (QLabel* l : m_litImages)
        l->setVisible(false);
}

void Form1::Form_Load()
{
    ApplyLanguage(this);
    if (QScreen* screen = QGuiApplication::primaryScreen()) {
        const QRect s = screen->availableGeometry();
        move(s.x() + (s.width() - width()) / 2, s.y() + (s.height() - height()) / 2);
    }
    Timer1_Timer();
    m_panel.CheckFolders();
    m_panel.PurgeQuarantine(QDate::currentDate());
    showSignatureDate();
    if (m_panel.SignatureIndexExists() && m_panel.AskForOldSignatures(label("Label8")->text(), QDate::currentDate()))
        m_timerUpdate->start();
    label("Label18")->setText(G().ProgramDrive);
    showEngineData();
    m_panel.PushOptions();
    m_timer1->start();
}

void Form1::Timer1_Timer()
{
    qint64 freeMB = 0, totalMB = 0;
    m_panel.ReadDrive(&freeMB, &totalMB);
    if (m_figures.Update(label("Lbl_Lib")->text(), freeMB, totalMB))
        drawFigures(m_figures);
    if (!m_panel.ProgramFileExists()) {
        // The device was pulled out: no message, no engine unload, no restore.
        m_timer1->stop();
        m_panel.DevicePulled();
        if (m_hooks.removeTrayIcon)
            m_hooks.removeTrayIcon();
        m_unloaded = true;
        if (m_hooks.endProgram)
            m_hooks.endProgram(0);
    }
}

void Form1::drawFigures(const PanelFigures& figures)
{
    ++m_redraws;
    const QList<QVariant> chart { figures.UsedPercent(), figures.FreePercent() };
    int length = 15;
    m_pie->CreatePie(chart, 150, 80, length);
    label("Lbl_Lib")->setText(figures.FreeCaption());
    label("LblUsed")->setText(figures.UsedCaption());
    label("Lbl_Tot")->setText(figures.TotalCaption());
}

void Form1::showEngineData()
{
    const QString failure = m_panel.EngineFailure();
    showEngineFailure(failure);
    if (!failure.isEmpty())
        return;
    label("Label9")->setText(m_panel.EngineVersionText());
    label("Label10")->setText(m_panel.EngineCountText());
}

void Form1::showEngineFailure(const QString& reason)
{
    // A stopped engine must not look like a protected device: the shield
    // loses its check, and the signature card says what failed and why.
    const bool failed = !reason.isEmpty();
    m_shield->setPixmap(
        QPixmap(failed ? QStringLiteral(":/panel/icons/vormak-failed.png") : QStringLiteral(":/panel/icons/vormak.png"))
            .scaled(44, 44, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    m_shield->setToolTip(reason);
    label("Label9")->setStyleSheet(failed ? kFailureStyle : kValueStyle);
    label("Label9")->setText(failed ? Translate(QStringLiteral("¡Error iniciando servicio!")) : QString());
    label("Label10")->setText(QString());
    label("Label7")->setVisible(!failed);
    label("Label10")->setVisible(!failed);
    m_engineReason->setText(reason);
    m_engineReason->setVisible(failed);
}

void Form1::showSignatureDate()
{
    label("Label8")->setText(m_panel.SignatureCaption());
}

void Form1::TimerUpdate_Timer()
{
    m_timerUpdate->stop();
    Image15_Click();
}

void Form1::Image15_Click()
{
    setEnabled(false);
    // A window of its own: as a child of the panel it would be greyed out with it.
    if (!m_barraUpdate)
        m_barraUpdate = new BarraUpdate();
    m_barraUpdate->show();
    DoEvents();
    const UpdateVerdict verdict = m_panel.RunUpdater();
    switch (verdict) {
    case UpdateVerdict::Finished:
        if (ShowMessage(QStringLiteral("¿Las firmas fueron actualizadas, desea reiniciar el motor?"), 1) == 6) {
            m_panel.RestartEngine();
            showEngineData();
            showSignatureDate();
        }
        break;
    case UpdateVerdict::Error:
    case UpdateVerdict::LogMissing:
        ShowMessage(QStringLiteral("¡Error al actualizar!"));
        break;
    case UpdateVerdict::NothingToUpdate:
        ShowMessage(QStringLiteral("¡Nada que actualizar!"));
        break;
    case UpdateVerdict::Silent:
        break;
    }
    m_barraUpdate->hide();
    setEnabled(true);
}

void Form1::Image17_Click()
{
    m_panel.OpenWebSite();
}

void Form1::Image16_Click()
{
    if (!passwords::AskOwnerPassword(this))
        return;
    hide();
    auto* form = new passwords::PassTree;
    form->setAttribute(Qt::WA_DeleteOnClose);
    connect(form, &passwords::PassTree::unloaded, this, &QWidget::show);
    form->show();
}

void Form1::Image18_Click()
{
    if (!passwords::AskOwnerPassword(this))
        return;
    hide();
    auto* form = new FrmConf;
    form->setAttribute(Qt::WA_DeleteOnClose);
    connect(form, &FrmConf::unloaded, this, &QWidget::show);
    form->show();
}

void Form1::Image20_Click()
{
    setEnabled(false);
    G().QuitWithEject = true;
    close();
}

void Form1::Label13_Click()
{
    // Hidden only where a tray icon can bring the panel back: without one a
    // hidden panel could never be reached again.
    if (QSystemTrayIcon::isSystemTrayAvailable() && m_hooks.hideToTray && m_hooks.hideToTray())
        hide();
    else
        showMinimized();
}

void Form1::Label4_Click()
{
    Label13_Click();
}

void Form1::BringToFront()
{
    if (isMinimized() || !isVisible())
        showNormal();
    raise();
    activateWindow();
}

void Form1::closeEvent(QCloseEvent* event)
{
    if (m_unloaded || formUnload())
        event->accept();
    else
        event->ignore();
}

bool Form1::formUnload()
{
    if (m_inUnload)
        return false;
    m_inUnload = true;
    m_timer1->stop();
    if (!G().QuitWithEject) {
        if (ShowMessage(QStringLiteral("¿Realmente desea salir de Vormak?"), 1) != 6) {
            unsetCursor();
            m_timer1->start();
            m_inUnload = false;
            return false;
        }
    }
    if (!m_formEject)
        m_formEject = new FormEject();
    m_formEject->show();
    if (!G().QuitWithEject)
        DoEvents();
    if (m_hooks.removeTrayIcon)
        m_hooks.removeTrayIcon();
    m_panel.ShutDownServices();
    if (G().QuitWithEject) {
        DoEvents();
        m_panel.StartEjectHelper();
    }
    hide();
    m_unloaded = true;
    m_inUnload = false;
    if (m_hooks.endProgram)
        m_hooks.endProgram(0);
    return true;
}

} // namespace vmk::panel
