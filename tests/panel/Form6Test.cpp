#include "DeviceFixture.h"

#include "filemanager/FileTreeModel.h"
#include "filemanager/ui/SmartTree.h"
#include "foundation/Globals.h"
#include "foundation/Settings.h"
#include "panel/ui/Form6.h"

#include "TestSupport.h"

#include <QPushButton>
#include <QTest>
#include <QTimer>

using namespace vmk;

using Form6Test = vmk::test::DeviceFixture;

TEST_F(Form6Test, PicksAFolderOfTheProgramDrive)
{
    vmk::test::MessageRecorder messages;
    put("E:\\suelto.txt", "x");
    // Opening the picker clears the last choice; a cancel leaves it empty.
    G().PickedFolder = QStringLiteral("\\anterior\\");
    {
        Form6 form;
        EXPECT_EQ(G().PickedFolder, QString());
        G().PickedFolder = QStringLiteral("\\anterior\\");
        QTimer::singleShot(0, &form, [&form] { QTest::mouseClick(form.Command2(), Qt::LeftButton); });
        EXPECT_EQ(form.exec(), int(QDialog::Rejected));
    }
    Form6 form;
    EXPECT_EQ(G().PickedFolder, QString());
    EXPECT_EQ(S().OtherLocation, QString());
    form.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&form));
    // The program drive alone, open, folders only.
    SmartTree* tree = form.tree();
    EXPECT_EQ(tree->treeModel()->rowCount(), 1);
    EXPECT_TRUE(tree->IsExpanded("E:\\"));
    EXPECT_TRUE(tree->treeModel()->NodeExists("E:\\Mis Documentos\\"));
    EXPECT_FALSE(tree->treeModel()->NodeExists("E:\\suelto.txt"));
    // The drive itself is refused and the form stays.
    ASSERT_TRUE(tree->SelectKey("E:\\"));
    form.Command1_Click();
    EXPECT_EQ(messages.texts, QStringList({ "¡No se puede seleccionar la unidad, seleccione una carpeta!" }));
    EXPECT_TRUE(form.isVisible());
    // A folder comes back from the drive root, in PickedFolder and #OtherLocation alike.
    tree->Expand("E:\\Mis Documentos\\");
    ASSERT_TRUE(tree->SelectKey("E:\\Mis Documentos\\Cuarentena\\"));
    form.Command1_Click();
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(G().PickedFolder, QStringLiteral("\\Mis Documentos\\Cuarentena\\"));
    EXPECT_EQ(S().OtherLocation, QStringLiteral("\\Mis Documentos\\Cuarentena\\"));
}

// A picture of the picker for a look by eye: set VMK_SHOTS to a folder.
TEST_F(Form6Test, Picture)
{
    const QString dir = qEnvironmentVariable("VMK_SHOTS");
    if (dir.isEmpty())
        GTEST_SKIP() << "VMK_SHOTS not set";
    Form6 form;
    form.show();
    form.tree()->Expand("E:\\Mis Documentos\\");
    form.tree()->SelectKey("E:\\Mis Documentos\\Respaldos\\");
    form.grab().save(dir + "/picker-Form6.png");
}
