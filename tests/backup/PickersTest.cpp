#include "backup/BackupValues.h"
#include "backup/ui/Form3.h"
#include "backup/ui/Form4.h"
#include "backup/ui/Form5.h"
#include "filemanager/FileTreeModel.h"
#include "filemanager/SelectionMarks.h"
#include "filemanager/ui/SmartTree.h"
#include "foundation/Globals.h"

#include "TestSupport.h"
#include "TreeDrives.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

using namespace vmk;
using vmk::test::MessageRecorder;
using vmk::test::TreeDrives;
using vmk::test::writeFile;

namespace
{

void clickNode(SmartTree* tree, const QString& key)
{
    const QModelIndex index = tree->treeModel()->indexOf(key);
    ASSERT_TRUE(index.isValid()) << key.toStdString();
    tree->scrollTo(index);
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, Qt::NoModifier, tree->visualRect(index).center());
}

// Runs the picker modally and presses Cancelar once it is up.
int execAndCancel(PickerForm& form)
{
    QTimer::singleShot(0, &form, [&form] { QTest::mouseClick(form.Command2(), Qt::LeftButton); });
    return form.exec();
}

} // namespace

TEST(Pickers, Form3WritesTheFolderIntoText2)
{
    TreeDrives drives;
    ASSERT_TRUE(QDir().mkpath(drives.host() + "/Documentos/Destino"));
    QLineEdit text2;
    text2.setText("antes");
    {
        Form3 form(&text2);
        EXPECT_EQ(form.windowTitle(), QStringLiteral("Seleccione una carpeta"));
        EXPECT_EQ(form.Command1()->text(), QStringLiteral("Aceptar"));
        EXPECT_EQ(form.Command2()->text(), QStringLiteral("Cancelar"));
        EXPECT_EQ(execAndCancel(form), int(QDialog::Rejected));
        EXPECT_EQ(text2.text(), QStringLiteral("antes")); // Cancelar only unloads
    }
    Form3 form(&text2);
    form.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&form));
    EXPECT_TRUE(form.tree()->IsExpanded("|HOST|"));
    form.tree()->Expand("|C:\\Documentos\\");
    clickNode(form.tree(), "|C:\\Documentos\\Destino\\");
    form.Command1_Click();
    EXPECT_EQ(text2.text(), QStringLiteral("C:\\Documentos\\Destino\\"));
    EXPECT_EQ(form.result(), int(QDialog::Accepted));

    // A folder gone meanwhile leaves the box empty.
    Form3 again(&text2);
    again.tree()->Expand("|C:\\Documentos\\");
    ASSERT_TRUE(again.tree()->SelectKey("|C:\\Documentos\\Destino\\"));
    ASSERT_TRUE(QDir(drives.host() + "/Documentos/Destino").removeRecursively());
    again.Command1_Click();
    EXPECT_EQ(text2.text(), QString());
}

TEST(Pickers, Form4NamesTheSelectionFile)
{
    TreeDrives drives;
    ASSERT_TRUE(QDir().mkpath(drives.host() + "/Documentos/Listas"));
    ASSERT_TRUE(writeFile(drives.host() + "/Documentos/suelto.txt", "x"));
    MessageRecorder messages;
    BV().BackupSelectionFile = QStringLiteral("anterior");
    {
        Form4 form;
        EXPECT_EQ(execAndCancel(form), int(QDialog::Rejected));
        EXPECT_EQ(BV().BackupSelectionFile, QStringLiteral("anterior")); // a cancel keeps the last value
    }
    Form4 form;
    form.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&form));
    // Folders only: the loose file is not in this tree.
    form.tree()->Expand("|C:\\Documentos\\");
    EXPECT_EQ(form.tree()->treeModel()->childKeys("|C:\\Documentos\\"), QStringList({ "|C:\\Documentos\\Listas\\" }));
    clickNode(form.tree(), "|C:\\Documentos\\Listas\\");
    EXPECT_EQ(form.Text2()->text(), QStringLiteral("C:\\Documentos\\Listas\\"));
    // An empty name is refused, and the form stays.
    form.Command1_Click();
    EXPECT_EQ(messages.texts, QStringList({ "¡Nombre del archivo vacio!" }));
    EXPECT_TRUE(form.isVisible());
    EXPECT_EQ(BV().BackupSelectionFile, QStringLiteral("anterior"));
    form.Text1()->setText(QStringLiteral("mi \"lista\" *.txt"));
    form.Command1_Click();
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(BV().BackupSelectionFile, QStringLiteral("C:\\Documentos\\Listas\\mi \"lista\" *.txt"));

    // The captions go through the translation table when the form loads.
    G().LanguageIndex = 1;
    Form4 english;
    G().LanguageIndex = 0;
    EXPECT_EQ(english.windowTitle(), QStringLiteral("Save..."));
    EXPECT_EQ(english.Command1()->text(), QStringLiteral("OK"));
    EXPECT_EQ(english.Command2()->text(), QStringLiteral("Cancel"));
    EXPECT_EQ(english.findChild<QLabel*>("Label1")->text(), QStringLiteral("Name:"));
    EXPECT_EQ(english.findChild<QLabel*>("Label2")->text(), QStringLiteral("Folder"));
    EXPECT_EQ(english.tree()->treeModel()->node("|HOST|")->text, QStringLiteral("Host equipment"));
    EXPECT_EQ(english.tree()->treeModel()->node("|C:\\Documentos\\")->text, QStringLiteral("My Documents"));

    // The host root is no folder: the choice is empty.
    Form4 root;
    ASSERT_TRUE(root.tree()->SelectKey("|HOST|"));
    root.Text1()->setText("x.txt");
    root.Command1_Click();
    EXPECT_EQ(BV().BackupSelectionFile, QString());
}

