// The listing readers on lines captured from real servers (vsftpd, pyftpdlib,
// proftpd, IIS) and on the odd names a backup folder can hold.
#include "components/ftp/ListingParser.h"
#include "platform/NativeName.h"

#include <gtest/gtest.h>

using namespace vmk::ftp;

namespace
{
const QDate kToday(2026, 11, 23);

RemoteEntry unixLine(const char* line)
{
    const auto e = ListingParser::parseListLine(QByteArrayView(line), kToday);
    EXPECT_TRUE(e.has_value()) << line;
    return e.value_or(RemoteEntry {});
}
} // namespace

TEST(ListingParser, UnixLinesKeepEveryNameExactly)
{
    RemoteEntry e = unixLine("drwxr-xr-x    2 1001     1001         4096 Nov 23 14:05 new dir");
    EXPECT_EQ(e.name, "new dir");
    EXPECT_TRUE(e.folder);
    EXPECT_EQ(e.modified, QDateTime(QDate(2026, 11, 23), QTime(14, 5), Qt::UTC));

    e = unixLine("-rw-r--r--    1 0        0         3145728 Nov 23 14:46 big.bin");
    EXPECT_EQ(e.name, "big.bin");
    EXPECT_FALSE(e.folder);
    EXPECT_EQ(e.size, 3145728);

    // Year instead of time, right-aligned; the blanks after the one separator are the name's.
    e = unixLine("-rw-r--r--   1 owner    group        1234 Jan  5  2024   two leading.zip");
    EXPECT_EQ(e.name, "  two leading.zip");
    EXPECT_EQ(e.modified.date(), QDate(2024, 1, 5));

    EXPECT_EQ(unixLine("-rw-r--r--   1 root     root            5 Mar  1 09:00 -dash").name, "-dash");
    EXPECT_EQ(unixLine("-rw-r--r--   1 root     root            5 Mar  1 09:00 --").name, "--");
    EXPECT_EQ(unixLine("-rw-r--r--   1 root     root            5 Mar  1 09:00 trailing ").name, "trailing ");
    EXPECT_EQ(unixLine("-rw-r--r--   1 root     root            5 Mar  1 09:00 Copia de año 2026 ñandú.zip").name,
        QString::fromUtf8("Copia de año 2026 ñandú.zip"));
    // A name that looks like the columns before it.
    EXPECT_EQ(
        unixLine("-rw-r--r--   1 root     root            5 Mar  1 09:00 5 Mar  1 09:00 x").name, "5 Mar  1 09:00 x");
    // ACL mark after the mode, no group column, ISO dates.
    EXPECT_TRUE(unixLine("drwxr-xr-x+  3 u g 4096 Nov 20 10:00 acl").folder);
    EXPECT_EQ(unixLine("-rw-r--r-- 1 ftp 7 Nov 20 10:00 nogroup").size, 7);
    e = unixLine("-rw-r--r-- 1 u g 9 2024-01-05 14:00  iso name");
    EXPECT_EQ(e.name, " iso name");
    EXPECT_EQ(e.modified, QDateTime(QDate(2024, 1, 5), QTime(14, 0), Qt::UTC));

    // A time without a year lies in the past: December is last year's.
    EXPECT_EQ(unixLine("-rw-r--r-- 1 u g 1 Dec 31 23:00 old").modified.date(), QDate(2025, 12, 31));

    e = unixLine("lrwxrwxrwx   1 root     root            7 Nov 23 14:00 link name -> target dir");
    EXPECT_EQ(e.name, "link name");
    EXPECT_TRUE(e.link);
    EXPECT_FALSE(e.folder);

    // Bytes that are not UTF-8 come back byte for byte.
    e = unixLine("-rw-r--r-- 1 u g 1 Nov 20 10:00 caf\xe9.zip");
    EXPECT_EQ(vmk::NativeName::toBytes(e.name), QByteArray("caf\xe9.zip"));

    for (const char* none : { "total 12", "", "drwxr-xr-x 2 u g 4096 Nov 23 14:05 .",
             "drwxr-xr-x 2 u g 4096 Nov 23 14:05 ..", "-rw-r--r-- 1 u g 1 Nov 20 10:00 ", "garbage line here",
             "-rw-r--r-- 1 u g 1 Nov 20 10:00 a/b", "-rwxrwxrwx" })
        EXPECT_FALSE(ListingParser::parseListLine(QByteArrayView(none), kToday).has_value()) << none;
}

