#include "DataTreeFixture.h"

#include "filemanager/ui/FormNewEdit.h"
#include "filemanager/ui/frmProperties.h"
#include "platform/Shell.h"

#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>

using namespace vmk;
using namespace vmk::test;

using DataTreeTest = DataTreeFixture;

TEST_F(DataTreeTest, PopupRuleOnBothTreesAndInTheConfiguredFolders)
{
    ASSERT_TRUE(writeFile(host("x/a.txt"), "a"));
    ASSERT_TRUE(writeFile(device("Documentos Comprimidos/z.txt"), "z"));
    ASSERT_TRUE(writeFile(device("Documentos Encriptados/s.txt"), "s"));
    ASSERT_TRUE(writeFile(device("Mis Documentos/Cuarentena/q.bin"), "q"));
    ASSERT_TRUE(writeFile(device("sub/in.txt"), "i"));
    open();

    // A file of the host tree; nothing on the clipboard, so no paste verb.
    rightClick(hostTree(), "C:\\x\\a.txt");
    EXPECT_EQ(G().TreeSide, 2);
    EXPECT_EQ(offered(), QStringList({ "OpenF", "Copy", "Cut", "Delete", "Rename", "Properties" }));
    choose("Copy");
    EXPECT_EQ(G().SourcePath, "C:\\x\\a.txt");
    EXPECT_FALSE(G().MoveFlag);

    // Targets on the device: the target's folder chooses the verb.
    const struct {
        const char* key;
        const char* verb;
    } targets[] = {
        { "E:\\Documentos Comprimidos\\", "pasteZ" },
        { "E:\\Documentos Encriptados\\", "PasteEncript" },
        { "E:\\Mis Documentos\\Cuarentena\\", "PasteEncript" },
        { "E:\\sub\\", "Paste" },
    };
    for (const auto& t : targets) {
        rightClick(deviceTree(), QString::fromUtf8(t.key));
        EXPECT_EQ(G().TreeSide, 1);
        EXPECT_EQ(offered(), QStringList({ "Copy", "Cut", t.verb, "Delete", "Rename", "NewFolder", "Properties" }))
            << t.key;
    }
    // The same folders reached through the host tree's E: drive count as well.
    rightClick(hostTree(), "E:\\Documentos Comprimidos\\");
    EXPECT_TRUE(offered().contains("pasteZ"));

    // Sources on the device, pasted to the host: the source's folder chooses.
    const struct {
        const char* source;
        const char* verb;
    } sources[] = {
        { "E:\\Documentos Comprimidos\\z.txt", "PasteUz" },
        { "E:\\Documentos Encriptados\\s.txt", "PasteDecript" },
        { "E:\\Mis Documentos\\Cuarentena\\q.bin", "PasteDecript" },
        { "E:\\sub\\in.txt", "Paste" },
    };
    for (const auto& s : sources) {
        rightClick(deviceTree(), QString::fromUtf8(s.source));
        choose("Cut");
        EXPECT_TRUE(G().MoveFlag);
        rightClick(hostTree(), "C:\\x\\");
        EXPECT_EQ(offered(), QStringList({ "Copy", "Cut", s.verb, "Delete", "Rename", "NewFolder", "Properties" }))
            << s.source;
    }

    // Restore only inside the quarantine folder of the device tree.
    rightClick(deviceTree(), "E:\\Mis Documentos\\Cuarentena\\q.bin");
    EXPECT_TRUE(offered().contains("Restaura"));
    EXPECT_TRUE(m_form->item("linea4")->isVisible());
    rightClick(deviceTree(), "E:\\Mis Documentos\\Cuarentena\\");
    EXPECT_FALSE(offered().contains("Restaura"));
    rightClick(hostTree(), "E:\\Mis Documentos\\Cuarentena\\q.bin");
    EXPECT_FALSE(offered().contains("Restaura"));

    // A marked set: copy, cut and delete only.
    click(deviceTree(), "E:\\sub\\in.txt");
    click(deviceTree(), "E:\\Documentos Comprimidos\\z.txt", Qt::ControlModifier);
    ASSERT_EQ(deviceTree().marks()->keys().size(), 2);
    QTest::mouseClick(deviceTree().viewport(), Qt::RightButton, Qt::NoModifier,
        centreOf(deviceTree(), "E:\\Documentos Comprimidos\\z.txt"));
    m_form->menu()->hide();
    EXPECT_EQ(offered(), QStringList({ "Copy", "Cut", "Delete" }));
    // Copy takes the marks onto the clipboard and clears them.
    choose("Copy");
    EXPECT_EQ(m_form->ListMultiple(), QStringList({ "E:\\sub\\in.txt", "E:\\Documentos Comprimidos\\z.txt" }));
    EXPECT_TRUE(deviceTree().marks()->keys().isEmpty());
    EXPECT_FALSE(deviceTree().treeModel()->isMarked("E:\\sub\\in.txt"));

    // What cannot be acted on is offered greyed, saying why.
    rightClick(hostTree(), "|HOST|");
    for (const char* name : { "Copy", "Cut", "Delete", "Rename", "Properties" }) {
        EXPECT_FALSE(m_form->item(name)->isEnabled()) << name;
        EXPECT_EQ(m_form->item(name)->toolTip(), "No es una carpeta ni un archivo") << name;
    }
    rightClick(deviceTree(), "E:\\");
    for (const char* name : { "Cut", "Delete", "Rename" }) {
        EXPECT_FALSE(m_form->item(name)->isEnabled()) << name;
        EXPECT_FALSE(m_form->item(name)->toolTip().isEmpty()) << name;
    }
    EXPECT_TRUE(m_form->item("Copy")->isEnabled());
    EXPECT_TRUE(m_form->item("NewFolder")->isEnabled());
    rightClick(deviceTree(), "E:\\sub\\");
    EXPECT_TRUE(m_form->item("Delete")->isEnabled());
    EXPECT_FALSE(m_form->item("Delete")->toolTip().contains("raíz"));
}