TEST(Pickers, Form5PicksASelectionFile)
{
    TreeDrives drives;
    ASSERT_TRUE(writeFile(drives.host() + "/Documentos/respaldo.lst", "[Add]\r\n[Exclude]\r\n"));
    MessageRecorder messages;
    BV().BackupSelectionFile = QStringLiteral("anterior");
    {
        Form5 form;
        EXPECT_EQ(form.windowTitle(), QStringLiteral("Seleccione un archivo de configuración de respaldos"));
        EXPECT_EQ(execAndCancel(form), int(QDialog::Rejected));
        EXPECT_EQ(BV().BackupSelectionFile, QStringLiteral("anterior"));
    }
    Form5 form;
    form.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&form));
    form.tree()->Expand("|C:\\Documentos\\");
    // Clicking a folder leaves the name alone; clicking a file gives its name.
    clickNode(form.tree(), "|C:\\Documentos\\");
    EXPECT_EQ(form.Text1()->text(), QString());
    form.Command1_Click();
    EXPECT_EQ(messages.texts, QStringList({ "¡Nombre de archivo vacio!" }));
    EXPECT_TRUE(form.isVisible());
    clickNode(form.tree(), "|C:\\Documentos\\respaldo.lst");
    EXPECT_EQ(form.Text1()->text(), QStringLiteral("respaldo.lst"));
    form.Command1_Click();
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(BV().BackupSelectionFile, QStringLiteral("C:\\Documentos\\respaldo.lst"));
}

// Pictures of the pickers and of a tree with open folders, for a look by eye: set
// VMK_SHOTS to a folder.
TEST(Pickers, Pictures)
{
    const QString dir = qEnvironmentVariable("VMK_SHOTS");
    if (dir.isEmpty())
        GTEST_SKIP() << "VMK_SHOTS not set";
    QDir().mkpath(dir);
    TreeDrives drives;
    for (const char* f : { "Documentos/Informe anual.pdf", "Documentos/Presupuesto.ods", "Documentos/Carta.txt",
             "Documentos/Fotos/playa.png", "Documentos/Fotos/montaña.jpg", "Documentos/respaldo.lst",
             "Escritorio/notas.txt", "Escritorio/instalador.exe", "Escritorio/paquete.zip" })
        ASSERT_TRUE(writeFile(drives.host() + "/" + QString::fromUtf8(f), "x"));
    ASSERT_TRUE(QDir().mkpath(drives.host() + "/Documentos/Proyectos/2026"));
    ASSERT_TRUE(QDir().mkpath(drives.host() + "/Documentos/Vacía"));

    Form5 form5;
    form5.show();
    form5.tree()->Expand("|C:\\Documentos\\");
    form5.tree()->Expand("|C:\\Documentos\\Fotos\\");
    form5.tree()->SelectKey("|C:\\Documentos\\respaldo.lst");
    form5.Text1()->setText("respaldo.lst");
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&form5));
    QTest::qWait(50);
    form5.grab();
    QTest::qWait(50);
    form5.grab().save(dir + "/picker-Form5.png");

    Form3 form3(nullptr);
    form3.show();
    form3.tree()->Expand("|C:\\Documentos\\");
    form3.tree()->SelectKey("|C:\\Documentos\\Proyectos\\");
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&form3));
    QTest::qWait(50);
    form3.grab().save(dir + "/picker-Form3.png");

    Form4 form4;
    form4.show();
    form4.tree()->Expand("|C:\\Documentos\\");
    clickNode(form4.tree(), "|C:\\Documentos\\Fotos\\");
    form4.Text1()->setText("seleccion.lst");
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&form4));
    QTest::qWait(50);
    form4.grab().save(dir + "/picker-Form4.png");

    // The file manager's host tree: files and folders, two open folders, two marks.
    SmartTree tree(TreeOptions::frmDataTreeHost());
    tree.resize(360, 460);
    tree.show();
    tree.FillRoots();
    tree.Expand("|C:\\Escritorio\\");
    tree.Expand("|C:\\Documentos\\");
    tree.Expand("|C:\\Documentos\\Fotos\\");
    tree.marks()->mark("|C:\\Documentos\\Carta.txt");
    tree.marks()->mark("|C:\\Documentos\\Presupuesto.ods");
    tree.SelectKey("|C:\\Documentos\\Fotos\\playa.png");
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&tree));
    QTest::qWait(50);
    tree.grab().save(dir + "/tree-host.png");

    SmartTree checks(TreeOptions::BackTree());
    checks.resize(360, 300);
    checks.show();
    checks.FillRoots();
    checks.Expand("|C:\\Documentos\\");
    checks.treeModel()->setChecked("|C:\\Documentos\\Fotos\\", Qt::Checked);
    checks.treeModel()->setChecked("|C:\\Documentos\\Carta.txt", Qt::Checked);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&checks));
    QTest::qWait(50);
    checks.grab().save(dir + "/tree-checks.png");
}
