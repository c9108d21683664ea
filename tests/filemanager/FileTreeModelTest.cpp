#include "filemanager/FileTreeModel.h"
#include "filemanager/TreeKey.h"
#include "foundation/FileServices.h"
#include "foundation/Globals.h"
#include "platform/FileSearch.h"

#include "TestSupport.h"
#include "TreeDrives.h"

#include <QDir>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

using namespace vmk;
using vmk::test::TreeDrives;
using vmk::test::writeFile;

namespace
{

bool hasMark(const FileTreeModel& model, const QString& key)
{
    return model.hasChildren(model.indexOf(key));
}

QStringList texts(const FileTreeModel& model, const QString& key)
{
    QStringList out;
    for (const QString& child : model.childKeys(key))
        out << model.node(child)->text;
    return out;
}

} // namespace

TEST(FileTreeModel, KeyGrammarRootsAndThePathRule)
{
    TreeDrives drives;
    ASSERT_TRUE(writeFile(drives.host() + "/Escritorio/nota.txt", "hola"));
    ASSERT_TRUE(writeFile(drives.device() + "/VMK/Vormak.exe", "x"));

    FileTreeModel model(TreeOptions::frmDataTreeHost());
    model.FillRoots();
    model.FillRoots(); // once only
    ASSERT_EQ(model.rowCount(), 1);
    EXPECT_EQ(model.keyOf(model.index(0, 0)), QStringLiteral("|HOST|"));
    EXPECT_EQ(model.node("|HOST|")->text, QStringLiteral("Equipo huesped"));
    // The desktop, the documents, then each drive in the drive list's order.
    EXPECT_EQ(model.childKeys("|HOST|"), QStringList({ "|C:\\Escritorio\\", "|C:\\Documentos\\", "C:\\", "E:\\" }));
    EXPECT_EQ(texts(model, "|HOST|"),
        QStringList({ "Escritorio", "Mis Documentos", "C: [" + drives.host().toUpper() + "]",
            "E: [" + drives.device().toUpper() + "]" }));
    // Roots with content carry an expand mark; the empty documents folder does not.
    EXPECT_TRUE(hasMark(model, "|C:\\Escritorio\\"));
    EXPECT_FALSE(hasMark(model, "|C:\\Documentos\\"));
    EXPECT_TRUE(hasMark(model, "E:\\"));

    // Below a barred root every key keeps the bar; the path is the key without bars.
    model.FillFolder("|C:\\Escritorio\\");
    const QString file = "|C:\\Escritorio\\nota.txt";
    ASSERT_TRUE(model.NodeExists(file));
    EXPECT_FALSE(TreeKey::isFolder(file));
    EXPECT_EQ(TreeKey::pathOf(file), QStringLiteral("C:\\Escritorio\\nota.txt"));
    EXPECT_TRUE(FileExists(TreeKey::pathOf(file)));
    // The same folder through its drive has its own, bar-free keys.
    model.FillFolder("C:\\");
    ASSERT_TRUE(model.NodeExists("C:\\Escritorio\\"));
    EXPECT_TRUE(TreeKey::isFolder("C:\\Escritorio\\"));
    model.FillFolder("C:\\Escritorio\\");
    EXPECT_TRUE(model.NodeExists("C:\\Escritorio\\nota.txt"));
    EXPECT_EQ(model.index(0, 0, model.indexOf("C:\\Escritorio\\")).data(FileTreeModel::ImageKeyRole).toString(),
        QStringLiteral("|txt"));
    EXPECT_EQ(model.indexOf("C:\\Escritorio\\").data(FileTreeModel::ImageKeyRole).toString(), QStringLiteral("Folder"));
    EXPECT_EQ(model.indexOf("E:\\").data(FileTreeModel::ImageKeyRole).toString(), QStringLiteral("E:\\"));

    // The host root is no path: filling it reads nothing and changes nothing.
    model.FillFolder("|HOST|");
    EXPECT_EQ(model.childKeys("|HOST|").size(), 4);
    EXPECT_FALSE(model.canFetchMore(model.indexOf("|HOST|")));

    // The device tree: its root alone, captioned by the program drive, keys without bars.
    FileTreeModel device(TreeOptions::frmDataTreeDevice());
    device.FillRoots();
    ASSERT_EQ(device.rowCount(), 1);
    EXPECT_EQ(device.keyOf(device.index(0, 0)), QStringLiteral("E:\\"));
    EXPECT_EQ(device.node("E:\\")->text, QStringLiteral("E:"));
    device.fetchMore(device.indexOf("E:\\"));
    EXPECT_EQ(device.childKeys("E:\\"), QStringList({ "E:\\VMK\\" }));

    // The scanner's tree puts the memory node first; captions follow the language.
    G().LanguageIndex = 1;
    FileTreeModel scan(TreeOptions::scanTree(true));
    scan.FillRoots();
    G().LanguageIndex = 0;
    EXPECT_EQ(scan.node("|HOST|")->text, QStringLiteral("Host equipment"));
    EXPECT_EQ(scan.childKeys("|HOST|").first(), QStringLiteral("*Memory*"));
    EXPECT_EQ(scan.node("*Memory*")->text, QStringLiteral("Memory"));
    EXPECT_EQ(scan.node("|C:\\Escritorio\\")->text, QStringLiteral("Desktop"));
    EXPECT_TRUE(scan.flags(scan.indexOf("C:\\")) & Qt::ItemIsUserCheckable);
    FileTreeModel deviceScan(TreeOptions::scanTree(false));
    deviceScan.FillRoots();
    EXPECT_EQ(deviceScan.keyOf(deviceScan.index(0, 0)), QStringLiteral("E:\\"));
}

