#include "DataTreeFixture.h"

#include "filemanager/QuarantineVerb.h"
#include "filemanager/ui/frmProperties.h"
#include "foundation/ui/Barra.h"
#include "passwords/OwnerPassword.h"
#include "passwords/ui/FrmPass.h"
#include "platform/Pump.h"

#include <QDirIterator>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>

using namespace vmk;
using namespace vmk::test;

namespace
{

// Answers the owner's lock when it comes up (the verb shows it after the menu
// click has been handled): types the password and accepts, or cancels.
void answerLock(const QString& password, bool cancel = false)
{
    auto* poll = new QTimer;
    poll->setInterval(5);
    QObject::connect(poll, &QTimer::timeout, [poll, password, cancel] {
        auto* lock = qobject_cast<passwords::FrmPass*>(QApplication::activeModalWidget());
        if (!lock)
            return;
        poll->stop();
        poll->deleteLater();
        if (cancel) {
            lock->CMDcancel_Click();
            return;
        }
        lock->Text1()->setText(password);
        lock->CMDacept_Click();
    });
    poll->start();
}

// The files below a native folder, relative, with their bytes.
QMap<QString, QByteArray> filesBelow(const QString& folder)
{
    QMap<QString, QByteArray> files;
    QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        files.insert(path.mid(folder.size() + 1), readFile(path));
    }
    return files;
}

class DataTreeTransferTest : public DataTreeFixture
{
protected:
    void SetUp() override
    {
        DataTreeFixture::SetUp();
        ASSERT_TRUE(writeFile(host("src/f.txt"), "plain file bytes\n"));
        ASSERT_TRUE(writeFile(host("src/tree/top.txt"), "top"));
        ASSERT_TRUE(writeFile(host("src/tree/a/d.txt"), QByteArray(30000, 'd')));
        ASSERT_TRUE(writeFile(host("src/tree/a/b/c.txt"), "deep"));
        ASSERT_TRUE(writeFile(host("src/tree/a/b/Twin.txt"), "upper"));
        ASSERT_TRUE(writeFile(host("src/tree/a/b/twin.txt"), "lower"));
        for (const char* folder : { "out", "dec" })
            ASSERT_TRUE(QDir().mkpath(host(folder)));
        ASSERT_TRUE(QDir().mkpath(device("sub")));
        m_tree = filesBelow(host("src/tree"));
        {
            MessageRecorder quiet;
            ASSERT_TRUE(passwords::OwnerPassword::choose(QStringLiteral("dueño"), true));
        }
        m_panelTimer.setInterval(3000);
        m_panelTimer.start();
    }
    QMap<QString, QByteArray> m_tree;
    QTimer m_panelTimer;
};

} // namespace

