#include "scanner/ui/scanTree.h"

#include "filemanager/FileTreeModel.h"
#include "filemanager/ui/SmartTree.h"
#include "foundation/Globals.h"

#include "TestSupport.h"
#include "TreeDrives.h"

#include <QTimer>

#include <gtest/gtest.h>

using namespace vmk;
using vmk::test::MessageRecorder;
using vmk::test::TreeDrives;
using vmk::test::writeFile;

namespace
{
const QString kRefusedBelowException
    = QStringLiteral("No es posible seleccionar este nodo, hay una excepción existente!");
const QString kAlreadyIncluded = QStringLiteral("¡La carpeta ya ha sido incluida!");

// A user's tick on the check box (the view sets the check state through the model).
void tick(scanTree& form, const QString& key, bool checked)
{
    FileTreeModel& model = *form.SmartDataTree()->treeModel();
    const QModelIndex index = model.indexOf(key);
    ASSERT_TRUE(index.isValid()) << key.toStdString();
    form.SmartDataTree()->SelectKey(key);
    ASSERT_TRUE(model.setData(index, checked ? Qt::Checked : Qt::Unchecked, Qt::CheckStateRole));
}

bool ticked(scanTree& form, const QString& key)
{
    return form.SmartDataTree()->treeModel()->checked(key) == Qt::Checked;
}

class ScanHostFlag
{
public:
    explicit ScanHostFlag(bool value)
        : m_old(G().ScanHost)
    {
        G().ScanHost = value;
    }
    ~ScanHostFlag() { G().ScanHost = m_old; }

private:
    bool m_old;
};
} // namespace

TEST(TargetTree, DeviceTreeTicksKeepTheListsAndRefuseBelowAnException)
{
    TreeDrives drives;
    ASSERT_TRUE(writeFile(drives.device() + "/docs/sub/a.txt", "a"));
    ASSERT_TRUE(writeFile(drives.device() + "/docs/b.txt", "b"));
    ASSERT_TRUE(writeFile(drives.device() + "/other/c.txt", "c"));
    ScanHostFlag device(false);
    MessageRecorder messages;
    scanTree form;
    form.Form_Load();
    form.show();
    SmartTree& tree = *form.SmartDataTree();
    const TargetSelection& s = form.selection();
    EXPECT_EQ(tree.treeModel()->rowCount(), 1);
    ASSERT_TRUE(tree.IsExpanded("E:\\"));
    EXPECT_FALSE(tree.treeModel()->NodeExists("|HOST|"));
    tree.Expand("E:\\docs\\");

    // Ticking a subfolder, then its parent: the parent alone stays, and the open
    // parent is read again so that the subfolder shows its tick.
    tick(form, "E:\\docs\\sub\\", true);
    EXPECT_EQ(s.ListAdd(), QStringList({ "E:\\docs\\sub\\" }));
    tick(form, "E:\\docs\\", true);
    EXPECT_EQ(s.ListAdd(), QStringList({ "E:\\docs\\" }));
    EXPECT_TRUE(ticked(form, "E:\\docs\\sub\\"));
    EXPECT_TRUE(ticked(form, "E:\\docs\\b.txt"));
    // Ticking below a ticked folder adds nothing.
    tick(form, "E:\\docs\\b.txt", true);
    EXPECT_EQ(s.ListAdd(), QStringList({ "E:\\docs\\" }));

    // Unticking below a ticked folder records an exception; ticking again takes it out.
    tick(form, "E:\\docs\\sub\\", false);
    EXPECT_EQ(s.ListExc(), QStringList({ "E:\\docs\\sub\\" }));
    EXPECT_EQ(s.ListAdd(), QStringList({ "E:\\docs\\" }));
    tick(form, "E:\\docs\\sub\\", true);
    EXPECT_TRUE(s.ListExc().isEmpty());
    EXPECT_EQ(s.ListAdd(), QStringList({ "E:\\docs\\" }));
    tick(form, "E:\\docs\\sub\\", false);
    EXPECT_EQ(s.ListExc(), QStringList({ "E:\\docs\\sub\\" }));

    // A file below the exception: the message, and the tick goes once the event is over.
    tree.Expand("E:\\docs\\sub\\");
    EXPECT_FALSE(ticked(form, "E:\\docs\\sub\\a.txt")); // it took its folder's (excepted) tick
    tick(form, "E:\\docs\\sub\\a.txt", true);
    EXPECT_EQ(messages.texts, QStringList({ kRefusedBelowException }));
    EXPECT_EQ(s.PendingUncheckKey(), QStringLiteral("E:\\docs\\sub\\a.txt"));
    EXPECT_TRUE(form.Timer()->isActive());
    EXPECT_TRUE(ticked(form, "E:\\docs\\sub\\a.txt")); // not inside its own event
    form.Timer_Timer();
    EXPECT_FALSE(form.Timer()->isActive());
    EXPECT_TRUE(s.PendingUncheckKey().isEmpty());
    EXPECT_FALSE(ticked(form, "E:\\docs\\sub\\a.txt"));
    EXPECT_EQ(s.ListAdd(), QStringList({ "E:\\docs\\" }));
    EXPECT_EQ(s.ListExc(), QStringList({ "E:\\docs\\sub\\" }));
    // Unticking below an exception changes nothing.
    tick(form, "E:\\docs\\sub\\a.txt", false);
    EXPECT_EQ(s.ListExc(), QStringList({ "E:\\docs\\sub\\" }));

    // An untick that no ticked folder covers is an exception too.
    tick(form, "E:\\other\\", false);
    EXPECT_EQ(s.ListExc(), QStringList({ "E:\\docs\\sub\\", "E:\\other\\" }));
    tick(form, "E:\\other\\", true);
    EXPECT_EQ(s.ListExc(), QStringList({ "E:\\docs\\sub\\" }));
    EXPECT_EQ(s.ListAdd(), QStringList({ "E:\\docs\\", "E:\\other\\" }));

    // The device root swallows every target; unticked it takes the exceptions with it.
    tick(form, "E:\\", true);
    EXPECT_EQ(s.ListAdd(), QStringList({ "E:\\" }));
    EXPECT_TRUE(ticked(form, "E:\\docs\\"));
    EXPECT_TRUE(ticked(form, "E:\\other\\"));
    tick(form, "E:\\", false);
    EXPECT_TRUE(s.ListAdd().isEmpty());
    EXPECT_TRUE(s.ListExc().isEmpty());
    EXPECT_FALSE(ticked(form, "E:\\docs\\"));
    tick(form, "E:\\", false);
    EXPECT_EQ(s.ListExc(), QStringList({ "E:\\" }));
    EXPECT_EQ(messages.texts.size(), 1);

    // A new load starts from empty lists.
    form.Form_Load();
    EXPECT_TRUE(form.selection().ListAdd().isEmpty());
    EXPECT_TRUE(form.selection().ListExc().isEmpty());
}