TEST(FileTreeModel, LazyFillPlaceholdersAndReread)
{
    TreeDrives drives;
    const QString root = drives.device();
    ASSERT_TRUE(QDir().mkpath(root + "/empty"));
    ASSERT_TRUE(writeFile(root + "/onlyfiles/a.txt", "a"));
    ASSERT_TRUE(writeFile(root + "/deep/sub/b.txt", "b"));
    ASSERT_TRUE(writeFile(root + "/top.bin", "t"));

    FileTreeModel model(TreeOptions::frmDataTreeDevice());
    model.FillRoots();
    const QModelIndex rootIndex = model.indexOf("E:\\");
    // Nothing is read before the folder opens.
    EXPECT_EQ(model.rowCount(rootIndex), 0);
    EXPECT_TRUE(model.hasChildren(rootIndex));
    ASSERT_TRUE(model.canFetchMore(rootIndex));
    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    model.fetchMore(rootIndex);
    EXPECT_EQ(inserted.size(), 1);
    EXPECT_EQ(texts(model, "E:\\"), QStringList({ "deep", "empty", "onlyfiles", "top.bin" }));
    EXPECT_FALSE(model.canFetchMore(rootIndex));
    // An empty folder shows no expand mark; a folder with only files shows one.
    EXPECT_FALSE(hasMark(model, "E:\\empty\\"));
    EXPECT_TRUE(hasMark(model, "E:\\onlyfiles\\"));
    EXPECT_TRUE(hasMark(model, "E:\\deep\\"));
    EXPECT_FALSE(model.hasChildren(model.indexOf("E:\\top.bin")));
    // Only the opened folder was read: nothing below "deep" exists yet.
    EXPECT_FALSE(model.NodeExists("E:\\deep\\sub\\"));

    // Opening twice does not duplicate; each opening reads the disk again.
    model.FillFolder("E:\\deep\\");
    model.FillFolder("E:\\deep\\");
    EXPECT_EQ(model.childKeys("E:\\deep\\"), QStringList({ "E:\\deep\\sub\\" }));
    ASSERT_TRUE(writeFile(root + "/deep/later.txt", "l"));
    model.MarkForReread("E:\\deep\\"); // a collapse keeps the children until the next opening
    EXPECT_TRUE(model.NodeExists("E:\\deep\\sub\\"));
    ASSERT_TRUE(model.canFetchMore(model.indexOf("E:\\deep\\")));
    model.fetchMore(model.indexOf("E:\\deep\\"));
    EXPECT_EQ(model.childKeys("E:\\deep\\"), QStringList({ "E:\\deep\\later.txt", "E:\\deep\\sub\\" }));

    // A folder gone from the disk opens empty, with its expand mark gone; no message.
    ASSERT_TRUE(QDir(root + "/deep").removeRecursively());
    model.FillFolder("E:\\deep\\");
    EXPECT_EQ(model.rowCount(model.indexOf("E:\\deep\\")), 0);
    EXPECT_FALSE(hasMark(model, "E:\\deep\\"));
    EXPECT_FALSE(model.NodeExists("E:\\deep\\sub\\"));

    // ClearChildren and RemoveNodeTree ignore missing keys and keep the key index right.
    model.ClearChildren("E:\\nothing\\");
    model.RemoveNodeTree("E:\\nothing\\");
    model.RemoveNodeTree("E:\\empty\\");
    EXPECT_FALSE(model.NodeExists("E:\\empty\\"));
    EXPECT_EQ(texts(model, "E:\\"), QStringList({ "deep", "onlyfiles", "top.bin" }));
    EXPECT_EQ(model.indexOf("E:\\top.bin").row(), 2);
    EXPECT_EQ(model.keyOf(model.index(2, 0, rootIndex)), QStringLiteral("E:\\top.bin"));
}