TEST_F(DataTreeTest, MenuItemsKeepTheirNamesAndTranslateTheirCaptions)
{
    G().LanguageIndex = 1;
    open();
    EXPECT_EQ(m_form->windowTitle(), "Vormak 1.20 (Files Administrator)");
    const struct {
        const char* name;
        const char* english;
    } items[] = { { "OpenF", "Open" }, { "Copy", "Copy" }, { "Cut", "Cut" }, { "Paste", "Paste" },
        { "PasteEncript", "Paste Encrypted" }, { "PasteDecript", "Paste Decrypted" }, { "pasteZ", "Paste Compressed" },
        { "PasteUz", "Paste Decompressed" }, { "Delete", "Delete" }, { "Rename", "Rename" },
        { "NewFolder", "New Folder" }, { "Properties", "Properties" }, { "Restaura", "Restore" },
        { "Copydrag", "Copy" }, { "movedrag", "Move" }, { "CopyDragEnc", "Copy Encrypted" },
        { "MoveDragEnc", "Move Encrypted" }, { "CopydragDec", "Copy Decrypted" }, { "movedragDec", "Move Decrypted" },
        { "Copydragzip", "Copy Compressed" }, { "MoveDragZip", "Move Compressed" },
        { "CopydragUzip", "Copy Decompressed" }, { "MoveDragUzip", "Move Decompressed" } };
    for (const auto& i : items) {
        ASSERT_NE(m_form->item(i.name), nullptr) << i.name;
        EXPECT_EQ(m_form->item(i.name)->text(), i.english) << i.name;
    }
    for (const char* name : { "linea", "Linea1", "linea2", "linea4" })
        EXPECT_TRUE(m_form->item(name)->isSeparator()) << name;
    // The five drag popups, each with its copy and its move verb.
    for (const char* name : { "MenuDrag", "MenuDragEnc", "MenuDragDec", "MenuDragZip", "MenuDragUzip" })
        EXPECT_EQ(m_form->dragMenu(name)->actions().size(), 2) << name;
}

TEST_F(DataTreeTest, DropsRaiseThePopupTheFoldersChoose)
{
    ASSERT_TRUE(writeFile(host("x/a.txt"), "a"));
    ASSERT_TRUE(writeFile(device("Documentos Comprimidos/z.txt"), "z"));
    ASSERT_TRUE(writeFile(device("Documentos Encriptados/s.txt"), "s"));
    ASSERT_TRUE(writeFile(device("Mis Documentos/Cuarentena/q.bin"), "q"));
    ASSERT_TRUE(writeFile(device("sub/in.txt"), "i"));
    open();

    // Across the trees, host to device.
    m_form->item("Paste")->setVisible(false);
    EXPECT_EQ(drop(hostTree(), "C:\\x\\a.txt", deviceTree(), "E:\\sub\\"), "MenuDrag");
    EXPECT_EQ(G().TreeSide, 1);
    EXPECT_EQ(G().DragSide, 2);
    EXPECT_TRUE(m_form->item("Paste")->isVisible());
    EXPECT_EQ(drop(hostTree(), "C:\\x\\a.txt", deviceTree(), "E:\\Documentos Comprimidos\\"), "MenuDragZip");
    EXPECT_EQ(drop(hostTree(), "C:\\x\\a.txt", deviceTree(), "E:\\Documentos Encriptados\\"), "MenuDragEnc");
    // Device to host.
    EXPECT_EQ(drop(deviceTree(), "E:\\Documentos Comprimidos\\z.txt", hostTree(), "C:\\x\\"), "MenuDragUzip");
    EXPECT_EQ(G().TreeSide, 2);
    EXPECT_EQ(G().DragSide, 1);
    EXPECT_EQ(drop(deviceTree(), "E:\\Documentos Encriptados\\s.txt", hostTree(), "C:\\x\\"), "MenuDragDec");
    // Within one tree: from the compressed folder into the encrypted one, the target wins.
    EXPECT_EQ(drop(deviceTree(), "E:\\Documentos Comprimidos\\z.txt", deviceTree(), "E:\\Documentos Encriptados\\"),
        "MenuDragEnc");
    EXPECT_EQ(G().DragSide, 1);
    // The quarantine folder plays no part; a node dropped on itself.
    EXPECT_EQ(drop(deviceTree(), "E:\\Mis Documentos\\Cuarentena\\q.bin", hostTree(), "C:\\x\\"), "MenuDrag");
    EXPECT_EQ(drop(deviceTree(), "E:\\sub\\", deviceTree(), "E:\\sub\\"), "MenuDrag");
    // A drop on no node raises nothing.
    EXPECT_EQ(drop(hostTree(), "C:\\x\\a.txt", deviceTree(), QString()), "");
}

