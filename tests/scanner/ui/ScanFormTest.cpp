#include "scanner/ui/scanTree.h"

#include "EngineTestSupport.h"
#include "TestSupport.h"
#include "TreeDrives.h"
#include "components/engine/Engine.h"
#include "filemanager/FileTreeModel.h"
#include "filemanager/ui/SmartTree.h"
#include "foundation/ForceDelete.h"
#include "foundation/Globals.h"
#include "foundation/Settings.h"
#include "platform/Pump.h"
#include "scanner/ThreatListModel.h"

#include <QDir>
#include <QFileInfo>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>

#include <gtest/gtest.h>

using namespace vmk;
using namespace vmk::test;

namespace
{
const QString kFinished = QStringLiteral("¡Análisis finalizado correctamente!");
const QString kAborted = QStringLiteral("¡Análisis abortado!");

// The device's tree of a scan session: a clean file, an infected one, an archive
// with two infected members, and a folder that is not ticked.
class ScanFormTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(loadBuiltEngine(), 0);
        m_oldScanHost = G().ScanHost;
        G().ScanHost = false;
        m_oldRunner = SetHelperRunner([this](const QString& program, const QStringList&) { m_helpers << program; });
        ASSERT_TRUE(writeFile(m_drives.device() + "/docs/clean.txt", "nothing to see"));
        ASSERT_TRUE(writeFile(m_drives.device() + "/docs/eicar.com", eicar()));
        ASSERT_TRUE(makeZip(m_drives.device() + "/docs/pack.zip",
            { { "a/eicar.txt", eicar() }, { "clam.exe", clamExe() }, { "readme.txt", "fine" } }));
        ASSERT_TRUE(writeFile(m_drives.device() + "/other/eicar2.com", eicar()));
        m_form = std::make_unique<scanTree>();
        m_form->Form_Load();
        m_form->show();
    }
    void TearDown() override
    {
        SetPumpHook({});
        m_form.reset();
        SetHelperRunner(m_oldRunner);
        G().ScanHost = m_oldScanHost;
        engine::UnLoadEngine();
    }
    void tick(const QString& key)
    {
        FileTreeModel& model = *m_form->SmartDataTree()->treeModel();
        ASSERT_TRUE(model.setData(model.indexOf(key), Qt::Checked, Qt::CheckStateRole));
    }
    template<class W> W* control(const char* name) const
    {
        W* w = m_form->findChild<W*>(QLatin1String(name));
        EXPECT_NE(w, nullptr) << name;
        return w;
    }
    QString text(const char* name) const { return control<QLineEdit>(name)->text(); }
    QStringList cells(const char* view, int column) const
    {
        QStringList out;
        const QAbstractItemModel* m = control<QTableView>(view)->model();
        for (int r = 0; r < m->rowCount(); ++r)
            out << m->index(r, column).data().toString();
        return out;
    }
    bool shown(const char* name) const { return control<QWidget>(name)->isVisible(); }
    void click(const char* name) { QTest::mouseClick(control<QPushButton>(name), Qt::LeftButton); }

    TreeDrives m_drives;
    MessageRecorder m_messages;
    std::unique_ptr<scanTree> m_form;
    QStringList m_helpers;
    HelperRunner m_oldRunner;
    bool m_oldScanHost = false;
};
} // namespace

