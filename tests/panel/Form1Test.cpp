#include "DeviceFixture.h"

#include "backup/ui/BackTree.h"

#include "components/engine/Engine.h"
#include "filemanager/FileTreeModel.h"
#include "filemanager/ui/SmartTree.h"
#include "filemanager/ui/frmDataTree.h"
#include "foundation/FileServices.h"
#include "foundation/Globals.h"
#include "foundation/Settings.h"
#include "foundation/StartUp.h"
#include "panel/ControlPanel.h"
#include "panel/DeviceIntegration.h"
#include "panel/PanelFigures.h"
#include "panel/SignatureDate.h"
#include "panel/ui/Form1.h"
#include "platform/Registry.h"
#include "platform/Shell.h"
#include "scanner/QuarantinePurge.h"
#include "scanner/ui/scanTree.h"

#include "TestSupport.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QLabel>
#include <QMouseEvent>
#include <QPointer>
#include <QProcess>
#include <QSystemTrayIcon>
#include <QThread>
#include <QTimer>

#include <memory>

#include <sys/mount.h>

using namespace vmk;
using namespace vmk::panel;

class Form1Test : public test::DeviceFixture
{
protected:
    void SetUp() override
    {
        // A small tmpfs for the device keeps its free space still between two
        // ticks (the machine's disk is shared with other builds); where mounting
        // is refused the temporary folder serves.
        m_mounted = ::mount("tmpfs", m_device.path().toUtf8().constData(), "tmpfs", 0, "size=64m") == 0;
        DeviceFixture::SetUp();
        for (const QString& key : DeviceIntegration::ShellKeys())
            Registry::createKey(key);
        m_marker = m_host.filePath(QStringLiteral("eject-started.txt"));
        putScript(QStringLiteral("C:\\system\\eject.exe"), "printf '%s' \"$*\" > '" + m_marker.toUtf8() + "'");
        put(QStringLiteral("E:\\AUTORUN.inf"), "[autorun]\r\nopen=evil.exe\r\n");
        put(QStringLiteral("E:\\VMK\\AUTORUN.bck"), "[autorun]\r\nopen=VMK\\Vormak.exe\r\n");
        GuardAutorun();
        G().EngineLoaded = true;
        Form1::Hooks hooks;
        hooks.removeTrayIcon = [this] { ++m_trayRemoved; };
        hooks.endProgram = [this](int code) { m_endCodes << code; };
        m_form = std::make_unique<Form1>(m_panel, hooks);
    }
    void TearDown() override
    {
        m_form.reset();
        ReleaseAutorun();
        DeviceFixture::TearDown();
        if (m_mounted)
            ::umount2(m_device.path().toUtf8().constData(), MNT_DETACH);
    }
    // Waits for the eject helper's marker (it is started without waiting).
    QString waitForMarker()
    {
        for (int i = 0; i < 150 && !QFileInfo::exists(m_marker); ++i)
            QThread::msleep(20);
        QThread::msleep(30);
        return QString::fromUtf8(test::readFile(m_marker));
    }

    bool m_mounted = false;
    ControlPanel m_panel;
    std::unique_ptr<Form1> m_form;
    QString m_marker;
    int m_trayRemoved = 0;
    QList<int> m_endCodes;
};

TEST_F(Form1Test, LoadShowsFiguresAndRedrawsOnlyOnChange)
{
    put(m_programFolder + QStringLiteral("\\idx\\master.idx"), indexLine(QDate::currentDate().addDays(-2)));
    test::MessageRecorder messages;
    m_form->show();
    m_form->Form_Load();
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join(QLatin1Char('|')).toStdString();
    const qint64 freeMB = DriveFreeMB(QStringLiteral("E:")).toLongLong();
    const qint64 totalMB = DriveTotalMB(QStringLiteral("E:")).toLongLong();
    ASSERT_GT(totalMB, 0);
    EXPECT_EQ(m_form->label("Lbl_Lib")->text(), PanelFigures::FormatMegabytes(freeMB));
    EXPECT_EQ(m_form->label("LblUsed")->text(), PanelFigures::FormatMegabytes(totalMB - freeMB));
    EXPECT_EQ(m_form->label("Lbl_Tot")->text(), PanelFigures::FormatMegabytes(totalMB));
    EXPECT_EQ(m_form->label("Label18")->text(), QStringLiteral("E:"));
    EXPECT_EQ(m_form->label("Label8")->text(), SignatureDate::CaptionFromDate(QDate::currentDate().addDays(-2)));
    EXPECT_EQ(m_form->RedrawCount(), 1);
    EXPECT_TRUE(m_form->Timer1()->isActive());
    EXPECT_EQ(m_form->Timer1()->interval(), 3000);
    if (m_mounted) {
        m_form->Timer1_Timer();
        m_form->Timer1_Timer();
        EXPECT_EQ(m_form->RedrawCount(), 1); // nothing changed, nothing redrawn
        put(QStringLiteral("E:\\big.bin"), QByteArray(3 * 1024 * 1024, 'x'));
        m_form->Timer1_Timer();
        EXPECT_EQ(m_form->RedrawCount(), 2);
        EXPECT_EQ(m_form->label("Lbl_Lib")->text(),
            PanelFigures::FormatMegabytes(DriveFreeMB(QStringLiteral("E:")).toLongLong()));
    }
    EXPECT_TRUE(m_endCodes.isEmpty());
}

