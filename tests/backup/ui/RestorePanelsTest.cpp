#include "backup/ui/ArchivesPanel.h"
#include "backup/ui/BackTree.h"
#include "backup/ui/RestorePanel.h"
#include "backup/ui/RunPanel.h"
#include "components/zip/ZipArchiver.h"
#include "components/zip/ZipCodes.h"
#include "filemanager/FileTreeModel.h"
#include "filemanager/ui/SmartTree.h"
#include "foundation/Settings.h"

#include "RestoreArchives.h"
#include "TestSupport.h"
#include "TreeDrives.h"

#include <QAction>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

#include <gtest/gtest.h>

using namespace vmk;
using namespace vmk::test;

namespace
{
// The device E: with its backups folder holding one backup of C:\Datos, in which
// two files share the name a.txt.
struct Backups {
    QTemporaryDir base;
    TreeDrives drives { base.path() };
    QString oldFolder = S().BackupsFolder;
    QString datos = drives.host() + "/Datos";
    QString folder = drives.device() + "/Respaldos";
    QString archive = folder + "/nov-15-2026,20.37.05.zip";

    Backups()
    {
        S().BackupsFolder = "\\Respaldos\\";
        writeFile(datos + "/a.txt", "first a");
        writeFile(datos + "/sub/a.txt", "second a");
        writeFile(datos + "/b.txt", "b");
        QDir().mkpath(folder);
        EXPECT_EQ(backupArchive("C:\\Datos\\", logicalOf(archive)), zip::ZipOk);
    }
    ~Backups()
    {
        S().BackupsFolder = oldFolder;
        removeTree(base.path());
    }
};

QTreeWidgetItem* rowOf(QTreeWidget* list, const QString& text, const QString& path)
{
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
        QTreeWidgetItem* item = list->topLevelItem(i);
        if (item->text(0) == text && item->text(1) == path)
            return item;
    }
    return nullptr;
}

int checkedRows(QTreeWidget* list)
{
    int n = 0;
    for (int i = 0; i < list->topLevelItemCount(); ++i)
        n += list->topLevelItem(i)->checkState(0) == Qt::Checked;
    return n;
}
} // namespace

TEST(RestorePanels, ArchivesPanelListsTheBackupsFolderAndNamesTheChosenArchive)
{
    Backups b;
    writeFile(b.folder + "/older.zip", "x");
    ArchivesPanel panel;
    EXPECT_EQ(panel.objectName(), "Frame1");
    ASSERT_EQ(panel.findChild<SmartTree*>("SmartUI1"), panel.SmartUI1());
    EXPECT_EQ(panel.menu()->objectName(), "menu");
    EXPECT_EQ(panel.RestorFiles()->objectName(), "RestorFiles");
    EXPECT_EQ(panel.Delete()->objectName(), "Delete");
    EXPECT_EQ(panel.Unpload()->objectName(), "Unpload");

    panel.FillArchives();
    FileTreeModel* model = panel.SmartUI1()->treeModel();
    const QString root = "E:\\Respaldos\\";
    ASSERT_TRUE(model->NodeExists(root));
    QStringList children = model->childKeys(root);
    children.sort();
    EXPECT_EQ(children, QStringList({ "E:\\Respaldos\\nov-15-2026,20.37.05.zip", "E:\\Respaldos\\older.zip" }));
    // Read anew each time: a new archive shows, the root is not doubled.
    writeFile(b.folder + "/newer.zip", "y");
    panel.FillArchives();
    EXPECT_EQ(model->rowCount(), 1);
    EXPECT_EQ(model->childKeys(root).size(), 3);

    QSignalSpy restore(&panel, &ArchivesPanel::RestorFilesChosen);
    QSignalSpy del(&panel, &ArchivesPanel::DeleteChosen);
    // The folder itself is no archive: the items do nothing on it.
    ASSERT_TRUE(panel.SmartUI1()->SelectKey(root));
    panel.RestorFiles()->trigger();
    EXPECT_EQ(restore.count(), 0);
    const QString key = "E:\\Respaldos\\nov-15-2026,20.37.05.zip";
    ASSERT_TRUE(panel.SmartUI1()->SelectKey(key));
    panel.RestorFiles()->trigger();
    ASSERT_EQ(restore.count(), 1);
    EXPECT_EQ(restore.at(0).at(0).toString(), key);
    EXPECT_EQ(restore.at(0).at(1).toString(), "nov-15-2026,20.37.05.zip");
    panel.Delete()->trigger();
    EXPECT_EQ(del.count(), 1);

    // A right click on a row selects it and pops the menu up.
    panel.resize(400, 300);
    panel.show();
    ASSERT_TRUE(panel.SmartUI1()->SelectKey(root));
    const QModelIndex at = model->indexOf("E:\\Respaldos\\older.zip");
    panel.SmartUI1()->scrollTo(at);
    emit panel.SmartUI1()->customContextMenuRequested(panel.SmartUI1()->visualRect(at).center());
    EXPECT_TRUE(panel.menu()->isVisible());
    EXPECT_EQ(panel.SmartUI1()->SelectedKey(), "E:\\Respaldos\\older.zip");
    panel.menu()->hide();
}