TEST(FileTreeModel, JunctionFilterFoldersOnlyAndExpandTests)
{
    TreeDrives drives;
    const QString root = drives.device();
    ASSERT_TRUE(writeFile(root + "/real/inside.txt", "i"));
    ASSERT_TRUE(writeFile(root + "/onlyfiles/a.txt", "a"));
    ASSERT_TRUE(QDir().mkpath(root + "/withsub/child"));
    ASSERT_TRUE(QDir().mkpath(root + "/system2412"));
    ASSERT_EQ(::symlink((root + "/real").toUtf8().constData(), (root + "/dirlink").toUtf8().constData()), 0);
    ASSERT_EQ(::symlink("/proc", (root + "/proclink").toUtf8().constData()), 0);
    ASSERT_TRUE(writeFile(root + "/file.txt", "f"));
    // A hidden+system folder word that is not exactly the junction's stays listed.
    FileSearch::setAttributeHook([](const QString& path, quint32 computed) -> std::optional<quint32> {
        if (path.endsWith(QLatin1String("/system2412")))
            return 0x2412;
        return computed;
    });
    // A real kernel filesystem mounted inside the device, when this host allows it.
    ASSERT_TRUE(QDir().mkpath(root + "/kernel"));
    const QByteArray kernel = (root + "/kernel").toUtf8();
    const bool mounted = ::mount("proc", kernel.constData(), "proc", MS_NOSUID | MS_NODEV | MS_NOEXEC, nullptr) == 0;

    auto listed = [&](const TreeOptions& options) {
        FileTreeModel model(options);
        model.FillRoots();
        model.FillFolder("E:\\");
        return texts(model, "E:\\");
    };
    const QStringList filtered = listed(TreeOptions::frmDataTreeDevice());
    const QStringList form6 = listed(TreeOptions::Form6());
    FileTreeModel form3(TreeOptions::Form3());
    form3.FillRoots();
    form3.FillFolder("C:\\");
    FileTreeModel form4(TreeOptions::Form4());
    form4.FillRoots();
    if (mounted)
        ::umount2(kernel.constData(), MNT_DETACH);
    FileSearch::setAttributeHook({});

    // Directory links and kernel mounts carry 0x2416 and are left out, never descended.
    EXPECT_FALSE(filtered.contains("dirlink"));
    EXPECT_FALSE(filtered.contains("proclink"));
    if (mounted) {
        EXPECT_FALSE(filtered.contains("kernel"));
    }
    EXPECT_TRUE(filtered.contains("system2412"));
    EXPECT_TRUE(filtered.contains("real"));
    EXPECT_TRUE(filtered.contains("file.txt"));
    // The pickers have no such filter, and list folders only.
    EXPECT_TRUE(form6.contains("dirlink"));
    EXPECT_TRUE(form6.contains("proclink"));
    EXPECT_FALSE(form6.contains("file.txt"));
    EXPECT_TRUE(form6.contains("onlyfiles"));

    // Form3 tests subfolders at both levels: the desktop root holds none.
    ASSERT_TRUE(writeFile(drives.host() + "/Escritorio/only.txt", "o"));
    FileTreeModel form3b(TreeOptions::Form3());
    form3b.FillRoots();
    EXPECT_FALSE(hasMark(form3b, "|C:\\Escritorio\\"));
    EXPECT_TRUE(hasMark(form3b, "E:\\"));
    // Form4: roots by entries, children by subfolders.
    FileTreeModel form4b(TreeOptions::Form4());
    form4b.FillRoots();
    EXPECT_TRUE(hasMark(form4b, "|C:\\Escritorio\\"));
    form4b.FillFolder("E:\\");
    EXPECT_FALSE(hasMark(form4b, "E:\\onlyfiles\\"));
    EXPECT_TRUE(hasMark(form4b, "E:\\withsub\\"));
    // Form6 children likewise; a folder with only files shows none.
    FileTreeModel form6b(TreeOptions::Form6());
    form6b.FillRoots();
    form6b.FillFolder("E:\\");
    EXPECT_FALSE(hasMark(form6b, "E:\\onlyfiles\\"));
    EXPECT_TRUE(hasMark(form6b, "E:\\withsub\\"));
    // With files listed, the same folder has its mark.
    FileTreeModel form5(TreeOptions::Form5());
    form5.FillRoots();
    form5.FillFolder("E:\\");
    EXPECT_TRUE(hasMark(form5, "E:\\onlyfiles\\"));
    EXPECT_TRUE(texts(form5, "E:\\").contains("file.txt"));
}