TEST_F(Form1Test, LoadTellsMissingFoldersPurgesAndAsksForOldSignatures)
{
    QDir(native(QStringLiteral("E:") + S().BackupsFolder)).removeRecursively();
    QDir(native(QStringLiteral("E:") + S().EncriptFileFolder)).removeRecursively();
    S().DeleteFilesOpt = 1;
    S().DeleteFilesAfter = 0;
    const QString old = put(QStringLiteral("E:") + S().QuarenteneFolder + QStringLiteral("old.exe"), "x");
    scanner::SetCreationTimeHook([](const QString&) { return QDateTime::currentDateTimeUtc().addDays(-3); });
    put(m_programFolder + QStringLiteral("\\idx\\master.idx"), indexLine(QDate::currentDate().addDays(-6)));
    test::MessageRecorder messages;
    messages.script({ 0, 0, 6 });
    m_form->Form_Load();
    ASSERT_EQ(messages.texts.size(), 3);
    EXPECT_EQ(
        messages.texts[0], QStringLiteral("¡Carpeta de Respaldos no existe!\r\nPor favor, revise su configuración!"));
    EXPECT_EQ(
        messages.texts[1], QStringLiteral("¡Carpeta Encriptada no existe!\r\nPor favor, revise su configuración!"));
    EXPECT_EQ(messages.texts[2],
        QStringLiteral("¡Las firmas no han sigo actualizadas en más de 5 días!\r\n¿Desea actualizar ahora?"));
    EXPECT_EQ(messages.kinds[2], 1);
    EXPECT_FALSE(QFileInfo::exists(old));
    EXPECT_FALSE(QFileInfo::exists(native(QStringLiteral("E:") + S().BackupsFolder))); // nothing is created
    // The yes starts the update half a second later.
    EXPECT_TRUE(m_form->TimerUpdate()->isActive());
    EXPECT_EQ(m_form->TimerUpdate()->interval(), 500);

    // Five days old: no question; no index: "-----" and no question.
    Form1 second(m_panel, {});
    put(m_programFolder + QStringLiteral("\\idx\\master.idx"), indexLine(QDate::currentDate().addDays(-5)));
    test::MessageRecorder quiet;
    second.Form_Load();
    QFile::remove(native(m_programFolder + QStringLiteral("\\idx\\master.idx")));
    Form1 third(m_panel, {});
    third.Form_Load();
    EXPECT_EQ(third.label("Label8")->text(), QStringLiteral("-----"));
    EXPECT_EQ(quiet.texts.size(), 4) << quiet.texts.join(QLatin1Char('|')).toStdString(); // the two folders, twice
    EXPECT_FALSE(second.TimerUpdate()->isActive());
    EXPECT_FALSE(third.TimerUpdate()->isActive());
}

TEST_F(Form1Test, DevicePulledRemovesKeysAndTrayAndEndsWithoutRestore)
{
    test::MessageRecorder messages;
    m_form->Form_Load();
    QFile::remove(native(m_programFolder + QStringLiteral("\\Vormak.exe")));
    m_form->Timer1_Timer();
    EXPECT_EQ(m_endCodes, QList<int>({ 0 }));
    EXPECT_EQ(m_trayRemoved, 1);
    for (const QString& key : DeviceIntegration::ShellKeys())
        EXPECT_FALSE(Registry::keyExists(key));
    EXPECT_TRUE(AutorunGuarded()); // no restore, nothing released
    EXPECT_EQ(test::readFile(native(QStringLiteral("E:\\AUTORUN.inf"))), QByteArray("[autorun]\r\nopen=evil.exe\r\n"));
    EXPECT_TRUE(G().EngineLoaded);
    EXPECT_FALSE(m_form->Timer1()->isActive());
    EXPECT_FALSE(QFileInfo::exists(m_marker));
    EXPECT_TRUE(messages.texts.isEmpty());
}