TEST_F(ScanFormTest, WholeSessionThroughTheFormThenDeleteAndBack)
{
    tick("E:\\docs\\");
    ASSERT_EQ(m_form->selection().ListAdd(), QStringList({ "E:\\docs\\" }));
    EXPECT_TRUE(shown("Frame3"));
    EXPECT_TRUE(shown("Image5"));
    EXPECT_FALSE(shown("Frame5"));
    for (const char* hidden : { "Image1", "Image2", "Image3", "Image4" })
        EXPECT_FALSE(shown(hidden)) << hidden;

    // The engine's own count of alerts in each infected file (a file may match more than one signature).
    const int eicarAlerts = scanWithEngine(m_drives.device() + "/docs/eicar.com").count;
    const int packAlerts = scanWithEngine(m_drives.device() + "/docs/pack.zip").count;
    ASSERT_GE(eicarAlerts, 1);
    ASSERT_GE(packAlerts, 2); // two infected members
    const int alerts = eicarAlerts + packAlerts;

    // Start runs the whole session and returns after the closing words.
    click("Image5");
    EXPECT_EQ(m_messages.texts, QStringList({ kFinished }));
    EXPECT_EQ(text("txtscantot"), QStringLiteral("3"));
    EXPECT_EQ(text("TxtNtot"), QStringLiteral("1"));
    EXPECT_EQ(text("txtskiptot"), QStringLiteral("0"));
    EXPECT_EQ(text("txtinfFiles"), QStringLiteral("2"));
    EXPECT_EQ(text("txtinftot"), QString::number(alerts));
    EXPECT_EQ(text("TextScan"), QStringLiteral("-----"));
    EXPECT_EQ(text("textfolder"), QStringLiteral("-----"));
    // Finished: the counters' view and Back alone.
    EXPECT_FALSE(shown("Frame3"));
    EXPECT_TRUE(shown("Frame5"));
    EXPECT_TRUE(shown("Frame1"));
    EXPECT_TRUE(shown("Image4"));
    for (const char* hidden : { "Image1", "Image2", "Image3", "Image5", "Label3" })
        EXPECT_FALSE(shown(hidden)) << hidden;

    // The event list: one row per file, in the walk's order, with its status.
    QStringList events = cells("ListView", 0);
    QStringList statuses = cells("ListView", 1);
    ASSERT_EQ(events.size(), 3);
    QStringList byPath;
    for (int i = 0; i < events.size(); ++i)
        byPath << events[i] + '|' + statuses[i];
    byPath.sort();
    EXPECT_EQ(byPath,
        QStringList(
            { "E:\\docs\\clean.txt|Correcto", "E:\\docs\\eicar.com|Infectado", "E:\\docs\\pack.zip|Infectado" }));
    // The threat list: one row per alert, the archive's name for its members.
    QStringList names = cells("ListViewInf", 0);
    names.sort();
    EXPECT_EQ(names,
        QStringList(eicarAlerts, QStringLiteral("eicar.com")) + QStringList(packAlerts, QStringLiteral("pack.zip")));
    EXPECT_EQ(cells("ListViewInf", 1), QStringList(alerts, QStringLiteral("E:\\docs\\")));
    for (const QString& s : cells("ListViewInf", 3))
        EXPECT_TRUE(s == QStringLiteral("Si") || s == QStringLiteral("No")) << s.toStdString();

    // The tabs: statistics, events, threats with their verbs.
    m_form->Label13_Click();
    EXPECT_FALSE(shown("Frame1"));
    EXPECT_TRUE(shown("ListView"));
    EXPECT_FALSE(shown("ListViewInf"));
    EXPECT_FALSE(shown("Command6"));
    m_form->Label14_Click();
    EXPECT_TRUE(shown("ListViewInf"));
    EXPECT_FALSE(shown("ListView"));
    EXPECT_TRUE(shown("Command6"));
    EXPECT_TRUE(shown("Command7"));
    EXPECT_TRUE(shown("Command8"));
    EXPECT_TRUE(control<QPushButton>("Command8")->isEnabled());
    EXPECT_EQ(control<QWidget>("Shape8")->palette().color(QPalette::Window), QColor(0xff, 0xff, 0x80));
    EXPECT_NE(control<QWidget>("Shape6")->palette().color(QPalette::Window), QColor(0xff, 0xff, 0x80));

    // Delete the ticked eicar.com row through Command6.
    ThreatListModel& threats = m_form->session().ListViewInf();
    const QStringList rowNames = cells("ListViewInf", 0);
    const int eicarRow = static_cast<int>(rowNames.indexOf(QStringLiteral("eicar.com")));
    ASSERT_GE(eicarRow, 0);
    ASSERT_TRUE(threats.setData(threats.index(eicarRow, 0), Qt::Checked, Qt::CheckStateRole));
    click("Command6");
    EXPECT_FALSE(QFileInfo::exists(m_drives.device() + "/docs/eicar.com"));
    EXPECT_TRUE(QFileInfo::exists(m_drives.device() + "/docs/pack.zip"));
    EXPECT_EQ(cells("ListViewInf", 3).at(eicarRow), QStringLiteral("Eliminado"));
    EXPECT_FALSE(threats.isTicked(eicarRow));

    // Back: the tree with the same selection; the rows stay until the next start.
    click("Image4");
    EXPECT_TRUE(shown("Frame3"));
    EXPECT_TRUE(shown("Image5"));
    EXPECT_FALSE(shown("Frame5"));
    EXPECT_EQ(m_form->selection().ListAdd(), QStringList({ "E:\\docs\\" }));
    EXPECT_EQ(cells("ListViewInf", 0).size(), alerts);
    // A second session over a bigger selection starts from empty lists.
    tick("E:\\other\\");
    click("Image5");
    EXPECT_EQ(text("txtscantot"), QStringLiteral("3"));
    EXPECT_EQ(text("txtinfFiles"), QStringLiteral("2"));
    EXPECT_EQ(cells("ListView", 0).size(), 3);
    EXPECT_TRUE(cells("ListView", 0).contains(QStringLiteral("E:\\other\\eicar2.com")));
}