TEST(RestorePanels, RestorePanelListsChecksAndRestoresByBothRoutes)
{
    Backups b;
    MessageRecorder messages;
    zip::ZipArchiver zip;
    RestorePanel panel(zip);
    EXPECT_EQ(panel.objectName(), "Frame5");
    EXPECT_EQ(panel.findChild<QTreeWidget*>("SmartRestore"), panel.SmartRestore());
    for (const char* name : { "Check1", "Option1", "Option2", "Text2", "Command13", "Image3", "Image4" })
        EXPECT_NE(panel.findChild<QWidget*>(name), nullptr) << name;
    panel.show();
    EXPECT_FALSE(panel.Text2()->isVisible());
    EXPECT_FALSE(panel.Command13()->isVisible());
    EXPECT_FALSE(panel.Check1()->isVisible());
    EXPECT_TRUE(panel.Option1()->isChecked());

    panel.RestorFiles_Click("E:\\Respaldos\\nov-15-2026,20.37.05.zip", "nov-15-2026,20.37.05.zip");
    QTreeWidget* list = panel.SmartRestore();
    ASSERT_EQ(list->topLevelItemCount(), 3);
    QTreeWidgetItem* row = rowOf(list, "a.txt", "C:\\Datos\\sub\\");
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->text(2), "8");
    EXPECT_TRUE(panel.Check1()->isVisible());
    EXPECT_FALSE(panel.Check1()->isChecked());
    EXPECT_EQ(panel.Check1()->text(), "nov-15-2026,20.37.05.zip");
    EXPECT_FALSE(panel.ProgressBar()->isVisible()); // gone at 100
    EXPECT_EQ(panel.ProgressBar()->value(), 100);

    panel.Check1()->click();
    EXPECT_EQ(checkedRows(list), 3);
    panel.Check1()->click();
    EXPECT_EQ(checkedRows(list), 0);

    // Nothing checked: the restore starts and ends with nothing done and nothing said.
    QSignalSpy starting(&panel, &RestorePanel::RestoreStarting);
    QSignalSpy finished(&panel, &RestorePanel::RestoreFinished);
    QTest::mouseClick(panel.Image3(), Qt::LeftButton);
    EXPECT_EQ(starting.count(), 1);
    EXPECT_EQ(finished.count(), 1);
    EXPECT_EQ(panel.LastOutcome().result, zip::ZipNothingToDo);
    EXPECT_TRUE(messages.texts.isEmpty());

    // Default route: the checked row goes back to its own folder.
    removeTree(b.datos);
    row->setCheckState(0, Qt::Checked);
    QTest::mouseClick(panel.Image3(), Qt::LeftButton);
    EXPECT_EQ(panel.LastOutcome().result, zip::ZipOk);
    EXPECT_EQ(readFile(b.datos + "/sub/a.txt"), "second a");
    EXPECT_FALSE(QFile::exists(b.datos + "/a.txt"));
    EXPECT_EQ(panel.AltRestoreFolder(), "");

    // Alternative route: Text2 and Command13 come into view; a missing folder is refused.
    panel.Option2()->click();
    EXPECT_TRUE(panel.Text2()->isVisible());
    EXPECT_TRUE(panel.Command13()->isVisible());
    panel.Text2()->setText("C:\\NoExiste");
    QTest::mouseClick(panel.Image3(), Qt::LeftButton);
    EXPECT_EQ(messages.texts, QStringList({ QString::fromUtf8("¡Ruta alternativa inválida!") }));
    EXPECT_EQ(starting.count(), 2);
    QDir().mkpath(b.drives.host() + "/Destino");
    panel.Text2()->setText("C:\\Destino");
    panel.Check1()->click();
    QTest::mouseClick(panel.Image3(), Qt::LeftButton);
    EXPECT_EQ(starting.count(), 3);
    EXPECT_EQ(panel.AltRestoreFolder(), "C:\\Destino\\");
    EXPECT_EQ(panel.LastOutcome().result, zip::ZipFilesSkipped);
    ASSERT_EQ(panel.LastOutcome().refused.size(), 1);
    EXPECT_EQ(panel.LastOutcome().refused.first().reason, zip::SkipDuplicateName);
    EXPECT_EQ(QDir(b.drives.host() + "/Destino").entryList(QDir::Files), QStringList({ "a.txt", "b.txt" }));
    panel.Option1()->click();
    EXPECT_FALSE(panel.Text2()->isVisible());

    // Cerrar hides Check1 and asks for the archives.
    QSignalSpy closing(&panel, &RestorePanel::CloseRequested);
    QTest::mouseClick(panel.Image4(), Qt::LeftButton);
    EXPECT_EQ(closing.count(), 1);
    EXPECT_FALSE(panel.Check1()->isVisible());
    EXPECT_EQ(messages.texts.size(), 1);
}

