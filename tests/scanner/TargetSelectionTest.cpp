#include "scanner/TargetSelection.h"

#include <gtest/gtest.h>

using namespace vmk;

namespace
{
// A flat tree: every key hangs below "E:\" and nothing is expanded.
TargetSelection::TreeHooks flatTree()
{
    TargetSelection::TreeHooks hooks;
    hooks.isChecked = [](const QString&) { return false; };
    hooks.setChecked = [](const QString&, bool) {};
    hooks.parentKey
        = [](const QString& key) { return key == QStringLiteral("E:\\") ? QString() : QStringLiteral("E:\\"); };
    hooks.isExpanded = [](const QString&) { return false; };
    hooks.collapse = [](const QString&) {};
    hooks.reexpand = [](const QString&) {};
    hooks.selectedKey = [] { return QString(); };
    hooks.driveKeys = [] { return QStringList(); };
    hooks.specialRootKeys = [] { return QStringList(); };
    hooks.startTimer = [] {};
    return hooks;
}
} // namespace

TEST(TargetSelection, ListHelpersCompareExactlyAndRemoveByContainment)
{
    TargetSelection s(flatTree());
    for (const char* key : { "E:\\a\\", "E:\\B\\A\\", "E:\\ab\\", "E:\\zz\\e:\\A\\y.txt", "|E:\\a\\x\\" })
        s.NodeCheck(QString::fromUtf8(key), true, false);
    // Bars are stripped: the last tick is the path "E:\a\x\".
    EXPECT_EQ(s.ListAdd(), QStringList({ "E:\\a\\", "E:\\B\\A\\", "E:\\ab\\", "E:\\zz\\e:\\A\\y.txt", "E:\\a\\x\\" }));
    // Equality is case-sensitive and exact.
    EXPECT_TRUE(s.IsInAdd(QStringLiteral("|E:\\a\\")));
    EXPECT_FALSE(s.IsInAdd(QStringLiteral("E:\\A\\")));
    EXPECT_FALSE(s.IsInAdd(QStringLiteral("E:\\a")));
    // Containment, not case-sensitive, anywhere in an entry; "E:\ab\" and "E:\B\A\" do not hold "E:\a\".
    s.RemoveBelowFromAdd(QStringLiteral("E:\\a\\"));
    EXPECT_EQ(s.ListAdd(), QStringList({ "E:\\B\\A\\", "E:\\ab\\" }));
    // RemoveFromAdd takes one exact entry away.
    s.RemoveFromAdd(QStringLiteral("E:\\b\\a\\"));
    EXPECT_EQ(s.ListAdd().size(), 2);
    s.RemoveFromAdd(QStringLiteral("E:\\B\\A\\"));
    EXPECT_EQ(s.ListAdd(), QStringList({ "E:\\ab\\" }));

    EXPECT_EQ(TargetSelection::LastPathPart(QStringLiteral("E:\\docs\\sub\\")), QStringLiteral("\\sub"));
    EXPECT_EQ(TargetSelection::LastPathPart(QStringLiteral("E:\\docs\\a.txt")), QStringLiteral("\\a.txt"));
    EXPECT_EQ(TargetSelection::LastPathPart(QStringLiteral("plain")), QStringLiteral("plain"));

    // The tick of a new child: below a ticked folder unless excepted, else only a target.
    s.Clear();
    s.NodeCheck(QStringLiteral("E:\\x\\"), false, false); // an untick that covers nothing: an exception
    EXPECT_EQ(s.ListExc(), QStringList({ "E:\\x\\" }));
    EXPECT_FALSE(s.ChildTick(QStringLiteral("E:\\x\\"), true));
    EXPECT_TRUE(s.ChildTick(QStringLiteral("E:\\y\\"), true));
    EXPECT_FALSE(s.ChildTick(QStringLiteral("E:\\y\\"), false));
}