TEST_F(ScanFormTest, QuarantineSealsTheTickedFileAndGivesTheOwnersKeysBack)
{
    const Globals globals = G();
    const SettingsValues settings = S();
    G().ProgramFolder = QStringLiteral("E:\\VMK");
    G().PassPhrase = QStringLiteral("owner");
    S().EncripAlgorithm = 1;
    S().ScanFilesOperations = QStringLiteral("1");
    S().QuarenteneFolder = QStringLiteral("\\Cuarentena\\");
    ASSERT_TRUE(QDir().mkpath(m_drives.device() + "/VMK"));
    const QString ledger = m_drives.device() + "/VMK/QFP.txt";

    tick("E:\\other\\");
    click("Image5");
    m_form->Label14_Click();
    ThreatListModel& threats = m_form->session().ListViewInf();
    ASSERT_GE(threats.rowCountWithPending(), 1);
    for (qsizetype row = 0; row < threats.rowCountWithPending(); ++row)
        ASSERT_TRUE(threats.setData(threats.index(int(row), 0), Qt::Checked, Qt::CheckStateRole));
    click("Command8");
    EXPECT_FALSE(QFileInfo::exists(m_drives.device() + "/other/eicar2.com"));
    ASSERT_TRUE(QFileInfo(m_drives.device() + "/Cuarentena/eicar2.com").isFile());
    EXPECT_NE(readFile(m_drives.device() + "/Cuarentena/eicar2.com"), eicar());
    EXPECT_EQ(readFile(ledger), QByteArray("eicar2.com|E:\\other\\\r\n"));
    for (qsizetype row = 0; row < threats.rowCountWithPending(); ++row) {
        EXPECT_EQ(threats.status(row), QStringLiteral("Cuarentena"));
        EXPECT_FALSE(threats.isTicked(row));
    }
    EXPECT_EQ(G().PassPhrase, QStringLiteral("owner"));
    EXPECT_EQ(S().EncripAlgorithm, 1);
    EXPECT_EQ(S().ScanFilesOperations, QStringLiteral("1"));
    EXPECT_EQ(m_messages.texts, QStringList({ kFinished }));

    // Scanned in the quarantine, the sealed item is found again; sealing it once
    // more is refused with the message, and its row stays ticked.
    click("Image4");
    m_form->Form_Load(); // the tree read anew, with the quarantine folder the verb made
    tick("E:\\Cuarentena\\");
    click("Image5");
    EXPECT_EQ(text("txtinfFiles"), QStringLiteral("1"));
    m_form->Label14_Click();
    ASSERT_GE(threats.rowCountWithPending(), 1);
    EXPECT_EQ(threats.folder(0), QStringLiteral("E:\\Cuarentena\\"));
    ASSERT_TRUE(threats.setData(threats.index(0, 0), Qt::Checked, Qt::CheckStateRole));
    click("Command8");
    EXPECT_TRUE(threats.isTicked(0));
    EXPECT_EQ(
        m_messages.texts.last(), QStringLiteral("!El archivo ya existe en Cuarentena!\r\nE:\\Cuarentena\\eicar2.com"));
    EXPECT_EQ(readFile(ledger), QByteArray("eicar2.com|E:\\other\\\r\n"));
    EXPECT_EQ(G().PassPhrase, QStringLiteral("owner"));
    G() = globals;
    S() = settings;
}