TEST(TargetTree, HostTreeRootMemoryAndSpecialFolders)
{
    TreeDrives drives;
    ASSERT_TRUE(writeFile(drives.host() + "/Escritorio/d.txt", "d"));
    ASSERT_TRUE(writeFile(drives.device() + "/e.txt", "e"));
    ScanHostFlag host(true);
    MessageRecorder messages;
    scanTree form;
    form.Form_Load();
    form.show();
    SmartTree& tree = *form.SmartDataTree();
    const TargetSelection& s = form.selection();
    const QString desktop = QStringLiteral("|") + "C:\\Escritorio\\";
    const QString documents = QStringLiteral("|") + "C:\\Documentos\\";
    ASSERT_EQ(tree.treeModel()->childKeys("|HOST|"), QStringList({ "*Memory*", desktop, documents, "C:\\", "E:\\" }));

    // The memory node by the rule of any other node.
    tick(form, "*Memory*", true);
    EXPECT_EQ(s.ListAdd(), QStringList({ "*Memory*" }));
    // The desktop's key keeps it apart from C:\Escritorio\; its path has no bar.
    tick(form, desktop, true);
    EXPECT_EQ(s.ListAdd(), QStringList({ "*Memory*", "C:\\Escritorio\\" }));

    // The host root: both lists emptied, the special folders unticked, every drive ticked.
    tree.Expand(desktop);
    tick(form, "|HOST|", true);
    EXPECT_EQ(s.ListAdd(), QStringList({ "C:\\", "E:\\" }));
    EXPECT_TRUE(s.ListExc().isEmpty());
    EXPECT_FALSE(ticked(form, desktop));
    EXPECT_FALSE(tree.IsExpanded(desktop));
    EXPECT_TRUE(ticked(form, "C:\\"));
    EXPECT_TRUE(ticked(form, "E:\\"));
    EXPECT_FALSE(s.IsInAdd("*Memory*"));

    // With the host root ticked, the desktop is refused and unticked a moment later.
    tick(form, documents, true);
    EXPECT_EQ(messages.texts, QStringList({ kAlreadyIncluded }));
    EXPECT_EQ(s.PendingUncheckKey(), documents);
    EXPECT_TRUE(form.Timer()->isActive());
    form.Timer_Timer();
    EXPECT_FALSE(ticked(form, documents));
    EXPECT_EQ(s.ListAdd(), QStringList({ "C:\\", "E:\\" }));

    // A drive's file takes the drive's tick; unticking it is an exception.
    tree.Expand("E:\\");
    EXPECT_TRUE(ticked(form, "E:\\e.txt"));
    tick(form, "E:\\e.txt", false);
    EXPECT_EQ(s.ListExc(), QStringList({ "E:\\e.txt" }));

    // Unticking the host root: a drive that was a target leaves ListAdd (with the
    // exceptions below it), one that was not becomes an exception.
    tick(form, "C:\\", false);
    EXPECT_EQ(s.ListAdd(), QStringList({ "E:\\" }));
    tick(form, "|HOST|", false);
    EXPECT_FALSE(ticked(form, "E:\\"));
    EXPECT_FALSE(tree.IsExpanded("E:\\"));
    EXPECT_TRUE(s.ListAdd().isEmpty());
    EXPECT_EQ(s.ListExc(), QStringList({ "C:\\" }));
    // Host root unticked: the desktop may be ticked again.
    tick(form, desktop, true);
    EXPECT_EQ(s.ListAdd(), QStringList({ "C:\\Escritorio\\" }));
    EXPECT_EQ(messages.texts.size(), 1);
}