TEST(FileTreeModel, SizeText)
{
    TreeDrives drives;
    const QString root = drives.device();
    ASSERT_TRUE(writeFile(root + "/zero", ""));
    ASSERT_TRUE(writeFile(root + "/k1024", QByteArray(1024, 'x')));
    ASSERT_TRUE(writeFile(root + "/k1025", QByteArray(1025, 'x')));
    ASSERT_TRUE(writeFile(root + "/k5000", QByteArray(5000, 'x')));
    ASSERT_TRUE(QDir().mkpath(root + "/folder"));
    EXPECT_EQ(TreeKey::SizeText("E:\\zero"), QStringLiteral("0 Bytes"));
    EXPECT_EQ(TreeKey::SizeText("E:\\k1024"), QStringLiteral("1024 Bytes"));
    EXPECT_EQ(TreeKey::SizeText("E:\\k1025"), QStringLiteral("1KB, 1025 Bytes"));
    EXPECT_EQ(TreeKey::SizeText("E:\\k5000"), QStringLiteral("4KB, 5000 Bytes"));
    EXPECT_EQ(TreeKey::SizeText("|E:\\k5000"), QStringLiteral("4KB, 5000 Bytes")); // bars stripped
    EXPECT_EQ(TreeKey::SizeText("E:\\missing"), QStringLiteral("-----"));
    EXPECT_EQ(TreeKey::SizeText("E:\\folder\\"), QStringLiteral("-----"));
    EXPECT_EQ(TreeKey::SizeText("|HOST|"), QStringLiteral("-----"));
}