TEST_F(DataTreeTest, RenameAndNewFolderOnBothTreesAlsoBelowTheDesktop)
{
    ASSERT_TRUE(writeFile(host("Escritorio/d.txt"), "desk"));
    ASSERT_TRUE(writeFile(host("Escritorio/taken.txt"), "t"));
    ASSERT_TRUE(writeFile(device("plain.txt"), "p"));
    ASSERT_TRUE(writeFile(device("Plain2.txt"), "p2"));
    ASSERT_TRUE(QDir().mkpath(device("sub")));
    MessageRecorder messages;
    open();
    auto accept = [this](const QString& text) {
        FormNewEdit* form = m_form->formNewEdit();
        EXPECT_NE(form, nullptr);
        if (!form)
            return;
        EXPECT_TRUE(form->isVisible());
        form->Text1()->setText(text);
        form->CMDacept_Click();
        EXPECT_FALSE(form->isVisible());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    };

    // Rename below the desktop root of the host tree.
    const QString desk = QStringLiteral("|C:\\Escritorio\\");
    rightClick(hostTree(), desk + "d.txt");
    choose("Rename");
    FormNewEdit* form = m_form->formNewEdit();
    ASSERT_NE(form, nullptr);
    EXPECT_TRUE(form->renameMode());
    EXPECT_EQ(form->Label2()->text(), "Nombre:");
    EXPECT_EQ(form->LabelF()->text(), "d.txt");
    EXPECT_EQ(form->LabelF()->toolTip(), "C:\\Escritorio\\d.txt");
    EXPECT_EQ(form->RenameParent, "C:\\Escritorio\\");
    EXPECT_FALSE(form->Picture1()->pixmap().isNull());
    accept("e \"quoted\" *.txt");
    EXPECT_EQ(readFile(host("Escritorio/e \"quoted\" *.txt")), "desk");
    EXPECT_FALSE(QFileInfo::exists(host("Escritorio/d.txt")));
    // The folder is read again: the node has its new name.
    EXPECT_TRUE(hostTree().treeModel()->NodeExists(desk + "e \"quoted\" *.txt"));
    EXPECT_FALSE(hostTree().treeModel()->NodeExists(desk + "d.txt"));

    // Onto a name in use, or with a line break: refused, nothing changed.
    rightClick(hostTree(), desk + "e \"quoted\" *.txt");
    choose("Rename");
    accept("taken.txt");
    rightClick(hostTree(), desk + "e \"quoted\" *.txt");
    choose("Rename");
    accept("two\nlines");
    ASSERT_EQ(messages.texts.size(), 2);
    EXPECT_EQ(messages.texts.at(0), "¡Ya existe un archivo o carpeta con ese nombre!\r\nC:\\Escritorio\\taken.txt");
    EXPECT_TRUE(messages.texts.at(1).startsWith("¡Nombre no válido!"));
    EXPECT_EQ(readFile(host("Escritorio/taken.txt")), "t");
    EXPECT_EQ(readFile(host("Escritorio/e \"quoted\" *.txt")), "desk");
    // An empty box does nothing and closes the form.
    rightClick(hostTree(), desk + "taken.txt");
    choose("Rename");
    accept("");
    EXPECT_EQ(readFile(host("Escritorio/taken.txt")), "t");
    EXPECT_EQ(messages.texts.size(), 2);

    // New folder below the desktop root: the host tree's labels.
    rightClick(hostTree(), desk);
    choose("NewFolder");
    form = m_form->formNewEdit();
    ASSERT_NE(form, nullptr);
    EXPECT_FALSE(form->renameMode());
    EXPECT_EQ(form->Label1()->text(), "Nuevo nombre:");
    EXPECT_EQ(form->Label2()->text(), "Dirección:");
    EXPECT_EQ(form->LabelF()->text(), "Escritorio\\");
    EXPECT_EQ(form->LabelF()->toolTip(), "C:\\Escritorio\\");
    accept("nueva");
    EXPECT_TRUE(QFileInfo(host("Escritorio/nueva")).isDir());
    EXPECT_TRUE(hostTree().treeModel()->NodeExists(desk + "nueva\\"));
    EXPECT_TRUE(hostTree().IsExpanded(desk));

    // The device tree: a case-only rename, and a twin that is another name.
    rightClick(deviceTree(), "E:\\plain.txt");
    choose("Rename");
    EXPECT_EQ(m_form->formNewEdit()->LabelF()->toolTip(), "E:\\plain.txt");
    accept("PLAIN.txt");
    EXPECT_EQ(readFile(device("PLAIN.txt")), "p");
    EXPECT_TRUE(deviceTree().treeModel()->NodeExists("E:\\PLAIN.txt"));
    rightClick(deviceTree(), "E:\\PLAIN.txt");
    choose("Rename");
    accept("plain2.txt"); // "Plain2.txt" is another entry on this filesystem
    EXPECT_EQ(readFile(device("plain2.txt")), "p");
    EXPECT_EQ(readFile(device("Plain2.txt")), "p2");
    // New folder on the device tree: its labels, an odd name, then the same name again.
    rightClick(deviceTree(), "E:\\sub\\");
    choose("NewFolder");
    form = m_form->formNewEdit();
    EXPECT_EQ(form->Label1()->text(), "Nuevo nombre:");
    EXPECT_EQ(form->Label2()->text(), "Dirección:");
    EXPECT_EQ(form->LabelF()->text(), "sub");
    accept("x \"y\" *");
    EXPECT_TRUE(QFileInfo(device("sub/x \"y\" *")).isDir());
    EXPECT_TRUE(deviceTree().treeModel()->NodeExists("E:\\sub\\x \"y\" *\\"));
    rightClick(deviceTree(), "E:\\sub\\");
    choose("NewFolder");
    accept("x \"y\" *");
    ASSERT_EQ(messages.texts.size(), 3);
    EXPECT_EQ(messages.texts.at(2), "¡Ya existe un archivo o carpeta con ese nombre!\r\nE:\\sub\\x \"y\" *");
}

