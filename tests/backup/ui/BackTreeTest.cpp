#include "backup/ui/BackTree.h"
#include "backup/BackupValues.h"
#include "backup/ui/Form4.h"
#include "backup/ui/Form5.h"
#include "backup/ui/RunPanel.h"
#include "components/engine/Engine.h"
#include "filemanager/FileTreeModel.h"
#include "filemanager/ui/SmartTree.h"
#include "foundation/Globals.h"
#include "foundation/Settings.h"

#include "BackupDevice.h"
#include "EngineTestSupport.h"
#include "TestSupport.h"

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include <unistd.h>

using namespace vmk;
using namespace vmk::test;

namespace
{
const QString kDone = QStringLiteral("¡Proceso de respaldo concluido!");

// The backup tool over a host C: with a tree to back up and a device E: with its
// backups folder.
class BackTreeTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QFileInfo(m_drives.backups()).isDir());
        for (const char* f : { "Datos/a.txt", "Datos/b.txt", "Datos/tmp/t.txt", "Datos/fotos/x.jpg", "Otros/o.txt" })
            ASSERT_TRUE(writeFile(m_drives.host() + "/" + f, QByteArray(f).repeated(300)));
        ASSERT_EQ(::symlink("nowhere", QFile::encodeName(m_drives.host() + "/Datos/dangle").constData()), 0);
        m_form = std::make_unique<BackTree>();
        m_form->Form_Load();
        m_form->show();
    }
    void TearDown() override { m_form.reset(); }
    FileTreeModel& model() { return *m_form->SmartDataTree()->treeModel(); }
    // A user's tick: the check box of the node.
    void tick(const QString& key, bool checked)
    {
        const QModelIndex index = model().indexOf(key);
        ASSERT_TRUE(index.isValid()) << key.toStdString();
        ASSERT_TRUE(model().setData(index, checked ? Qt::Checked : Qt::Unchecked, Qt::CheckStateRole));
    }
    bool ticked(const QString& key) { return model().checked(key) == Qt::Checked; }
    bool visible(const char* button) { return m_form->button(button)->isVisible(); }
    QStringList archives() { return QDir(m_drives.backups()).entryList(QDir::Files); }
    // Answers the next modal picker: `fill` sets it up, then Aceptar.
    template<typename Picker> void answerPicker(std::function<void(Picker&)> fill)
    {
        QTimer::singleShot(0, [fill] {
            auto* picker = qobject_cast<Picker*>(QApplication::activeModalWidget());
            ASSERT_NE(picker, nullptr);
            fill(*picker);
            picker->Command1_Click();
        });
    }

    BackupDevice m_drives;
    std::unique_ptr<BackTree> m_form;
};
} // namespace

TEST_F(BackTreeTest, TheSelectionFollowsTheTicksOfTheHostTree)
{
    MessageRecorder messages;
    EXPECT_TRUE(m_form->isShown(BackTree::Panel::Frame3));
    for (BackTree::Panel p :
        { BackTree::Panel::Frame2, BackTree::Panel::Frame1, BackTree::Panel::Frame5, BackTree::Panel::Frame4 })
        EXPECT_FALSE(m_form->isShown(p));
    for (const char* name : { "Frame1", "Frame2", "Frame3", "Frame4", "Frame5" })
        EXPECT_NE(m_form->findChild<QWidget*>(name), nullptr) << name;
    EXPECT_TRUE(visible("Image11") && visible("Image7") && visible("Image12"));
    EXPECT_FALSE(visible("Image6") || visible("Image8"));

    // The root is refused, and its tick goes a moment later.
    tick("|HOST|", true);
    EXPECT_EQ(messages.texts, QStringList { "¡No se puede respaldar toda su PC!" });
    EXPECT_TRUE(m_form->Timer()->isActive());
    ASSERT_TRUE(QTest::qWaitFor([this] { return !m_form->Timer()->isActive(); }));
    EXPECT_FALSE(ticked("|HOST|"));

    m_form->SmartDataTree()->Expand("C:\\");
    tick("C:\\Datos\\", true);
    m_form->SmartDataTree()->Expand("C:\\Datos\\");
    // The children read after the tick take it, and an untick below is an exception.
    EXPECT_TRUE(ticked("C:\\Datos\\a.txt"));
    tick("C:\\Datos\\tmp\\", false);
    EXPECT_EQ(m_form->selection().ListAdd(), QStringList { "C:\\Datos\\" });
    EXPECT_EQ(m_form->selection().ListExc(), QStringList { "C:\\Datos\\tmp\\" });
    // Below the exception nothing can be ticked.
    m_form->SmartDataTree()->Expand("C:\\Datos\\tmp\\");
    EXPECT_FALSE(ticked("C:\\Datos\\tmp\\t.txt"));
    tick("C:\\Datos\\tmp\\t.txt", true);
    EXPECT_EQ(messages.texts.last(), "No es posible seleccionar este nodo, hay una excepción existente!");
    ASSERT_TRUE(QTest::qWaitFor([this] { return !m_form->Timer()->isActive(); }));
    EXPECT_FALSE(ticked("C:\\Datos\\tmp\\t.txt"));
    // Collapsing and opening again reads the ticks from the lists.
    m_form->SmartDataTree()->Reexpand("C:\\Datos\\");
    EXPECT_TRUE(ticked("C:\\Datos\\b.txt"));
    EXPECT_FALSE(ticked("C:\\Datos\\tmp\\"));
}