TEST(ListingParser, DosLinesKeepEveryNameExactly)
{
    RemoteEntry e = unixLine("11-23-26  02:15PM       <DIR>          folder name");
    EXPECT_EQ(e.name, "folder name");
    EXPECT_TRUE(e.folder);
    EXPECT_EQ(e.modified, QDateTime(QDate(2026, 11, 23), QTime(14, 15), Qt::UTC));

    EXPECT_EQ(unixLine("11-23-26  02:15PM       <DIR>            two blanks").name, "  two blanks");

    e = unixLine("01-05-2024  09:03AM              3145728 file name.zip");
    EXPECT_EQ(e.name, "file name.zip");
    EXPECT_EQ(e.size, 3145728);
    EXPECT_EQ(e.modified, QDateTime(QDate(2024, 1, 5), QTime(9, 3), Qt::UTC));

    e = unixLine("11-23-26  12:05AM                    5  leading");
    EXPECT_EQ(e.name, " leading");
    EXPECT_EQ(e.modified.time(), QTime(0, 5));
    EXPECT_EQ(unixLine("11-23-26  14:15                    5 -dash").name, "-dash");
    EXPECT_EQ(unixLine("11-23-26  02:15PM                    5 acentuación ñ.zip").name,
        QString::fromUtf8("acentuación ñ.zip"));

    for (const char* none : { "11-23-26  02:15PM       <DIR>          ..", "11-23-26  02:15PM", "11-23-26  xx:15PM 5 a",
             "1-2-3 4:5 6 a", "11-23-26  02:15PM 5" })
        EXPECT_FALSE(ListingParser::parseListLine(QByteArrayView(none), kToday).has_value()) << none;

    // A whole reply, CR LF and LF alike.
    const QList<RemoteEntry> all = ListingParser::parseList(
        "total 2\r\n11-23-26  02:15PM       <DIR>          a\r\n-rw-r--r-- 1 u g 1 Nov 20 10:00 b\n", kToday);
    ASSERT_EQ(all.size(), 2);
    EXPECT_EQ(all[0].name, "a");
    EXPECT_EQ(all[1].name, "b");
}

TEST(ListingParser, MlsdLines)
{
    auto e = ListingParser::parseMlsdLine("type=file;size=5;modify=20261123140509;perm=r; name with spaces");
    ASSERT_TRUE(e);
    EXPECT_EQ(e->name, "name with spaces");
    EXPECT_EQ(e->size, 5);
    EXPECT_EQ(e->modified, QDateTime(QDate(2026, 11, 23), QTime(14, 5, 9), Qt::UTC));

    e = ListingParser::parseMlsdLine("Type=DIR;Modify=20261123140509;   two blanks");
    ASSERT_TRUE(e);
    EXPECT_TRUE(e->folder);
    EXPECT_EQ(e->name, "  two blanks");

    e = ListingParser::parseMlsdLine("type=OS.unix=slink:/x;size=1; -link");
    ASSERT_TRUE(e);
    EXPECT_TRUE(e->link);
    EXPECT_EQ(e->name, "-link");

    for (const char* none : { "type=cdir; .", "type=pdir; ..", "size=5; untyped", "type=file;size=5;", "",
             "type=file; a/b", "type=file; " })
        EXPECT_FALSE(ListingParser::parseMlsdLine(QByteArrayView(none)).has_value()) << none;

    const auto all = ListingParser::parseMlsd("type=cdir; .\r\ntype=file;size=1; ñ\r\ntype=dir; d\r\n");
    ASSERT_EQ(all.size(), 2);
    EXPECT_EQ(all[0].name, QString::fromUtf8("ñ"));
    EXPECT_TRUE(all[1].folder);
}