TEST_F(Form1Test, AskedQuitDeclinedThenAccepted)
{
    m_form->show();
    m_form->Form_Load();
    test::MessageRecorder messages;
    messages.script({ 7 });
    m_form->close();
    ASSERT_EQ(messages.texts.size(), 1);
    EXPECT_EQ(messages.texts[0], QStringLiteral("¿Realmente desea salir de Vormak?"));
    EXPECT_FALSE(m_form->Unloaded());
    EXPECT_TRUE(m_form->isVisible());
    EXPECT_TRUE(m_form->Timer1()->isActive());
    EXPECT_TRUE(AutorunGuarded());
    EXPECT_EQ(m_trayRemoved, 0);

    messages.script({ 6 });
    m_form->close();
    EXPECT_TRUE(m_form->Unloaded());
    EXPECT_FALSE(m_form->isVisible());
    EXPECT_EQ(m_endCodes, QList<int>({ 0 }));
    EXPECT_EQ(m_trayRemoved, 1);
    EXPECT_FALSE(AutorunGuarded());
    EXPECT_EQ(
        test::readFile(native(QStringLiteral("E:\\AUTORUN.inf"))), QByteArray("[autorun]\r\nopen=VMK\\Vormak.exe\r\n"));
    // The shell keys stay on a normal quit, and no helper runs.
    EXPECT_TRUE(Registry::keyExists(DeviceIntegration::ShellKeys().last()));
    QThread::msleep(200);
    EXPECT_FALSE(QFileInfo::exists(m_marker));
}

TEST_F(Form1Test, EjectQuitAsksNothingRestoresAndStartsTheHelper)
{
    m_form->show();
    m_form->Form_Load();
    test::MessageRecorder messages;
    G().LanguageIndex = 4;
    m_form->Image20_Click();
    EXPECT_TRUE(m_form->Unloaded());
    EXPECT_TRUE(G().QuitWithEject);
    EXPECT_EQ(m_endCodes, QList<int>({ 0 }));
    EXPECT_EQ(m_trayRemoved, 1);
    EXPECT_EQ(
        test::readFile(native(QStringLiteral("E:\\AUTORUN.inf"))), QByteArray("[autorun]\r\nopen=VMK\\Vormak.exe\r\n"));
    EXPECT_EQ(waitForMarker(), QStringLiteral("4|E:"));
    EXPECT_EQ(QDir::currentPath(), QDir(native(G().SystemFolder)).canonicalPath());
    for (const QString& t : messages.texts)
        EXPECT_NE(t, QStringLiteral("¿Realmente desea salir de Vormak?"));
}