TEST_F(DataTreeTest, OpenAndPropertiesOfOurOwn)
{
    ASSERT_TRUE(writeFile(host("Escritorio/d.txt"), "hello"));
    ASSERT_TRUE(writeFile(device("sub/in.txt"), "in"));
    MessageRecorder messages;
    QStringList opened;
    const Shell::Opener previous = Shell::setOpener([&](const QString& target) {
        opened << target;
        return true;
    });
    open();
    rightClick(hostTree(), "|C:\\Escritorio\\d.txt");
    choose("OpenF");
    rightClick(deviceTree(), "E:\\sub\\in.txt");
    choose("OpenF");
    Shell::setOpener(previous);
    EXPECT_EQ(opened, QStringList({ host("Escritorio/d.txt"), device("sub/in.txt") }));

    rightClick(hostTree(), "|C:\\Escritorio\\d.txt");
    choose("Properties");
    auto* sheet = m_form->findChild<frmProperties*>();
    ASSERT_NE(sheet, nullptr);
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_EQ(sheet->value("LblPath"), "C:\\Escritorio\\d.txt");
    EXPECT_EQ(sheet->value("LblSize"), "5 Bytes");
    EXPECT_EQ(sheet->value("LblPermissions").size(), 9);
    EXPECT_NE(sheet->value("LblModified"), "-----");
    sheet->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    rightClick(deviceTree(), "E:\\sub\\");
    choose("Properties");
    sheet = m_form->findChild<frmProperties*>();
    ASSERT_NE(sheet, nullptr);
    EXPECT_EQ(sheet->value("LblType"), "Carpeta");
    EXPECT_EQ(sheet->value("LblSize"), "2 Bytes (1 archivos)");
    sheet->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    // Gone behind the tree's back: the message, no sheet.
    ASSERT_TRUE(QFile::remove(device("sub/in.txt")));
    rightClick(deviceTree(), "E:\\sub\\in.txt");
    choose("Properties");
    EXPECT_EQ(m_form->findChild<frmProperties*>(), nullptr);
    EXPECT_EQ(messages.texts, QStringList({ "Error, el archivo o carpeta no existe" }));
}