TEST_F(DataTreeTransferTest, EveryStageOfAFileAndANestedFolderThroughTheScreen)
{
    MessageRecorder messages;
    open();
    m_form->setPanelTimer(&m_panelTimer);

    // Plain copy, host to device: a file, then the folder with case-only twins.
    paste(hostTree(), "C:\\src\\f.txt", false, deviceTree(), "E:\\sub\\", "Paste");
    EXPECT_EQ(readFile(device("sub/f.txt")), "plain file bytes\n");
    EXPECT_TRUE(deviceTree().treeModel()->NodeExists("E:\\sub\\f.txt"));
    paste(hostTree(), "C:\\src\\tree\\", false, deviceTree(), "E:\\sub\\", "Paste");
    EXPECT_EQ(filesBelow(device("sub/tree")), m_tree);
    EXPECT_TRUE(deviceTree().treeModel()->NodeExists("E:\\sub\\tree\\"));
    EXPECT_TRUE(QFileInfo::exists(host("src/f.txt")));

    // Compress into the compressed folder: each file its own archive, same name.
    paste(hostTree(), "C:\\src\\f.txt", false, deviceTree(), "E:\\Documentos Comprimidos\\", "pasteZ");
    EXPECT_TRUE(readFile(device("Documentos Comprimidos/f.txt")).startsWith("PK"));
    paste(hostTree(), "C:\\src\\tree\\", false, deviceTree(), "E:\\Documentos Comprimidos\\", "pasteZ");
    const QMap<QString, QByteArray> packed = filesBelow(device("Documentos Comprimidos/tree"));
    EXPECT_EQ(packed.keys(), m_tree.keys());
    for (const QByteArray& bytes : packed)
        EXPECT_TRUE(bytes.startsWith("PK"));
    // ... and back out of it.
    paste(deviceTree(), "E:\\Documentos Comprimidos\\f.txt", false, hostTree(), "C:\\out\\", "PasteUz");
    EXPECT_EQ(readFile(host("out/f.txt")), "plain file bytes\n");
    paste(deviceTree(), "E:\\Documentos Comprimidos\\tree\\", false, hostTree(), "C:\\out\\", "PasteUz");
    EXPECT_EQ(filesBelow(host("out/tree")), m_tree);

    // Encrypt into the encrypted folder and decrypt out of it, each behind the lock.
    answerLock("dueño");
    paste(hostTree(), "C:\\src\\f.txt", false, deviceTree(), "E:\\Documentos Encriptados\\", "PasteEncript");
    const QByteArray sealed = readFile(device("Documentos Encriptados/f.txt"));
    EXPECT_FALSE(sealed.isEmpty());
    EXPECT_FALSE(sealed.contains("plain file bytes"));
    answerLock("dueño");
    paste(hostTree(), "C:\\src\\tree\\", false, deviceTree(), "E:\\Documentos Encriptados\\", "PasteEncript");
    EXPECT_EQ(filesBelow(device("Documentos Encriptados/tree")).keys(), m_tree.keys());
    EXPECT_NE(filesBelow(device("Documentos Encriptados/tree")), m_tree);
    answerLock("dueño");
    paste(deviceTree(), "E:\\Documentos Encriptados\\f.txt", false, hostTree(), "C:\\dec\\", "PasteDecript");
    EXPECT_EQ(readFile(host("dec/f.txt")), "plain file bytes\n");
    answerLock("dueño");
    paste(deviceTree(), "E:\\Documentos Encriptados\\tree\\", false, hostTree(), "C:\\dec\\", "PasteDecript");
    EXPECT_EQ(filesBelow(host("dec/tree")), m_tree);
    // A refused lock does nothing at all.
    answerLock(QString(), true);
    G().PasswordOk = false;
    paste(hostTree(), "C:\\src\\f.txt", false, deviceTree(), "E:\\Documentos Encriptados\\tree\\", "PasteEncript");
    EXPECT_FALSE(QFileInfo::exists(device("Documentos Encriptados/tree/f.txt")));

    // Moves: the source goes, from the disk and from its tree.
    ASSERT_TRUE(QDir().mkpath(device("moved")));
    deviceTree().treeModel()->FillFolder("E:\\");
    paste(hostTree(), "C:\\src\\f.txt", true, deviceTree(), "E:\\moved\\", "Paste");
    EXPECT_EQ(readFile(device("moved/f.txt")), "plain file bytes\n");
    EXPECT_FALSE(QFileInfo::exists(host("src/f.txt")));
    EXPECT_FALSE(hostTree().treeModel()->NodeExists("C:\\src\\f.txt"));
    paste(hostTree(), "C:\\src\\tree\\", true, deviceTree(), "E:\\moved\\", "Paste");
    EXPECT_EQ(filesBelow(device("moved/tree")), m_tree);
    EXPECT_FALSE(QFileInfo::exists(host("src/tree")));
    EXPECT_FALSE(hostTree().treeModel()->NodeExists("C:\\src\\tree\\"));
    // An empty file is not copied; moved, it stays and the alert says so.
    ASSERT_TRUE(writeFile(host("src/empty.txt"), ""));
    hostTree().treeModel()->FillFolder("C:\\src\\");
    messages.texts.clear();
    paste(hostTree(), "C:\\src\\empty.txt", true, deviceTree(), "E:\\moved\\", "Paste");
    EXPECT_TRUE(QFileInfo::exists(host("src/empty.txt")));
    EXPECT_FALSE(QFileInfo::exists(device("moved/empty.txt")));
    EXPECT_EQ(messages.texts, QStringList({ "¡Alerta, el archivo no fue eliminado!" }));
    EXPECT_TRUE(hostTree().treeModel()->NodeExists("C:\\src\\empty.txt"));

    // Through drops: compress by dragging into the compressed folder, move-decrypt out.
    ASSERT_TRUE(writeFile(host("src/g.txt"), "dragged"));
    hostTree().treeModel()->FillFolder("C:\\src\\");
    EXPECT_EQ(drop(hostTree(), "C:\\src\\g.txt", deviceTree(), "E:\\Documentos Comprimidos\\"), "MenuDragZip");
    choose("Copydragzip");
    settle();
    EXPECT_TRUE(readFile(device("Documentos Comprimidos/g.txt")).startsWith("PK"));
    EXPECT_TRUE(QFileInfo::exists(host("src/g.txt")));
    EXPECT_EQ(drop(deviceTree(), "E:\\Documentos Comprimidos\\g.txt", hostTree(), "C:\\out\\"), "MenuDragUzip");
    choose("CopydragUzip");
    settle();
    EXPECT_EQ(readFile(host("out/g.txt")), "dragged");
    EXPECT_EQ(drop(hostTree(), "C:\\src\\g.txt", deviceTree(), "E:\\Documentos Encriptados\\"), "MenuDragEnc");
    answerLock("dueño");
    choose("MoveDragEnc");
    settle();
    EXPECT_FALSE(QFileInfo::exists(host("src/g.txt")));
    EXPECT_FALSE(hostTree().treeModel()->NodeExists("C:\\src\\g.txt"));
    EXPECT_EQ(drop(deviceTree(), "E:\\Documentos Encriptados\\g.txt", hostTree(), "C:\\dec\\"), "MenuDragDec");
    answerLock("dueño");
    choose("movedragDec");
    settle();
    EXPECT_EQ(readFile(host("dec/g.txt")), "dragged");
    EXPECT_FALSE(QFileInfo::exists(device("Documentos Encriptados/g.txt")));
    // A drop on a file: the engine refuses the target.
    messages.texts.clear();
    EXPECT_EQ(drop(hostTree(), "C:\\dec\\g.txt", deviceTree(), "E:\\moved\\f.txt"), "MenuDrag");
    choose("Copydrag");
    settle();
    ASSERT_FALSE(messages.texts.isEmpty());
    EXPECT_TRUE(messages.texts.at(0).startsWith("¡Ruta destino inválida!"));

    // Between ticks the panel's timer runs again and the form is usable.
    EXPECT_TRUE(m_panelTimer.isActive());
    EXPECT_TRUE(m_form->isEnabled());
    EXPECT_FALSE(m_form->barra()->isVisible());
}

