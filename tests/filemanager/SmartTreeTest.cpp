#include "filemanager/ui/SmartTree.h"
#include "filemanager/FileTreeModel.h"
#include "filemanager/SelectionMarks.h"
#include "filemanager/ui/TreeIcons.h"

#include "TestSupport.h"
#include "TreeDrives.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

using namespace vmk;
using vmk::test::TreeDrives;
using vmk::test::writeFile;

namespace
{

void click(SmartTree& tree, const QString& key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    const QModelIndex index = tree.treeModel()->indexOf(key);
    ASSERT_TRUE(index.isValid()) << key.toStdString();
    tree.scrollTo(index);
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, modifiers, tree.visualRect(index).center());
}

} // namespace

TEST(SmartTree, ShiftAndCtrlMarks)
{
    TreeDrives drives;
    for (const char* n : { "a.txt", "b.txt", "c.txt", "d.txt" })
        ASSERT_TRUE(writeFile(drives.device() + "/" + n, n));
    ASSERT_TRUE(writeFile(drives.device() + "/sub/in.txt", "i"));
    SmartTree tree(TreeOptions::frmDataTreeDevice());
    tree.resize(300, 400);
    tree.show();
    tree.FillRoots();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&tree));
    ASSERT_TRUE(tree.IsExpanded("E:\\"));
    SelectionMarks& marks = *tree.marks();
    FileTreeModel& model = *tree.treeModel();

    // A plain click selects; nothing is marked.
    click(tree, "E:\\a.txt");
    EXPECT_EQ(tree.SelectedKey(), QStringLiteral("E:\\a.txt"));
    EXPECT_TRUE(marks.keys().isEmpty());
    // Ctrl going down marks the selected node; Ctrl-clicks toggle others.
    QTest::keyPress(&tree, Qt::Key_Control);
    EXPECT_EQ(marks.keys(), QStringList({ "E:\\a.txt" }));
    EXPECT_TRUE(model.isMarked("E:\\a.txt"));
    EXPECT_TRUE(model.indexOf("E:\\a.txt").data(FileTreeModel::MarkedRole).toBool());
    click(tree, "E:\\c.txt", Qt::ControlModifier);
    EXPECT_EQ(marks.keys(), QStringList({ "E:\\a.txt", "E:\\c.txt" }));
    click(tree, "E:\\a.txt", Qt::ControlModifier);
    EXPECT_EQ(marks.keys(), QStringList({ "E:\\c.txt" }));
    EXPECT_FALSE(model.isMarked("E:\\a.txt"));
    // Marking an open folder collapses it.
    tree.Expand("E:\\sub\\");
    ASSERT_TRUE(tree.IsExpanded("E:\\sub\\"));
    click(tree, "E:\\sub\\", Qt::ControlModifier);
    EXPECT_TRUE(marks.isListed("E:\\sub\\"));
    EXPECT_FALSE(tree.IsExpanded("E:\\sub\\"));
    QTest::keyRelease(&tree, Qt::Key_Control);
    EXPECT_FALSE(marks.ctrlHeld());

    // A press on a marked node keeps the set (a drag may start); on another one, clears it.
    click(tree, "E:\\c.txt");
    EXPECT_EQ(marks.keys(), QStringList({ "E:\\c.txt", "E:\\sub\\" }));
    EXPECT_EQ(tree.DragSourceKey(), QStringLiteral("E:\\c.txt"));
    click(tree, "E:\\b.txt");
    EXPECT_TRUE(marks.keys().isEmpty());
    EXPECT_FALSE(model.isMarked("E:\\c.txt"));

    // Ctrl marks the selected node and Ctrl-clicks add to the set.
    QTest::keyPress(&tree, Qt::Key_Control);
    click(tree, "E:\\c.txt", Qt::ControlModifier);
    QTest::keyRelease(&tree, Qt::Key_Control);
    EXPECT_EQ(marks.keys(), QStringList({ "E:\\b.txt", "E:\\c.txt" }));
    // Shift: a Shift-click on a marked node (kept by the press) drops the node
    // Shift-clicked before it, when that one is still marked.
    QTest::keyPress(&tree, Qt::Key_Shift);
    EXPECT_EQ(marks.keys().size(), 2); // the selected node was marked already
    click(tree, "E:\\b.txt", Qt::ShiftModifier);
    EXPECT_EQ(marks.keys(), QStringList({ "E:\\b.txt", "E:\\c.txt" }));
    EXPECT_EQ(marks.lastToggledKey(), QStringLiteral("E:\\b.txt"));
    click(tree, "E:\\c.txt", Qt::ShiftModifier);
    EXPECT_EQ(marks.keys(), QStringList({ "E:\\c.txt" }));
    // On a node not marked, the press clears the set and the click marks that node.
    click(tree, "E:\\d.txt", Qt::ShiftModifier);
    EXPECT_EQ(marks.keys(), QStringList({ "E:\\d.txt" }));
    EXPECT_FALSE(model.isMarked("E:\\c.txt"));
    EXPECT_TRUE(model.isMarked("E:\\d.txt"));
    QTest::keyRelease(&tree, Qt::Key_Shift);
    EXPECT_FALSE(marks.shiftHeld());

    // A press on blank space hits no node; the click after it changes nothing.
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(150, 390));
    EXPECT_TRUE(marks.blankClick());
    EXPECT_EQ(marks.keys(), QStringList({ "E:\\d.txt" }));
    // Losing the focus forgets held keys.
    marks.KeyDown(17, QString());
    EXPECT_TRUE(marks.ctrlHeld());
    marks.LostFocus();
    EXPECT_FALSE(marks.ctrlHeld());
}