TEST(RestorePanels, DamagedArchiveIsNamedInAMessage)
{
    Backups b;
    MessageRecorder messages;
    const QByteArray whole = readFile(b.archive);
    writeFile(b.folder + "/cut.zip", whole.left(whole.size() / 2));
    zip::ZipArchiver zip;
    RestorePanel panel(zip);
    panel.RestorFiles_Click("E:\\Respaldos\\cut.zip", "cut.zip");
    EXPECT_EQ(panel.SmartRestore()->topLevelItemCount(), 0);
    ASSERT_EQ(messages.texts.size(), 1);
    EXPECT_EQ(messages.texts.first(),
        QString::fromUtf8("¡No se pudo leer el archivo de respaldo!\n") + b.folder + "/cut.zip ("
            + QString::number(zip::ZipArchiveUnreadable) + ")");
}

TEST(RestorePanels, BackTreeShowsARestoreOnTheRunPanelInRestoreMode)
{
    Backups b;
    MessageRecorder messages;
    BackTree form;
    form.Form_Load();
    form.show();
    auto* frame1 = qobject_cast<ArchivesPanel*>(form.panel(BackTree::Panel::Frame1));
    auto* frame5 = qobject_cast<RestorePanel*>(form.panel(BackTree::Panel::Frame5));
    ASSERT_NE(frame1, nullptr);
    ASSERT_NE(frame5, nullptr);

    QTest::mouseClick(form.button("Image4"), Qt::LeftButton);
    EXPECT_TRUE(form.isShown(BackTree::Panel::Frame1));
    const QString key = "E:\\Respaldos\\nov-15-2026,20.37.05.zip";
    ASSERT_TRUE(frame1->SmartUI1()->SelectKey(key));
    frame1->RestorFiles()->trigger();
    EXPECT_TRUE(form.isShown(BackTree::Panel::Frame5));
    EXPECT_FALSE(form.isShown(BackTree::Panel::Frame1));
    EXPECT_FALSE(form.isShown(BackTree::Panel::Frame3));
    ASSERT_EQ(frame5->SmartRestore()->topLevelItemCount(), 3);

    // Restaurar to a folder: the run panel follows it; Guardar never comes after a restore.
    QDir().mkpath(b.drives.host() + "/Destino");
    frame5->Option2()->click();
    frame5->Text2()->setText("C:\\Destino\\");
    frame5->Check1()->click();
    bool sawRestoreMode = false;
    QObject::connect(frame5, &RestorePanel::RestoreStarting, &form, [&] { sawRestoreMode = form.RestoreMode(); });
    QTest::mouseClick(frame5->Image3(), Qt::LeftButton);
    EXPECT_TRUE(form.isShown(BackTree::Panel::Frame2));
    EXPECT_FALSE(form.isShown(BackTree::Panel::Frame5));
    EXPECT_TRUE(form.RestoreMode());
    EXPECT_TRUE(form.button("Image8")->isVisible());
    EXPECT_FALSE(form.button("Image7")->isVisible());
    EXPECT_FALSE(form.button("Image6")->isVisible());
    RunPanel* run = form.Frame2();
    EXPECT_EQ(run->lblFilesTotal()->text(), "3");
    EXPECT_EQ(run->lblFilesProcessed()->text(), "2");
    EXPECT_EQ(run->lblFilesSkipped()->text(), "1");
    ASSERT_EQ(run->ListView1()->topLevelItemCount(), 1);
    EXPECT_TRUE(run->ListView1()->topLevelItem(0)->text(0).endsWith("a.txt"));
    EXPECT_EQ(run->ListView1()->topLevelItem(0)->text(1), "Nombre repetido: no se sobrescribe");
    EXPECT_TRUE(messages.texts.isEmpty()); // no closing message for a restore

    // Terminar leads back to Frame5 and clears the mode; Cerrar to the archives.
    QTest::mouseClick(form.button("Image8"), Qt::LeftButton);
    EXPECT_TRUE(form.isShown(BackTree::Panel::Frame5));
    EXPECT_FALSE(form.RestoreMode());
    QTest::mouseClick(frame5->Image4(), Qt::LeftButton);
    EXPECT_TRUE(form.isShown(BackTree::Panel::Frame1));
    EXPECT_FALSE(form.isShown(BackTree::Panel::Frame5));
    EXPECT_FALSE(frame5->Check1()->isVisible());

    // From the archives: Image10 puts the remote store beside them; the last button
    // goes back to the selection.
    QTest::mouseClick(frame1->Image10(), Qt::LeftButton);
    EXPECT_TRUE(form.isShown(BackTree::Panel::Frame1) && form.isShown(BackTree::Panel::Frame4));
    QTest::mouseClick(frame1->BackToSelection(), Qt::LeftButton);
    EXPECT_TRUE(form.isShown(BackTree::Panel::Frame3));
    EXPECT_FALSE(form.isShown(BackTree::Panel::Frame1));
    EXPECT_FALSE(form.isShown(BackTree::Panel::Frame4));
}
