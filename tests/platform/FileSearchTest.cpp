#include "platform/FileSearch.h"
#include "platform/DriveMap.h"
#include "platform/NativeName.h"

#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

using namespace vmk;

namespace
{
quint32 attributeOf(const QList<FoundEntry>& entries, const QString& name)
{
    for (const FoundEntry& e : entries) {
        if (e.name == name)
            return e.attributes;
    }
    return AttrInvalid;
}
} // namespace

TEST(FileSearchTest, AttributeWordOfEveryKindOfEntry)
{
    QTemporaryDir dir;
    const QString root = QDir(dir.path()).canonicalPath();
    DriveMap::instance().setTestDrives({ { u'C', QStringLiteral("/") }, { u'E', root } }, u'E');
    ASSERT_TRUE(test::writeFile(root + "/plain.txt", "12345"));
    ASSERT_TRUE(test::writeFile(root + "/.hidden", "h"));
    ASSERT_TRUE(QDir().mkpath(root + "/Folder"));
    ASSERT_TRUE(QDir().mkpath(root + "/.config"));
    ASSERT_EQ(::symlink((root + "/Folder").toUtf8().constData(), (root + "/dirlink").toUtf8().constData()), 0);
    ASSERT_EQ(::symlink((root + "/plain.txt").toUtf8().constData(), (root + "/filelink").toUtf8().constData()), 0);
    ASSERT_EQ(::symlink("/proc", (root + "/proclink").toUtf8().constData()), 0);
    ASSERT_EQ(::mkfifo((root + "/pipe").toUtf8().constData(), 0600), 0);
    // A listening socket: a walk that opened it would fail; one that read a FIFO would block.
    const int sock = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_GE(sock, 0);
    sockaddr_un addr {};
    addr.sun_family = AF_UNIX;
    const QByteArray sockPath = (root + "/sock").toUtf8();
    ASSERT_LT(static_cast<size_t>(sockPath.size()), sizeof(addr.sun_path));
    std::memcpy(addr.sun_path, sockPath.constData(), sockPath.size());
    ASSERT_EQ(::bind(sock, reinterpret_cast<sockaddr*>(&addr), sizeof(addr)), 0);

    const QList<FoundEntry> all = FileSearch::list(QStringLiteral("E:\\"), QStringLiteral("*.*"));
    EXPECT_EQ(all.size(), 9);
    EXPECT_EQ(attributeOf(all, "plain.txt"), quint32(AttrArchive));
    EXPECT_EQ(attributeOf(all, ".hidden"), quint32(AttrArchive | AttrHidden));
    EXPECT_EQ(attributeOf(all, "Folder"), quint32(AttrDirectory));
    EXPECT_EQ(attributeOf(all, ".config"), quint32(AttrDirectory | AttrHidden));
    EXPECT_EQ(attributeOf(all, "dirlink"), quint32(AttrJunction));
    EXPECT_EQ(attributeOf(all, "proclink"), quint32(AttrJunction));
    EXPECT_EQ(attributeOf(all, "filelink"), quint32(AttrArchive));
    EXPECT_EQ(attributeOf(all, "pipe"), quint32(AttrSystem | AttrDevice));
    EXPECT_EQ(attributeOf(all, "sock"), quint32(AttrSystem | AttrDevice));
    for (const FoundEntry& e : all) {
        if (e.name == "plain.txt") {
            EXPECT_EQ(e.size, 5);
        } else if (e.name == "pipe" || e.name == "Folder") {
            EXPECT_EQ(e.size, 0);
        }
    }
    // Sorted by name, wildcard case-insensitive.
    for (qsizetype i = 1; i < all.size(); ++i)
        EXPECT_LT(all[i - 1].name, all[i].name);
    const QList<FoundEntry> txt = FileSearch::list(QStringLiteral("E:\\"), QStringLiteral("*.TXT"));
    ASSERT_EQ(txt.size(), 1);
    EXPECT_EQ(txt[0].name, QStringLiteral("plain.txt"));

    EXPECT_EQ(FileSearch::attributesOf(QStringLiteral("E:\\DIRLINK")), quint32(AttrJunction));
    EXPECT_EQ(FileSearch::attributesOf(QStringLiteral("E:\\Folder\\")), quint32(AttrDirectory));
    EXPECT_EQ(FileSearch::attributesOf(QStringLiteral("E:\\nothing")), quint32(AttrInvalid));
    EXPECT_EQ(FileSearch::attributesOf(QStringLiteral("C:\\proc")), quint32(AttrJunction));
    EXPECT_EQ(FileSearch::attributesOf(QStringLiteral("C:\\sys")), quint32(AttrJunction));
    EXPECT_TRUE(FileSearch::list(QStringLiteral("E:\\missing")).isEmpty());

    // The test double can give any word.
    FileSearch::setAttributeHook([&](const QString& path, quint32 computed) -> std::optional<quint32> {
        if (path.endsWith(QLatin1String("/plain.txt")))
            return AttrArchive | AttrReadOnly | AttrSystem;
        return computed == AttrDirectory ? std::optional<quint32>(AttrJunction) : std::nullopt;
    });
    const QList<FoundEntry> hooked = FileSearch::list(QStringLiteral("E:\\"));
    EXPECT_EQ(attributeOf(hooked, "plain.txt"), quint32(0x25));
    EXPECT_EQ(attributeOf(hooked, "Folder"), quint32(AttrJunction));
    EXPECT_EQ(attributeOf(hooked, ".hidden"), quint32(AttrArchive | AttrHidden));
    FileSearch::setAttributeHook({});
    ::close(sock);
    DriveMap::instance().resetToHost();
}