TEST_F(DataTreeTransferTest, MarkedSetsOfThreeCountAndCancelStopsAfterTheSecond)
{
    MessageRecorder messages;
    for (const char* n : { "1.bin", "2.bin", "3.bin" })
        ASSERT_TRUE(writeFile(host(QStringLiteral("m/") + n), QByteArray(50000, n[0])));
    open();
    m_form->setPanelTimer(&m_panelTimer);
    struct Seen {
        QString count;
        bool barra, panelTimer, formEnabled, fileBar, closed;
    };
    QList<Seen> seen;
    int cancelAt = 0;
    QObject::connect(m_form.get(), &frmDataTree::tickStarted, [&] {
        Barra* b = m_form->barra();
        seen << Seen { b->LabelC()->text(), b->isVisible(), m_panelTimer.isActive(), m_form->isEnabled(),
            !b->ProgressBarF()->isHidden(), m_form->close() };
        if (seen.size() == cancelAt)
            b->Command1()->click();
    });
    auto markThree = [this](SmartTree& tree, const QString& folder) {
        click(tree, folder + "1.bin");
        click(tree, folder + "2.bin", Qt::ControlModifier);
        click(tree, folder + "3.bin", Qt::ControlModifier);
        QTest::keyRelease(&tree, Qt::Key_Control);
        EXPECT_EQ(tree.marks()->keys().size(), 3);
    };

    // Copy three marked files: the counts 1\3, 2\3, 3\3 in turn, Barra up, the panel paused.
    markThree(hostTree(), "C:\\m\\");
    rightClick(hostTree(), "C:\\m\\2.bin");
    choose("Copy");
    ASSERT_EQ(m_form->ListMultiple().size(), 3);
    rightClick(deviceTree(), "E:\\sub\\");
    choose("Paste");
    settle();
    ASSERT_EQ(seen.size(), 3);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(seen[i].count, QStringLiteral("%1\\3").arg(i + 1));
        EXPECT_TRUE(seen[i].barra);
        EXPECT_FALSE(seen[i].panelTimer);
        EXPECT_FALSE(seen[i].formEnabled);
        EXPECT_TRUE(seen[i].fileBar);
        EXPECT_FALSE(seen[i].closed); // the form stays until its items are done
    }
    for (const char* n : { "1.bin", "2.bin", "3.bin" })
        EXPECT_EQ(readFile(device(QStringLiteral("sub/") + n)).size(), 50000) << n;
    EXPECT_TRUE(m_form->ListMultiple().isEmpty());
    EXPECT_FALSE(m_form->barra()->isVisible());
    EXPECT_TRUE(m_panelTimer.isActive());
    EXPECT_TRUE(m_form->isEnabled());

    // Move three, cancelling in the second: the first went, the second stopped
    // within its blocks (no half file), the third was never begun.
    seen.clear();
    cancelAt = 2;
    ASSERT_TRUE(QDir().mkpath(device("cut")));
    deviceTree().treeModel()->FillFolder("E:\\");
    markThree(hostTree(), "C:\\m\\");
    rightClick(hostTree(), "C:\\m\\1.bin");
    choose("Cut");
    rightClick(deviceTree(), "E:\\cut\\");
    choose("Paste");
    settle();
    ASSERT_EQ(seen.size(), 2);
    EXPECT_EQ(seen[1].count, "2\\3");
    EXPECT_EQ(readFile(device("cut/1.bin")).size(), 50000);
    EXPECT_FALSE(QFileInfo::exists(host("m/1.bin")));
    EXPECT_FALSE(QFileInfo::exists(device("cut/2.bin")));
    EXPECT_TRUE(QFileInfo::exists(host("m/2.bin")));
    EXPECT_FALSE(QFileInfo::exists(device("cut/3.bin")));
    EXPECT_TRUE(QFileInfo::exists(host("m/3.bin")));
    EXPECT_FALSE(m_form->barra()->isVisible());
    EXPECT_TRUE(m_form->isEnabled());
    // The cancelled move's source stays, and the tick said so.
    EXPECT_EQ(messages.texts, QStringList({ "¡Alerta, el archivo no fue eliminado!" }));

    // Delete a marked set from the device tree: the counts again, the file bar hidden.
    seen.clear();
    cancelAt = 0;
    markThree(deviceTree(), "E:\\sub\\");
    messages.script({ 6 });
    rightClick(deviceTree(), "E:\\sub\\3.bin");
    EXPECT_EQ(offered(), QStringList({ "Copy", "Cut", "Delete" }));
    choose("Delete");
    settle();
    ASSERT_EQ(seen.size(), 3);
    EXPECT_EQ(seen[2].count, "3\\3");
    EXPECT_FALSE(seen[0].fileBar);
    for (const char* n : { "1.bin", "2.bin", "3.bin" }) {
        EXPECT_FALSE(QFileInfo::exists(device(QStringLiteral("sub/") + n))) << n;
        EXPECT_FALSE(deviceTree().treeModel()->NodeExists(QStringLiteral("E:\\sub\\") + n)) << n;
    }
    EXPECT_TRUE(deviceTree().marks()->keys().isEmpty());
}

