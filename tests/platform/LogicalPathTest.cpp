#include "platform/LogicalPath.h"

#include <gtest/gtest.h>

using namespace vmk;

TEST(LogicalPathTest, SlashesJoinsKeysAndDrives)
{
    EXPECT_EQ(LogicalPath::withSlash(QStringLiteral("E:\\VMK")), QStringLiteral("E:\\VMK\\"));
    EXPECT_EQ(LogicalPath::withSlash(QStringLiteral("E:\\VMK\\")), QStringLiteral("E:\\VMK\\"));
    EXPECT_EQ(LogicalPath::withSlash(QStringLiteral("E:")), QStringLiteral("E:\\"));
    EXPECT_EQ(LogicalPath::withSlash(QString()), QString()); // no folder is not the root
    EXPECT_EQ(LogicalPath::withoutSlash(QStringLiteral("E:\\VMK\\\\")), QStringLiteral("E:\\VMK"));
    EXPECT_EQ(LogicalPath::withoutSlash(QStringLiteral("E:\\")), QStringLiteral("E:"));

    // One "\" between, whichever side brings it; a name holding "*", '"' or "|" stays literal.
    for (const char* folder : { "E:\\VMK", "E:\\VMK\\" }) {
        EXPECT_EQ(LogicalPath::join(QString::fromLatin1(folder), QStringLiteral("VMK.cnf")),
            QStringLiteral("E:\\VMK\\VMK.cnf"));
        EXPECT_EQ(LogicalPath::join(QString::fromLatin1(folder), QStringLiteral("\\a*\"b\"")),
            QStringLiteral("E:\\VMK\\a*\"b\""));
    }
    EXPECT_EQ(
        LogicalPath::join(QStringLiteral("E:\\"), QStringLiteral("Language.cnf")), QStringLiteral("E:\\Language.cnf"));

    // A tree key's path: every bar removed, the trailing "\" of a folder kept.
    EXPECT_EQ(
        LogicalPath::ofKey(QStringLiteral("|C:\\Users\\ana\\Desktop\\")), QStringLiteral("C:\\Users\\ana\\Desktop\\"));
    EXPECT_EQ(LogicalPath::ofKey(QStringLiteral("|E:\\a|b.txt")), QStringLiteral("E:\\ab.txt"));
    EXPECT_EQ(LogicalPath::ofKey(QStringLiteral("E:\\x.txt")), QStringLiteral("E:\\x.txt"));

    EXPECT_EQ(LogicalPath::driveOf(QStringLiteral("E:\\VMK")), QStringLiteral("E:"));
    EXPECT_EQ(LogicalPath::driveOf(QStringLiteral("e:")), QStringLiteral("e:"));
    for (const char* none : { "", "\\VMK", "/media/x", "EE:\\", "1:\\", "E:x" })
        EXPECT_EQ(LogicalPath::driveOf(QString::fromLatin1(none)), QString()) << none;
}