TEST(FileSearchTest, RealMountOfProcCarriesTheJunctionWord)
{
    QTemporaryDir dir;
    const QString root = QDir(dir.path()).canonicalPath();
    ASSERT_TRUE(QDir().mkpath(root + "/kernel"));
    ASSERT_TRUE(QDir().mkpath(root + "/normal"));
    const QByteArray target = (root + "/kernel").toUtf8();
    if (::mount("proc", target.constData(), "proc", MS_NOSUID | MS_NODEV | MS_NOEXEC, nullptr) != 0)
        GTEST_SKIP() << "mount of proc refused: " << std::strerror(errno);
    DriveMap::instance().setTestDrives({ { u'C', QStringLiteral("/") }, { u'E', root } }, u'E');
    const QList<FoundEntry> entries = FileSearch::list(QStringLiteral("E:\\"));
    const quint32 kernel = attributeOf(entries, "kernel");
    const quint32 normal = attributeOf(entries, "normal");
    const quint32 direct = FileSearch::attributesOf(QStringLiteral("E:\\kernel"));
    ::umount2(target.constData(), MNT_DETACH);
    DriveMap::instance().resetToHost();
    EXPECT_EQ(kernel, quint32(AttrJunction));
    EXPECT_EQ(direct, quint32(AttrJunction));
    EXPECT_EQ(normal, quint32(AttrDirectory));
}