TEST_F(ScanFormTest, PauseStopAndClosingMidSession)
{
    tick("E:\\docs\\");
    tick("E:\\other\\");
    // Pause at the first file's pump: Continue takes Pause's place; then Continue and Stop.
    int pumps = 0;
    SetPumpHook([&] {
        ++pumps;
        if (pumps == 1) {
            click("Image2");
            EXPECT_TRUE(m_form->session().ScanPause());
            EXPECT_TRUE(shown("Image1"));
            EXPECT_FALSE(shown("Image2"));
        } else if (pumps == 2) {
            click("Image1");
            EXPECT_FALSE(m_form->session().ScanPause());
            click("Image3");
            EXPECT_TRUE(m_form->session().ScanAbort());
            EXPECT_TRUE(shown("Image4"));
            EXPECT_FALSE(shown("Image3"));
        }
    });
    click("Image5");
    EXPECT_EQ(m_messages.texts, QStringList({ kAborted }));
    EXPECT_LT(text("txtscantot").toInt(), 4);
    EXPECT_TRUE(shown("Image4"));
    EXPECT_FALSE(shown("Image5"));

    // Closing the form during a session stops it and gives the panel back.
    click("Image4");
    QSignalSpy closed(m_form.get(), &scanTree::Closed);
    pumps = 0;
    SetPumpHook([&] {
        if (++pumps == 1)
            m_form->close();
    });
    click("Image5");
    EXPECT_EQ(closed.count(), 1);
    EXPECT_FALSE(m_form->isVisible());
    EXPECT_EQ(m_messages.texts, QStringList({ kAborted, kAborted }));
    EXPECT_LT(text("txtscantot").toInt(), 4);
}

// Pictures of the target tree and of a finished session with threats, for a look by
// eye and the README: set VMK_SHOTS to a folder.
TEST_F(ScanFormTest, Pictures)
{
    const QString dir = qEnvironmentVariable("VMK_SHOTS");
    if (dir.isEmpty())
        GTEST_SKIP() << "VMK_SHOTS not set";
    QDir().mkpath(dir);
    for (const char* f : { "Escritorio/notas.txt", "Escritorio/instalador.exe", "Documentos/Informe.pdf" })
        ASSERT_TRUE(writeFile(m_drives.host() + "/" + QString::fromUtf8(f), "x"));
    auto grab = [this](const QString& path) {
        ASSERT_TRUE(QTest::qWaitForWindowExposed(m_form.get()));
        QTest::qWait(50);
        m_form->grab();
        QTest::qWait(50);
        m_form->grab().save(path);
    };

    // The computer's tree: the memory node and a folder of the device ticked, one file excepted.
    G().ScanHost = true;
    m_form->Form_Load();
    SmartTree& tree = *m_form->SmartDataTree();
    tree.Expand("E:\\");
    tick("*Memory*");
    tick("E:\\docs\\");
    tree.Expand("E:\\docs\\");
    FileTreeModel& model = *tree.treeModel();
    ASSERT_TRUE(model.setData(model.indexOf("E:\\docs\\clean.txt"), Qt::Unchecked, Qt::CheckStateRole));
    tree.SelectKey("E:\\docs\\clean.txt");
    grab(dir + "/scan-tree.png");

    // A finished session over the device: the counters, then the threats with one row ticked.
    G().ScanHost = false;
    m_form->Form_Load();
    tick("E:\\");
    click("Image5");
    grab(dir + "/scan-counters.png");
    m_form->Label14_Click();
    ThreatListModel& threats = m_form->session().ListViewInf();
    ASSERT_GT(threats.rowCount(), 0);
    threats.setData(threats.index(0, 0), Qt::Checked, Qt::CheckStateRole);
    grab(dir + "/scan-threats.png");
}