TEST_F(DataTreeTransferTest, DeleteInEachMode)
{
    MessageRecorder messages;
    ASSERT_TRUE(writeFile(device("sub/d0.txt"), "zero"));
    ASSERT_TRUE(writeFile(device("sub/dir0/in/x.txt"), "x"));
    ASSERT_TRUE(writeFile(device("sub/d1.txt"), "one-in-trash"));
    ASSERT_TRUE(writeFile(device("sub/d2.txt"), "two"));
    ASSERT_TRUE(writeFile(host("Escritorio/desk.txt"), "desk"));
    open();
    const QString question = QStringLiteral("¿Realmente desea eliminar el archivo seleccionado?");

    // "No" to the question: nothing happens.
    rightClick(deviceTree(), "E:\\sub\\d0.txt");
    choose("Delete");
    settle();
    EXPECT_TRUE(QFileInfo::exists(device("sub/d0.txt")));
    EXPECT_EQ(messages.texts, QStringList({ question }));

    // "0": removed, file and nested folder, and gone from the tree.
    messages.texts.clear();
    messages.script({ 6, 6, 6 });
    rightClick(deviceTree(), "E:\\sub\\d0.txt");
    choose("Delete");
    settle();
    EXPECT_FALSE(QFileInfo::exists(device("sub/d0.txt")));
    EXPECT_FALSE(deviceTree().treeModel()->NodeExists("E:\\sub\\d0.txt"));
    rightClick(deviceTree(), "E:\\sub\\dir0\\");
    choose("Delete");
    settle();
    EXPECT_FALSE(QFileInfo::exists(device("sub/dir0")));
    EXPECT_FALSE(deviceTree().treeModel()->NodeExists("E:\\sub\\dir0\\"));
    // Below the desktop root of the host tree, with its bar.
    rightClick(hostTree(), "|C:\\Escritorio\\desk.txt");
    choose("Delete");
    settle();
    EXPECT_FALSE(QFileInfo::exists(host("Escritorio/desk.txt")));
    EXPECT_FALSE(hostTree().treeModel()->NodeExists("|C:\\Escritorio\\desk.txt"));
    EXPECT_EQ(messages.texts, QStringList({ question, question, question }));

    // "1": to the trash, whole.
    S().DeleteFilesMode = QStringLiteral("1");
    messages.texts.clear();
    messages.script({ 6 });
    rightClick(deviceTree(), "E:\\sub\\d1.txt");
    choose("Delete");
    settle();
    EXPECT_FALSE(QFileInfo::exists(device("sub/d1.txt")));
    QStringList trashed;
    for (const QString& where : { m_data.path(), m_drives->device() }) {
        QDirIterator it(where, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            if (path.contains("Trash") && readFile(path) == "one-in-trash")
                trashed << path;
        }
    }
    EXPECT_EQ(trashed.size(), 1);
    EXPECT_EQ(messages.texts, QStringList({ question }));

    // "2": the file stays, the tick says so and the node is kept.
    S().DeleteFilesMode = QStringLiteral("2");
    messages.texts.clear();
    messages.script({ 6 });
    rightClick(deviceTree(), "E:\\sub\\d2.txt");
    choose("Delete");
    settle();
    EXPECT_EQ(readFile(device("sub/d2.txt")), "two");
    EXPECT_TRUE(deviceTree().treeModel()->NodeExists("E:\\sub\\d2.txt"));
    EXPECT_EQ(messages.texts, QStringList({ question, "¡Alerta, el archivo no fue eliminado!" }));

    // A root is never taken away, even when the verb is reached without the menu.
    S().DeleteFilesMode = QStringLiteral("0");
    messages.texts.clear();
    messages.script({ 6 });
    deviceTree().SelectKey("E:\\");
    G().TreeSide = 1;
    m_form->Delete_Click();
    settle();
    EXPECT_EQ(readFile(device("sub/d2.txt")), "two");
    ASSERT_EQ(messages.texts.size(), 2);
    EXPECT_TRUE(messages.texts.at(1).startsWith("Una unidad o carpeta raíz no se puede mover, eliminar ni renombrar"));
    EXPECT_TRUE(deviceTree().treeModel()->NodeExists("E:\\"));
}