TEST(FileSearchTest, OddNamesAndKindsReachEveryWalkByTheirRealBytes)
{
    // Bytes to text and back is exact for every kind of name: Latin-1 from an old
    // stick, stray and overlong bytes, and real characters of the private range.
    const QList<QByteArray> names
        = { "caf\xe9.txt", "ok\xff\xfe", "\xc0\xaf", "\xef\x80\x80", "\xef\x83\xa9x", "\xed\xa0\x80",
              "plain \xc3\xb1"
              "and\xc3\xba",
              "\xe2\x82" };
    for (const QByteArray& raw : names)
        EXPECT_EQ(NativeName::toBytes(NativeName::fromBytes(raw)), raw) << raw.toHex().constData();
    EXPECT_EQ(NativeName::fromBytes("plain \xc3\xb1"
                                    "and\xc3\xba"),
        QString::fromUtf8("plain \xc3\xb1"
                          "and\xc3\xba"));
    EXPECT_TRUE(NativeName::holdsRawBytes(NativeName::fromBytes("caf\xe9.txt")));
    EXPECT_FALSE(NativeName::holdsRawBytes(QStringLiteral("caf\u00e9.txt")));

    QTemporaryDir dir;
    const QString root = QDir(dir.path()).canonicalPath();
    DriveMap::instance().setTestDrives({ { u'C', QStringLiteral("/") }, { u'E', root } }, u'E');
    const QByteArray latin1 = QFile::encodeName(root) + "/caf\xe9.txt";
    const int fd = ::open(latin1.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(::write(fd, "latin", 5), 5);
    ::close(fd);
    ASSERT_TRUE(test::writeFile(root + "/xt_mark.h", "lower"));
    ASSERT_TRUE(test::writeFile(root + "/xt_MARK.h", "upper"));
    ASSERT_EQ(::symlink((root + "/gone").toUtf8().constData(), (root + "/dangling").toUtf8().constData()), 0);
    ASSERT_EQ(::mkfifo((root + "/pipe").toUtf8().constData(), 0600), 0);

    const QList<FoundEntry> all = FileSearch::list(QStringLiteral("E:\\"));
    ASSERT_EQ(all.size(), 5) << "nothing is dropped";
    QMap<QString, FoundEntry> byName;
    for (const FoundEntry& e : all)
        byName.insert(e.name, e);
    const QString odd = NativeName::fromBytes("caf\xe9.txt");
    ASSERT_TRUE(byName.contains(odd));
    EXPECT_EQ(byName[odd].kind, EntryKind::File);
    EXPECT_EQ(byName[odd].size, 5);
    EXPECT_EQ(NativeName::toBytes(byName[odd].nativePath), latin1);
    EXPECT_EQ(byName["dangling"].kind, EntryKind::DanglingLink);
    EXPECT_EQ(byName["pipe"].kind, EntryKind::Fifo);
    EXPECT_EQ(byName["xt_mark.h"].kind, EntryKind::File);

    // The namespace takes the private form both ways, and the exact name wins over
    // the case-insensitive fallback, which never merges two names that exist.
    const DriveMap& map = DriveMap::instance();
    EXPECT_EQ(map.toLogical(byName[odd].nativePath), "E:\\" + odd);
    EXPECT_EQ(NativeName::toBytes(map.toNative("E:\\" + odd)), latin1);
    EXPECT_EQ(NativeName::toBytes(map.toNative("E:\\" + odd.toUpper())), latin1) << "the fallback reaches it too";
    EXPECT_EQ(map.toNative(QStringLiteral("E:\\xt_mark.h")), root + "/xt_mark.h");
    EXPECT_EQ(map.toNative(QStringLiteral("E:\\xt_MARK.h")), root + "/xt_MARK.h");
    const std::optional<FoundEntry> one = FileSearch::entryOfNative(map.toNative("E:\\" + odd));
    ASSERT_TRUE(one.has_value());
    EXPECT_EQ(one->name, odd);
    EXPECT_EQ(one->kind, EntryKind::File);
    DriveMap::instance().resetToHost();
    test::removeTree(root);
}

TEST(FileSearchTest, ReadOnlyBitOfAListingIsWhatAccessAnswers)
{
    // A listing decides most entries from their owner bits without asking the
    // kernel again; its answer must stay the one access(W_OK) gives, for every
    // owner, mode and flag.
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString root = dir.path();
    const QList<std::pair<QString, mode_t>> files = { { "rw", 0644 }, { "ro", 0444 }, { "none", 0 },
        { "other_rw", 0666 }, { "other_ro", 0444 }, { "frozen", 0644 } };
    for (const auto& [name, mode] : files) {
        ASSERT_TRUE(test::writeFile(root + u'/' + name, "x"));
        ASSERT_EQ(::chmod(QFile::encodeName(root + u'/' + name).constData(), mode), 0);
    }
    ASSERT_TRUE(QDir(root).mkdir(QStringLiteral("dir_rw")));
    ASSERT_TRUE(QDir(root).mkdir(QStringLiteral("dir_ro")));
    ASSERT_EQ(::chmod(QFile::encodeName(root + "/dir_ro").constData(), 0555), 0);
    // Owned by someone else where we may give files away (as root).
    for (const char* name : { "other_rw", "other_ro" })
        (void)::chown(QFile::encodeName(root + u'/' + QLatin1String(name)).constData(), 54321, 54321);
    const QByteArray frozen = QFile::encodeName(root + "/frozen");
    const int fd = ::open(frozen.constData(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(fd, 0);
    int flags = 0;
    const bool immutable = ::ioctl(fd, FS_IOC_GETFLAGS, &flags) == 0
        && ::ioctl(fd, FS_IOC_SETFLAGS, &(flags = flags | FS_IMMUTABLE_FL)) == 0;
    ::close(fd);

    const QList<FoundEntry> entries = FileSearch::listNative(root);
    ASSERT_EQ(entries.size(), 8);
    for (const FoundEntry& e : entries) {
        const bool denied = ::access(QFile::encodeName(e.nativePath).constData(), W_OK) != 0;
        EXPECT_EQ((e.attributes & AttrReadOnly) != 0, denied) << e.name.toStdString();
        EXPECT_EQ(e.attributes, FileSearch::attributesOfNative(e.nativePath)) << e.name.toStdString();
    }
    if (immutable) {
        EXPECT_NE(attributeOf(entries, QStringLiteral("frozen")) & AttrReadOnly, 0u);
        const int f = ::open(frozen.constData(), O_RDONLY | O_CLOEXEC);
        ASSERT_GE(f, 0);
        flags &= ~FS_IMMUTABLE_FL;
        EXPECT_EQ(::ioctl(f, FS_IOC_SETFLAGS, &flags), 0);
        ::close(f);
    }
}