TEST(SmartTree, FolderOfHundredThousandFilesExpandsInOneInsert)
{
    TreeDrives drives(QStringLiteral("/dev/shm"));
    const QString big = drives.device() + "/big";
    ASSERT_TRUE(QDir().mkpath(big));
    constexpr int kFiles = 100000;
    for (int i = 0; i < kFiles; ++i) {
        const QByteArray name = QFile::encodeName(big + QStringLiteral("/f%1.dat").arg(i, 6, 10, QLatin1Char('0')));
        const int fd = ::open(name.constData(), O_CREAT | O_WRONLY, 0644);
        ASSERT_GE(fd, 0);
        ::close(fd);
    }
    SmartTree tree(TreeOptions::frmDataTreeDevice());
    tree.resize(300, 400);
    tree.show();
    tree.FillRoots();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&tree));
    QSignalSpy inserted(tree.treeModel(), &QAbstractItemModel::rowsInserted);
    TreeIcons::instance().clear();
    tree.Expand("E:\\big\\");
    EXPECT_EQ(inserted.size(), 1);
    const QModelIndex folder = tree.treeModel()->indexOf("E:\\big\\");
    EXPECT_EQ(tree.treeModel()->rowCount(folder), kFiles);
    EXPECT_EQ(inserted[0][1].toInt(), 0);
    EXPECT_EQ(inserted[0][2].toInt(), kFiles - 1);
    EXPECT_TRUE(tree.treeModel()->NodeExists("E:\\big\\f099999.dat"));
    // Painting the visible rows asks the icon provider once for the type, not per file.
    tree.viewport()->repaint();
    EXPECT_TRUE(TreeIcons::instance().ImageKeyExists("|dat"));
    const int lookups = TreeIcons::instance().lookups();
    EXPECT_LE(lookups, 3); // the device root, the folder picture, the ".dat" type
    tree.scrollTo(tree.treeModel()->indexOf("E:\\big\\f050000.dat"));
    tree.viewport()->repaint();
    EXPECT_EQ(TreeIcons::instance().lookups(), lookups);
    // Collapsing keeps the rows; opening again reads the folder again, still in one insert.
    tree.Collapse("E:\\big\\");
    EXPECT_EQ(tree.treeModel()->rowCount(folder), kFiles);
    inserted.clear();
    tree.Expand("E:\\big\\");
    EXPECT_EQ(inserted.size(), 1);
    EXPECT_EQ(tree.treeModel()->rowCount(tree.treeModel()->indexOf("E:\\big\\")), kFiles);
}

TEST(SmartTree, ChecksReachTheFormAndTheHostRootOpensAtStart)
{
    TreeDrives drives;
    ASSERT_TRUE(writeFile(drives.device() + "/a.txt", "a"));
    SmartTree tree(TreeOptions::BackTree());
    tree.resize(300, 400);
    tree.show();
    tree.FillRoots();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&tree));
    EXPECT_TRUE(tree.IsExpanded("|HOST|"));
    QSignalSpy checks(&tree, &SmartTree::NodeCheck);
    tree.Expand("E:\\");
    const QModelIndex index = tree.treeModel()->indexOf("E:\\a.txt");
    ASSERT_TRUE(index.isValid());
    // A click on the check box ticks the node and tells the form.
    const QRect row = tree.visualRect(index);
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(row.left() + 8, row.center().y()));
    ASSERT_EQ(checks.size(), 1);
    EXPECT_EQ(checks[0][0].toString(), QStringLiteral("E:\\a.txt"));
    EXPECT_TRUE(checks[0][1].toBool());
    EXPECT_EQ(tree.treeModel()->checked("E:\\a.txt"), Qt::Checked);
    // No marks in this tree.
    EXPECT_EQ(tree.marks(), nullptr);
}

TEST(SmartTree, ReexpandReadsAnOpenFolderAgainWithNewTicks)
{
    TreeDrives drives;
    ASSERT_TRUE(writeFile(drives.device() + "/docs/a.txt", "a"));
    SmartTree tree(TreeOptions::scanTree(false));
    tree.resize(300, 400);
    tree.show();
    tree.FillRoots();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&tree));
    FileTreeModel& model = *tree.treeModel();
    model.setChildCheckRule([](const QString&, Qt::CheckState parent) { return parent; });
    tree.Expand("E:\\docs\\");
    ASSERT_TRUE(model.NodeExists("E:\\docs\\a.txt"));
    EXPECT_EQ(model.checked("E:\\docs\\a.txt"), Qt::Unchecked);
    // Reopened from inside the tick's own event, as the target tree does.
    ASSERT_TRUE(writeFile(drives.device() + "/docs/b.txt", "b"));
    QObject::connect(&model, &FileTreeModel::NodeCheck, &tree, [&tree](const QString& key) { tree.Reexpand(key); });
    ASSERT_TRUE(model.setData(model.indexOf("E:\\docs\\"), Qt::Checked, Qt::CheckStateRole));
    EXPECT_TRUE(tree.IsExpanded("E:\\docs\\"));
    QStringList children = model.childKeys("E:\\docs\\");
    children.sort();
    EXPECT_EQ(children, QStringList({ "E:\\docs\\a.txt", "E:\\docs\\b.txt" }));
    EXPECT_EQ(model.checked("E:\\docs\\a.txt"), Qt::Checked);
    EXPECT_EQ(model.checked("E:\\docs\\b.txt"), Qt::Checked);
}