TEST(FileTreeModel, HostileNamesAndCaseOnlyNames)
{
    TreeDrives drives;
    const QString root = drives.device();
    const QStringList names = { "a*b.txt", "say \"hi\".txt", "back\\slash.txt", "bar|name", "line\nbreak.txt",
        "readme.txt", "README.txt", "Dir", "dir" };
    for (const QString& n : names) {
        if (n == "Dir" || n == "dir")
            ASSERT_TRUE(writeFile(root + "/" + n + "/in.txt", n.toUtf8()));
        else
            ASSERT_TRUE(writeFile(root + "/" + n, n.toUtf8()));
    }
    FileTreeModel model(TreeOptions::frmDataTreeDevice());
    model.FillRoots();
    model.FillFolder("E:\\");
    const QStringList keys = model.childKeys("E:\\");
    EXPECT_EQ(keys.size(), names.size());
    // Names are literals: "*" and '"' pass as they are; case-only names are two nodes.
    for (const char* n : { "E:\\a*b.txt", "E:\\say \"hi\".txt", "E:\\readme.txt", "E:\\README.txt",
             "E:\\line\nbreak.txt", "E:\\Dir\\", "E:\\dir\\" })
        EXPECT_TRUE(model.NodeExists(QString::fromUtf8(n))) << n;
    // "\" and "|" in a native name take their private form, so the key grammar holds.
    for (const QString& key : keys) {
        EXPECT_EQ(key.count(u'\\'), TreeKey::isFolder(key) ? 2 : 1) << key.toStdString();
        EXPECT_FALSE(key.contains(u'|')) << key.toStdString();
        // Every key leads back to its own file.
        EXPECT_TRUE(FileExists(TreeKey::pathOf(key))) << key.toStdString();
    }
    model.FillFolder("E:\\Dir\\");
    model.FillFolder("E:\\dir\\");
    ASSERT_TRUE(model.NodeExists("E:\\Dir\\in.txt"));
    ASSERT_TRUE(model.NodeExists("E:\\dir\\in.txt"));
    EXPECT_EQ(vmk::test::readFile(DriveMap::instance().toNative("E:\\dir\\in.txt")), QByteArray("dir"));
    EXPECT_EQ(vmk::test::readFile(DriveMap::instance().toNative("E:\\Dir\\in.txt")), QByteArray("Dir"));
    EXPECT_EQ(model.node("E:\\readme.txt")->text, QStringLiteral("readme.txt"));
    EXPECT_EQ(model.node("E:\\README.txt")->text, QStringLiteral("README.txt"));
}

TEST(FileTreeModel, ChildTicksFollowTheFormsRule)
{
    TreeDrives drives;
    const QString root = drives.device();
    ASSERT_TRUE(writeFile(root + "/a.txt", "a"));
    ASSERT_TRUE(writeFile(root + "/b.txt", "b"));
    FileTreeModel model(TreeOptions::BackTree());
    model.FillRoots();
    QStringList asked;
    model.setChildCheckRule([&](const QString& key, Qt::CheckState parent) {
        asked << key;
        return parent == Qt::Checked && key != "E:\\b.txt" ? Qt::Checked : Qt::Unchecked;
    });
    model.setChecked("E:\\", Qt::Checked);
    model.FillFolder("E:\\");
    EXPECT_EQ(asked, QStringList({ "E:\\a.txt", "E:\\b.txt" }));
    EXPECT_EQ(model.checked("E:\\a.txt"), Qt::Checked);
    EXPECT_EQ(model.checked("E:\\b.txt"), Qt::Unchecked);
    // A tick set from code fires nothing; a user's tick fires NodeCheck with the key.
    QSignalSpy checks(&model, &FileTreeModel::NodeCheck);
    model.setChecked("E:\\b.txt", Qt::Checked);
    EXPECT_EQ(checks.size(), 0);
    model.setData(model.indexOf("E:\\a.txt"), Qt::Unchecked, Qt::CheckStateRole);
    ASSERT_EQ(checks.size(), 1);
    EXPECT_EQ(checks[0][0].toString(), QStringLiteral("E:\\a.txt"));
    EXPECT_FALSE(checks[0][1].toBool());
    // Trees without check boxes have none.
    FileTreeModel plain(TreeOptions::Form5());
    plain.FillRoots();
    EXPECT_FALSE(plain.flags(plain.indexOf("|HOST|")) & Qt::ItemIsUserCheckable);
    EXPECT_FALSE(plain.indexOf("|HOST|").data(Qt::CheckStateRole).isValid());
}