TEST_F(BackTreeTest, TheSelectionIsSavedAndLoadedThroughThePickers)
{
    MessageRecorder messages;
    m_form->SmartDataTree()->Expand("C:\\");
    tick("C:\\Datos\\", true);
    tick("C:\\Otros\\", true);
    m_form->SmartDataTree()->Expand("C:\\Datos\\");
    tick("C:\\Datos\\tmp\\", false);

    // Guardar: Form4 names the folder and the file.
    answerPicker<Form4>([](Form4& picker) {
        picker.tree()->Expand("C:\\");
        ASSERT_TRUE(picker.tree()->SelectKey("C:\\Otros\\"));
        picker.Text1()->setText("sel.txt");
    });
    m_form->Image7_Click();
    EXPECT_EQ(BV().BackupSelectionFile, QStringLiteral("C:\\Otros\\sel.txt"));
    EXPECT_EQ(readFile(m_drives.host() + "/Otros/sel.txt"),
        QByteArray("[Add]\r\nC:\\Datos\\\r\nC:\\Otros\\\r\n[Exclude]\r\nC:\\Datos\\tmp\\\r\n"));

    // Abrir in a fresh form: Form5 picks the file; what is gone by then is dropped.
    const std::function<void(Form5&)> pickSelection = [](Form5& picker) {
        picker.tree()->Expand("C:\\");
        picker.tree()->Expand("C:\\Otros\\");
        ASSERT_TRUE(picker.tree()->SelectKey("C:\\Otros\\sel.txt"));
        picker.Text1()->setText("sel.txt");
    };
    ASSERT_TRUE(QDir(m_drives.host() + "/Datos/tmp").removeRecursively());
    m_form->Form_Load();
    EXPECT_TRUE(m_form->selection().ListAdd().isEmpty());
    answerPicker<Form5>(pickSelection);
    m_form->Image12_Click();
    EXPECT_EQ(m_form->selection().ListAdd(), QStringList({ "C:\\Datos\\", "C:\\Otros\\" }));
    EXPECT_TRUE(m_form->selection().ListExc().isEmpty());
    // The tree shows the loaded ticks as it opens.
    m_form->SmartDataTree()->Expand("C:\\");
    EXPECT_TRUE(ticked("C:\\Datos\\"));
    EXPECT_FALSE(ticked("C:\\Datos2\\") || ticked("C:\\Escritorio\\"));
    // A load adds to the lists as they stand.
    answerPicker<Form5>(pickSelection);
    m_form->Image12_Click();
    EXPECT_EQ(m_form->selection().ListAdd().size(), 4);
    EXPECT_TRUE(messages.texts.isEmpty());
}