TEST_F(DataTreeTransferTest, RestoreFromTheQuarantineThroughThePopup)
{
    MessageRecorder messages;
    ASSERT_TRUE(writeFile(host("orig/secret.txt"), "the original bytes"));
    ASSERT_EQ(QuarantineFile("C:\\orig\\secret.txt"), QuarantineOutcome::Sealed);
    ASSERT_FALSE(QFileInfo::exists(host("orig/secret.txt")));
    const QString sealed = QStringLiteral("E:\\Mis Documentos\\Cuarentena\\secret.txt");
    open();
    rightClick(deviceTree(), sealed);
    choose("Restaura");
    EXPECT_EQ(readFile(host("orig/secret.txt")), "the original bytes");
    EXPECT_FALSE(QFileInfo::exists(device("Mis Documentos/Cuarentena/secret.txt")));
    EXPECT_FALSE(deviceTree().treeModel()->NodeExists(sealed));
    EXPECT_FALSE(readFile(device("VMK/QFP.txt")).contains("secret.txt"));
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join(" / ").toStdString();
}

using DataTreePictures = DataTreeFixture;

// Pictures for the README: set VMK_SHOTS to a folder.
TEST_F(DataTreePictures, TwoTreesWithTheMenuAndBarraDuringACopy)
{
    const QString dir = qEnvironmentVariable("VMK_SHOTS");
    if (dir.isEmpty())
        GTEST_SKIP() << "VMK_SHOTS not set";
    MessageRecorder messages;
    for (int i = 1; i <= 6; ++i)
        ASSERT_TRUE(writeFile(host(QStringLiteral("Fotos/viaje-%1.jpg").arg(i)), QByteArray(400000, char('a' + i))));
    ASSERT_TRUE(writeFile(host("Escritorio/informe.odt"), "informe"));
    ASSERT_TRUE(writeFile(device("Documentos Comprimidos/cartas.txt"), "PK"));
    open();
    m_form->resize(820, 520);
    reveal(hostTree(), "C:\\Fotos\\viaje-1.jpg");
    reveal(hostTree(), "|C:\\Escritorio\\informe.odt");
    reveal(deviceTree(), "E:\\Documentos Comprimidos\\cartas.txt");
    click(hostTree(), "C:\\Fotos\\viaje-2.jpg");
    click(hostTree(), "C:\\Fotos\\viaje-3.jpg", Qt::ControlModifier);
    QTest::keyRelease(&hostTree(), Qt::Key_Control);
    rightClick(hostTree(), "C:\\Fotos\\viaje-3.jpg");
    choose("Copy");
    // The menu over the device folder, drawn onto the form where it pops up.
    const QPoint at = centreOf(deviceTree(), "E:\\Documentos Comprimidos\\");
    QTest::mouseClick(deviceTree().viewport(), Qt::RightButton, Qt::NoModifier, at);
    QMenu* menu = m_form->menu();
    ASSERT_TRUE(menu->isVisible());
    QImage picture = m_form->grab().toImage();
    {
        QPainter painter(&picture);
        painter.drawPixmap(m_form->mapFromGlobal(menu->pos()), menu->grab());
    }
    picture.save(dir + "/file-manager-menu.png");
    menu->hide();

    // The properties of our own, and the name dialog of a new folder.
    rightClick(hostTree(), "C:\\Fotos\\viaje-1.jpg");
    choose("Properties");
    auto* sheet = m_form->findChild<frmProperties*>();
    ASSERT_NE(sheet, nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(sheet));
    sheet->grab().save(dir + "/file-properties.png");
    sheet->close();
    rightClick(deviceTree(), "E:\\Documentos Comprimidos\\");
    choose("NewFolder");
    m_form->formNewEdit()->Text1()->setText("Cartas 2024");
    ASSERT_TRUE(QTest::qWaitForWindowExposed(m_form->formNewEdit()));
    m_form->formNewEdit()->grab().save(dir + "/file-new-folder.png");
    m_form->formNewEdit()->close();

    // Barra half-way through a folder of six pictures.
    bool taken = false;
    const PumpHook previous = CurrentPumpHook();
    SetPumpHook([&] {
        if (!taken && G().DoneFiles == 3 && m_form->barra()->ProgressBarF()->value() >= 50) {
            taken = true;
            m_form->barra()->grab().save(dir + "/file-transfer-barra.png");
        }
    });
    paste(hostTree(), "C:\\Fotos\\", false, deviceTree(), "E:\\", "Paste");
    SetPumpHook(previous);
    EXPECT_TRUE(taken);
}
