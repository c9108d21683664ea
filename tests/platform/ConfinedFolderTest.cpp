#include "platform/ConfinedFolder.h"
#include "platform/NativeName.h"

#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

using namespace vmk;
using Refusal = ConfinedFolder::Refusal;

TEST(ConfinedFolderTest, WritesOnlyBeneathItsRootAndFollowsNoLinkThere)
{
    QTemporaryDir dir;
    const QString outside = dir.filePath("outside");
    ASSERT_TRUE(test::writeFile(outside + "/victim.txt", "precious"));
    const QString root = dir.filePath("root/made/on/demand");
    ConfinedFolder folder(root);
    ASSERT_TRUE(folder.isOpen()) << "a missing root is made";
    EXPECT_GT(folder.freeBytes(), 0);
    ASSERT_TRUE(QFile::link(outside, root + "/dirlink"));
    ASSERT_TRUE(QFile::link(outside + "/victim.txt", root + "/filelink"));
    ASSERT_TRUE(QFile::link(root + "/nowhere", root + "/dangling"));

    Refusal why = Refusal::None;
    EXPECT_EQ(folder.makeFolders({ "dirlink", "x" }), Refusal::LinkOnPath);
    EXPECT_EQ(folder.makeFolders({ "dangling" }), Refusal::LinkOnPath) << "never made through a dangling link";
    EXPECT_FALSE(folder.createFile({ "dirlink", "evil.txt" }, why));
    EXPECT_EQ(why, Refusal::LinkOnPath);
    EXPECT_FALSE(folder.createFile({ "filelink" }, why));
    EXPECT_EQ(why, Refusal::LinkOnPath);
    EXPECT_FALSE(folder.createFile({ "dangling" }, why));
    EXPECT_EQ(why, Refusal::LinkOnPath);
    for (const QStringList& bad : { QStringList { ".." }, QStringList { "a", "..", "b" }, QStringList { "a/b" },
             QStringList { "." }, QStringList { "" }, QStringList {} }) {
        EXPECT_FALSE(folder.createFile(bad, why)) << bad.join('|').toStdString();
        EXPECT_EQ(why, Refusal::BadName) << bad.join('|').toStdString();
    }
    EXPECT_EQ(
        QDir(outside).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden), QStringList { "victim.txt" });
    EXPECT_EQ(test::readFile(outside + "/victim.txt"), "precious");

    // A file made in new folders, its time set; one cancelled leaves nothing.
    std::unique_ptr<ConfinedFile> file = folder.createFile({ "Sub", "sub", "a.txt" }, why);
    ASSERT_TRUE(file);
    ASSERT_TRUE(file->write("abc", 3));
    EXPECT_FALSE(QFile::exists(root + "/Sub/sub/a.txt")) << "nothing under the name before commit";
    ASSERT_TRUE(file->commit(1000000000));
    EXPECT_EQ(test::readFile(root + "/Sub/sub/a.txt"), "abc");
    EXPECT_EQ(QFileInfo(root + "/Sub/sub/a.txt").lastModified().toSecsSinceEpoch(), 1000000000);
    std::unique_ptr<ConfinedFile> dropped = folder.createFile({ "Sub", "b.txt" }, why);
    ASSERT_TRUE(dropped);
    ASSERT_TRUE(dropped->write("x", 1));
    dropped.reset();
    EXPECT_EQ(QDir(root + "/Sub").entryList(QDir::Files | QDir::Hidden), QStringList {});
    // A file standing where a folder must be.
    EXPECT_EQ(folder.makeFolders({ "Sub", "sub", "a.txt", "deeper" }), Refusal::NotAFolder);

    // Replacing a file writes a new one: a hard link to it elsewhere keeps the old data.
    ASSERT_TRUE(test::writeFile(outside + "/shared.txt", "shared"));
    ASSERT_EQ(::link(QFile::encodeName(outside + "/shared.txt").constData(),
                  QFile::encodeName(root + "/hard.txt").constData()),
        0);
    file = folder.createFile({ "hard.txt" }, why);
    ASSERT_TRUE(file);
    ASSERT_TRUE(file->write("new", 3));
    ASSERT_TRUE(file->commit(0));
    EXPECT_EQ(test::readFile(root + "/hard.txt"), "new");
    EXPECT_EQ(test::readFile(outside + "/shared.txt"), "shared");

    // Names that are not UTF-8 are written by their bytes.
    file = folder.createFile({ NativeName::fromBytes("caf\xe9.txt") }, why);
    ASSERT_TRUE(file);
    ASSERT_TRUE(file->commit(0));
    EXPECT_EQ(::access((QFile::encodeName(root) + "/caf\xe9.txt").constData(), F_OK), 0);
    test::removeTree(dir.path());
}

TEST(ConfinedFolderTest, ANewFileNeverTakesTheNameOfWhatAppearedMeanwhile)
{
    QTemporaryDir dir;
    ConfinedFolder folder(dir.path());
    Refusal why = Refusal::None;
    std::unique_ptr<ConfinedFile> file = folder.createFile({ "new.txt" }, why);
    ASSERT_TRUE(file);
    ASSERT_TRUE(file->write("ours", 4));
    // Someone else's file under the name, made while ours was being written.
    ASSERT_TRUE(test::writeFile(dir.filePath("new.txt"), "theirs"));
    EXPECT_FALSE(file->commitNew(0));
    EXPECT_EQ(test::readFile(dir.filePath("new.txt")), QByteArray("theirs"));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList { "new.txt" }) << "no temporary left";

    file = folder.createFile({ "free.txt" }, why);
    ASSERT_TRUE(file);
    ASSERT_TRUE(file->write("ours", 4));
    EXPECT_TRUE(file->commitNew(0));
    EXPECT_EQ(test::readFile(dir.filePath("free.txt")), QByteArray("ours"));
}