TEST_F(BackTreeTest, ARunShowsItsStagesInOrderAndEndsWithGuardarAndTerminar)
{
    MessageRecorder messages;
    m_form->SmartDataTree()->Expand("C:\\");
    tick("C:\\Datos\\", true);
    m_form->SmartDataTree()->Expand("C:\\Datos\\");
    tick("C:\\Datos\\tmp\\", false);
    RunPanel& panel = *m_form->Frame2();
    // Every event of the component, with the stage word it leaves in Label12.
    QStringList events;
    zip::ZipEvents& e = m_form->XceedZip1().events();
    const auto wrap = [&events, &panel](const QString& name, auto inner) {
        return [&events, &panel, name, inner](auto... args) {
            inner(args...);
            const QString entry = name + ": " + panel.Label12()->text();
            if (events.isEmpty() || events.last() != entry)
                events << entry;
        };
    };
    e.globalStatus = wrap("GlobalStatus", e.globalStatus);
    e.skippingFile = wrap("SkippingFile", e.skippingFile);
    e.tempFileProgress = wrap("TempFileProgress", e.tempFileProgress);
    e.writeProgress = wrap("WriteProgress", e.writeProgress);
    e.processCompleted = wrap("ProcessCompleted", e.processCompleted);

    m_form->Image11_Click();
    ASSERT_EQ(archives().size(), 1);
    EXPECT_EQ(m_form->LastArchive(), "E:\\Respaldos\\" + archives().first());
    const QStringList expected
        = { "SkippingFile: Procesando", "GlobalStatus: Comprimiendo", "TempFileProgress: Creando archivo temporal",
              "WriteProgress: Escribiendo al dispositivo", "ProcessCompleted: Escribiendo al dispositivo" };
    EXPECT_EQ(events, expected);
    EXPECT_EQ(messages.texts, QStringList { kDone });
    // Finished: the counters, the skipped file with its reason, Guardar and Terminar.
    EXPECT_EQ(panel.lblFilesTotal()->text(), "4");
    EXPECT_EQ(panel.lblFilesProcessed()->text(), "3");
    EXPECT_EQ(panel.lblFilesSkipped()->text(), "1");
    EXPECT_EQ(panel.lblstatus()->text(), "100");
    EXPECT_EQ(panel.Label14()->text(), "0");
    ASSERT_EQ(panel.ListView1()->topLevelItemCount(), 1);
    EXPECT_EQ(panel.ListView1()->topLevelItem(0)->text(0), "C:\\Datos\\dangle");
    EXPECT_EQ(panel.ListView1()->topLevelItem(0)->text(1), "Enlace roto: su destino no existe");
    EXPECT_TRUE(m_form->isShown(BackTree::Panel::Frame2));
    EXPECT_FALSE(m_form->isShown(BackTree::Panel::Frame3));
    EXPECT_TRUE(visible("Image7") && visible("Image8"));
    EXPECT_FALSE(visible("Image6") || panel.Label12()->isVisible() || visible("Image11"));
    EXPECT_EQ(zipMembers(DriveMap::instance().toNative(m_form->LastArchive())).keys(),
        QList<QByteArray>({ "C:/Datos/a.txt", "C:/Datos/b.txt", "C:/Datos/fotos/x.jpg" }));
    // Terminar goes back to the selection, which survived the run.
    m_form->Image8_Click();
    EXPECT_TRUE(m_form->isShown(BackTree::Panel::Frame3));
    EXPECT_EQ(m_form->selection().ListExc(), QStringList { "C:\\Datos\\tmp\\" });
    EXPECT_TRUE(visible("Image11"));

    // Abortar during the compression: the error with its number, and no archive.
    QFile::remove(DriveMap::instance().toNative(m_form->LastArchive()));
    messages.texts.clear();
    const auto status = e.globalStatus;
    e.globalStatus = [this, status](int t, int p, int s, int pc) {
        status(t, p, s, pc);
        QTest::mouseClick(m_form->button("Image6"), Qt::LeftButton);
    };
    m_form->Image11_Click();
    EXPECT_EQ(messages.texts, QStringList { "¡Error de compresion!\r\n(2)" });
    EXPECT_TRUE(archives().isEmpty());
    EXPECT_TRUE(m_form->LastArchive().isEmpty());
    EXPECT_TRUE(visible("Image7") && visible("Image8"));
    m_form->Image8_Click();

    // The backups folder is gone: the message, and Guardar and Terminar come back.
    e.globalStatus = status;
    messages.texts.clear();
    ASSERT_TRUE(QDir(m_drives.backups()).removeRecursively());
    m_form->Image11_Click();
    EXPECT_EQ(messages.texts, QStringList { "¡La carpeta de respaldos no existe!" });
    EXPECT_TRUE(m_form->isShown(BackTree::Panel::Frame2));
    EXPECT_TRUE(visible("Image7") && visible("Image8"));
    EXPECT_FALSE(visible("Image6") || panel.Label12()->isVisible());
}