TEST_F(Form1Test, HideLinksMinimiseWithoutATrayAndTheTrayExitQuits)
{
    m_form->show();
    m_form->Form_Load();
    test::MessageRecorder messages;
    // No tray offscreen: both links minimise, so the panel is never out of reach,
    // even when a tray icon owner says it took the panel.
    ASSERT_FALSE(QSystemTrayIcon::isSystemTrayAvailable());
    int trayAsked = 0;
    Form1::Hooks hooks;
    hooks.hideToTray = [&] {
        ++trayAsked;
        return true;
    };
    hooks.endProgram = [this](int code) { m_endCodes << code; };
    Form1 other(m_panel, hooks);
    other.show();
    for (const char* link : { "Label13", "Label4" }) {
        other.showNormal();
        QLabel* l = other.label(link);
        ASSERT_NE(l, nullptr) << link;
        QMouseEvent press(QEvent::MouseButtonPress, QPointF(2, 2), l->mapToGlobal(QPointF(2, 2)), Qt::LeftButton,
            Qt::LeftButton, Qt::NoModifier);
        QMouseEvent release(QEvent::MouseButtonRelease, QPointF(2, 2), l->mapToGlobal(QPointF(2, 2)), Qt::LeftButton,
            Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(l, &press);
        QApplication::sendEvent(l, &release);
        QCoreApplication::processEvents(); // the click runs once its event is done
        EXPECT_TRUE(other.isVisible()) << link;
        EXPECT_TRUE(other.isMinimized()) << link;
    }
    EXPECT_EQ(trayAsked, 0);
    // A second start brings it back.
    other.BringToFront();
    EXPECT_TRUE(other.isVisible());
    EXPECT_FALSE(other.isMinimized());

    m_form->Label13_Click();
    ASSERT_TRUE(m_form->isVisible());
    m_form->Image20_Click(); // the tray menu's Exit
    EXPECT_TRUE(m_form->Unloaded());
    EXPECT_EQ(m_endCodes, QList<int>({ 0 }));
    EXPECT_EQ(waitForMarker(), QStringLiteral("0|E:"));
    for (const QString& t : messages.texts)
        EXPECT_NE(t, QStringLiteral("¿Realmente desea salir de Vormak?"));
}

TEST_F(Form1Test, ButtonsLightOnHoverAndTheWebAddressOpens)
{
    m_form->show();
    QLabel* zone = m_form->findChild<QLabel*>(QStringLiteral("Image4"));
    QLabel* lit = m_form->findChild<QLabel*>(QStringLiteral("Image15"));
    QLabel* background = m_form->findChild<QLabel*>(QStringLiteral("Image21"));
    ASSERT_TRUE(zone && lit && background);
    EXPECT_FALSE(lit->isVisible());
    QMouseEvent move(QEvent::MouseMove, QPointF(10, 10), zone->mapToGlobal(QPointF(10, 10)), Qt::NoButton, Qt::NoButton,
        Qt::NoModifier);
    QApplication::sendEvent(zone, &move);
    EXPECT_TRUE(lit->isVisible());
    QMouseEvent away(QEvent::MouseMove, QPointF(5, 5), background->mapToGlobal(QPointF(5, 5)), Qt::NoButton,
        Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(background, &away);
    EXPECT_FALSE(lit->isVisible());
    // Every control the panel names is there.
    for (const char* name :
        { "Lab_USB", "Label18", "Lbl_Tit_Lib", "Lbl_Lib", "Label12", "LblUsed", "Lbl_Tit_Tot", "Lbl_Tot", "Label5",
            "Label8", "Label6", "Label9", "Label7", "Label10", "LabelEspecial", "Image2", "Image3", "Image4", "Image5",
            "Image6", "Image7", "Image8", "Image9", "Image10", "Image11", "Image12", "Image13", "Image14", "Image15",
            "Image16", "Image17", "Image18", "Image20", "Image21", "Image23", "Lbl_but1", "Lbl_but2", "Lbl_but3",
            "Lbl_but4", "Lbl_but5", "Lbl_but6", "Lbl_but7", "Label1", "Label2", "Label11", "Label13", "Label4" })
        EXPECT_NE(m_form->findChild<QWidget*>(QLatin1String(name)), nullptr) << name;
    EXPECT_NE(m_form->findChild<QWidget*>(QStringLiteral("Pie")), nullptr);
    QMouseEvent over(QEvent::MouseMove, QPointF(10, 10), QPointF(10, 10), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    // The backups' button is a tool like the others: enabled, and it lights.
    QLabel* backups = m_form->findChild<QLabel*>(QStringLiteral("Image3"));
    EXPECT_TRUE(backups->isEnabled());
    EXPECT_TRUE(m_form->findChild<QLabel*>(QStringLiteral("Lbl_but4"))->isEnabled());
    QApplication::sendEvent(backups, &over);
    EXPECT_TRUE(m_form->findChild<QLabel*>(QStringLiteral("Image11"))->isVisible());

    QStringList opened;
    Shell::Opener previous = Shell::setOpener([&](const QString& target) {
        opened << target;
        return true;
    });
    m_form->Image17_Click();
    Shell::setOpener(previous);
    EXPECT_EQ(opened, QStringList({ QString::fromLatin1(ControlPanel::kWebAddress) }));
}

TEST_F(Form1Test, AFailedEngineShowsOnTheShieldAndTheSignatureCard)
{
    // No signature file in sigs\: the real engine refuses to start.
    const QString program = native(m_programFolder);
    QDir().mkpath(program + QStringLiteral("/sigs"));
    test::writeFile(program + QStringLiteral("/sigs/readme.txt"), "no signatures here");
    QDir::setCurrent(program);
    test::MessageRecorder messages;
    StartEngine([] { return int(engine::LoadEngine()); });
    ASSERT_FALSE(G().EngineLoaded);
    ASSERT_EQ(messages.texts, QStringList({ QStringLiteral("Error iniciando servicio! (7)") }));
    m_form->show();
    m_form->Form_Load();
    QLabel* reason = m_form->label("LblEngineReason");
    ASSERT_NE(reason, nullptr);
    EXPECT_TRUE(reason->isVisible());
    EXPECT_EQ(reason->text(), QStringLiteral("No hay archivos de firmas en la carpeta E:\\VMK\\sigs\\ (7)"));
    EXPECT_EQ(m_form->label("Label9")->text(), QStringLiteral("¡Error iniciando servicio!"));
    EXPECT_FALSE(m_form->label("Label10")->isVisible());
    EXPECT_FALSE(m_form->label("Label7")->isVisible());
    QLabel* shield = m_form->label("Image22");
    EXPECT_EQ(shield->toolTip(), reason->text());
    // The shield is red, not the green of a running engine.
    const QImage picture = shield->pixmap().toImage();
    const QColor middle = picture.pixelColor(picture.width() / 2, picture.height() / 4);
    EXPECT_GT(middle.red(), 2 * middle.green()) << middle.name().toStdString();
    if (const QString dir = qEnvironmentVariable("VMK_SHOTS"); !dir.isEmpty())
        m_form->grab().save(dir + QStringLiteral("/panel-engine-failed.png"));

    // In English the reason is English too.
    G().LanguageIndex = 1;
    m_form->Form_Load();
    EXPECT_EQ(reason->text(), QStringLiteral("There are no signature files in the folder E:\\VMK\\sigs\\ (7)"));
    EXPECT_EQ(m_form->label("Label9")->text(), QStringLiteral("Error starting service!"));
    G().LanguageIndex = 0;

    // Signatures put in place and the engine restarted (as after an update):
    // the green shield and the data come back.
    QFile::copy(test::binDir() + QStringLiteral("/sigs/vormak.cud"), program + QStringLiteral("/sigs/vormak.cud"));
    m_panel.RestartEngine();
    m_form->Form_Load();
    EXPECT_FALSE(reason->isVisible());
    EXPECT_TRUE(m_form->label("Label10")->isVisible());
    EXPECT_FALSE(m_form->label("Label10")->text().isEmpty());
    EXPECT_TRUE(shield->toolTip().isEmpty());
    const QImage green = shield->pixmap().toImage();
    const QColor top = green.pixelColor(green.width() / 2, green.height() / 4);
    EXPECT_GT(top.green(), top.red()) << top.name().toStdString();
    if (const QString dir = qEnvironmentVariable("VMK_SHOTS"); !dir.isEmpty())
        m_form->grab().save(dir + QStringLiteral("/panel-engine-running.png"));
    engine::UnLoadEngine();
}

TEST_F(Form1Test, ScanButtonsWarnHideThePanelAndOpenTheScanner)
{
    test::MessageRecorder messages;
    m_form->show();
    auto clickLit = [this](const char* name) {
        QLabel* l = m_form->label(name);
        ASSERT_NE(l, nullptr) << name;
        QMouseEvent release(QEvent::MouseButtonRelease, QPointF(2, 2), l->mapToGlobal(QPointF(2, 2)), Qt::LeftButton,
            Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(l, &release);
        QCoreApplication::processEvents(); // the click runs once its event is done
    };
    const QString warning = QStringLiteral("¡Si cuenta con otro antivirus en este equipo, recomendamos pausarlo!");

    // "Analizar PC": the host's tree, with the memory node.
    clickLit("Image13");
    EXPECT_EQ(messages.texts, QStringList({ warning }));
    EXPECT_FALSE(m_form->isVisible());
    EXPECT_TRUE(G().ScanHost);
    scanTree* scanner = m_form->ScanForm();
    ASSERT_NE(scanner, nullptr);
    EXPECT_TRUE(scanner->isVisible());
    const FileTreeModel& hostModel = *scanner->SmartDataTree()->treeModel();
    EXPECT_EQ(hostModel.keyOf(hostModel.index(0, 0)), QStringLiteral("|HOST|"));
    EXPECT_EQ(hostModel.childKeys(QStringLiteral("|HOST|")).value(0), QStringLiteral("*Memory*"));
    // Closing the scanner brings the panel back.
    scanner->close();
    EXPECT_FALSE(scanner->isVisible());
    EXPECT_TRUE(m_form->isVisible());

    // "Analizar Dispositivo": the device alone, loaded afresh.
    clickLit("Image14");
    EXPECT_EQ(messages.texts, QStringList({ warning, warning }));
    EXPECT_FALSE(m_form->isVisible());
    EXPECT_FALSE(G().ScanHost);
    ASSERT_EQ(m_form->ScanForm(), scanner);
    EXPECT_TRUE(scanner->isVisible());
    const FileTreeModel& deviceModel = *scanner->SmartDataTree()->treeModel();
    EXPECT_EQ(deviceModel.rowCount(), 1);
    EXPECT_EQ(deviceModel.keyOf(deviceModel.index(0, 0)), QStringLiteral("E:\\"));
    EXPECT_FALSE(deviceModel.NodeExists(QStringLiteral("|HOST|")));
    scanner->close();
    EXPECT_TRUE(m_form->isVisible());
}

TEST_F(Form1Test, BackupsButtonHidesThePanelAndOpensBackTree)
{
    test::MessageRecorder messages;
    m_form->show();
    QLabel* lit = m_form->label("Image11");
    ASSERT_NE(lit, nullptr);
    QMouseEvent release(QEvent::MouseButtonRelease, QPointF(2, 2), lit->mapToGlobal(QPointF(2, 2)), Qt::LeftButton,
        Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(lit, &release);
    QCoreApplication::processEvents(); // the click runs once its event is done

    EXPECT_TRUE(messages.texts.isEmpty());
    EXPECT_FALSE(m_form->isVisible());
    BackTree* backups = m_form->BackupForm();
    ASSERT_NE(backups, nullptr);
    EXPECT_TRUE(backups->isVisible());
    EXPECT_EQ(backups->objectName(), QStringLiteral("BackTree"));
    // The selection is in view, over the host's tree.
    EXPECT_TRUE(backups->isShown(BackTree::Panel::Frame3));
    EXPECT_FALSE(backups->isShown(BackTree::Panel::Frame2));
    const FileTreeModel& model = *backups->SmartDataTree()->treeModel();
    EXPECT_EQ(model.keyOf(model.index(0, 0)), QStringLiteral("|HOST|"));
    // Closing it brings the panel back; a second click opens the same form afresh.
    backups->close();
    EXPECT_TRUE(m_form->isVisible());
    QApplication::sendEvent(lit, &release);
    QCoreApplication::processEvents();
    EXPECT_EQ(m_form->BackupForm(), backups);
    EXPECT_TRUE(backups->isVisible());
    backups->close();
}

TEST_F(Form1Test, FileManagerButtonHidesThePanelAndOpensBothTrees)
{
    test::MessageRecorder messages;
    m_form->show();
    m_form->Timer1()->start();
    // The file manager's button is no longer greyed: it lights and clicks.
    for (const char* name : { "Image9", "Lbl_but1" })
        EXPECT_TRUE(m_form->label(name)->isEnabled()) << name;
    QLabel* lit = m_form->label("Image12");
    QMouseEvent move(QEvent::MouseMove, QPointF(10, 10), m_form->label("Image9")->mapToGlobal(QPointF(10, 10)),
        Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(m_form->label("Image9"), &move);
    EXPECT_TRUE(lit->isVisible());
    QMouseEvent release(QEvent::MouseButtonRelease, QPointF(2, 2), lit->mapToGlobal(QPointF(2, 2)), Qt::LeftButton,
        Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(lit, &release);
    QCoreApplication::processEvents(); // the click runs once its event is done

    EXPECT_TRUE(messages.texts.isEmpty());
    EXPECT_FALSE(m_form->isVisible());
    EXPECT_EQ(G().TreeSide, 0);
    QPointer<frmDataTree> files = m_form->DataTreeForm();
    ASSERT_NE(files, nullptr);
    EXPECT_TRUE(files->isVisible());
    files->Timer1_Timer(); // the one-shot fill, as the form's Timer1 runs it
    const FileTreeModel& host = *files->SmartDataTree()->treeModel();
    const FileTreeModel& device = *files->SmartUIFlash()->treeModel();
    EXPECT_EQ(host.keyOf(host.index(0, 0)), QStringLiteral("|HOST|"));
    EXPECT_TRUE(host.childKeys(QStringLiteral("|HOST|")).contains(QStringLiteral("E:\\")));
    EXPECT_EQ(device.rowCount(), 1);
    EXPECT_EQ(device.keyOf(device.index(0, 0)), QStringLiteral("E:\\"));
    // The panel's timer goes on while the form is merely open.
    EXPECT_TRUE(m_form->Timer1()->isActive());

    // Closing it brings the panel back; the form goes with its window.
    files->close();
    EXPECT_TRUE(m_form->isVisible());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(files.isNull());
}