TEST_F(BackTreeTest, ARestoreSharesTheRunPanelAndTerminarLeadsBackToFrame5)
{
    MessageRecorder messages;
    // As the restore panel does it: RestoreMode, the run panel, the component's run.
    m_form->setRestoreMode(true);
    m_form->PrepareRun();
    EXPECT_TRUE(m_form->isShown(BackTree::Panel::Frame2));
    EXPECT_TRUE(visible("Image6"));
    EXPECT_EQ(m_form->Frame2()->lblFilesTotal()->text(), "0");
    m_form->XceedZip1().events().globalStatus(2, 1, 0, 50);
    EXPECT_EQ(m_form->Frame2()->Label12()->text(), "Comprimiendo");
    m_form->XceedZip1().events().skippingFile("C:\\x.txt", 113);
    EXPECT_EQ(m_form->Frame2()->ListView1()->topLevelItem(0)->text(1), "Acceso denegado");
    m_form->XceedZip1().events().processCompleted();
    // Guardar is never offered after a restore.
    EXPECT_FALSE(visible("Image7"));
    EXPECT_TRUE(visible("Image8"));
    m_form->Image8_Click();
    EXPECT_TRUE(m_form->isShown(BackTree::Panel::Frame5));
    EXPECT_FALSE(m_form->RestoreMode());
    // The archives' panel, and the store beside it.
    m_form->Image4_Click();
    EXPECT_TRUE(m_form->isShown(BackTree::Panel::Frame1));
    EXPECT_FALSE(m_form->isShown(BackTree::Panel::Frame4));
    m_form->Image2_Click();
    EXPECT_TRUE(m_form->isShown(BackTree::Panel::Frame1) && m_form->isShown(BackTree::Panel::Frame4));
    // The store tries to connect: with no server in the settings it says so.
    ASSERT_EQ(messages.texts.size(), 1);
    EXPECT_TRUE(messages.texts[0].startsWith("¡No se pudo establecer conexión con el servidor!"))
        << messages.texts[0].toStdString();
}

TEST_F(BackTreeTest, ScanBeforeBackupCountsAndAsksAboutTheInfectedFile)
{
    ASSERT_EQ(loadBuiltEngine(), 0);
    G().EngineLoaded = true;
    S().ScanBeforeBackup = QStringLiteral("1");
    ASSERT_TRUE(writeFile(m_drives.host() + "/Otros/eicar.com", eicar()));
    m_form->SmartDataTree()->Expand("C:\\");
    tick("C:\\Otros\\", true);
    const QString question = QStringLiteral("C:\\Otros\\eicar.com\r\n¡Archivo infectado! ¿Desea excluir este archivo?");
    for (int answer : { 6, 7 }) {
        MessageRecorder messages;
        messages.script({ answer });
        m_form->Image11_Click();
        EXPECT_EQ(messages.texts, QStringList({ question, kDone }));
        EXPECT_EQ(messages.kinds.first(), 4);
        EXPECT_EQ(m_form->Frame2()->Label14()->text(), "2");
        EXPECT_EQ(m_form->Frame2()->Label16()->text(), "1");
        const auto members = zipMembers(DriveMap::instance().toNative(m_form->LastArchive()));
        EXPECT_EQ(members.contains("C:/Otros/eicar.com"), answer == 7);
        EXPECT_TRUE(members.contains("C:/Otros/o.txt"));
        QFile::remove(DriveMap::instance().toNative(m_form->LastArchive()));
        m_form->Image8_Click();
    }
    engine::UnLoadEngine();
}

// Pictures of the selection and of a finished run, for a look by eye and the
// README: set VMK_SHOTS to a folder.
TEST_F(BackTreeTest, Pictures)
{
    const QString dir = qEnvironmentVariable("VMK_SHOTS");
    if (dir.isEmpty())
        GTEST_SKIP() << "VMK_SHOTS not set";
    QDir().mkpath(dir);
    MessageRecorder messages;
    for (const char* f : { "Escritorio/notas.txt", "Documentos/Informe.pdf", "Documentos/Presupuesto.xls" })
        ASSERT_TRUE(writeFile(m_drives.host() + "/" + f, "x"));
    m_form->resize(720, 520);
    auto grab = [this](const QString& path) {
        ASSERT_TRUE(QTest::qWaitForWindowExposed(m_form.get()));
        QTest::qWait(50);
        m_form->grab();
        m_form->grab().save(path);
    };
    SmartTree& tree = *m_form->SmartDataTree();
    tree.Expand("C:\\");
    tick("C:\\Datos\\", true);
    tree.Expand("C:\\Datos\\");
    tick("C:\\Datos\\tmp\\", false);
    tree.Expand("C:\\Otros\\");
    tick("C:\\Otros\\o.txt", true);
    tree.SelectKey("C:\\Datos\\tmp\\");
    grab(dir + "/backup-selection.png");
    m_form->Image11_Click();
    grab(dir + "/backup-run.png");
}
