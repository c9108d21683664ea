// The FTP component and `vmk ftp` against real servers on 127.0.0.1 only:
// pyftpdlib for plain FTP (tests/data/ftp/ftp_server.py, with its ways to
// misbehave), vsftpd with a certificate of its own for FTPS.
#include "FtpServers.h"
#include "TestSupport.h"

#include "components/ftp/Fingerprint.h"
#include "components/ftp/FtpClient.h"
#include "foundation/Settings.h"
#include "platform/NativeName.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <dirent.h>

#include <chrono>
#include <thread>

using namespace vmk::ftp;
using vmk::test::readFile;
using vmk::test::runVmk;
using vmk::test::writeFile;

namespace
{
using PlainServer = vmk::test::PlainFtpServer;
using TlsServer = vmk::test::TlsFtpServer;
using vmk::test::randomBytes;

void logIn(FtpClient& c, const PlainServer& s, const QString& password = QStringLiteral("s3cret"))
{
    c.setServer(s.server());
    c.setUserName(QStringLiteral("alice"));
    c.setPassword(password);
}

QStringList namesOf(const QList<RemoteEntry>& entries)
{
    QStringList names;
    for (const RemoteEntry& e : entries)
        names << e.name + (e.folder ? QStringLiteral("/") : QString());
    names.sort();
    return names;
}

// Native names in a folder, whatever bytes they hold (QDir cannot reach all).
QStringList namesOnDisk(const QString& folder)
{
    QStringList names;
    if (DIR* d = opendir(QFile::encodeName(folder).constData())) {
        while (const dirent* e = readdir(d)) {
            const QByteArray name(e->d_name);
            if (name != "." && name != "..")
                names << vmk::NativeName::fromBytes(name);
        }
        closedir(d);
    }
    names.sort();
    return names;
}
} // namespace

// Upload then download gives the same bytes; listing (MLSD, Unix LIST, DOS LIST)
// gives every odd name exactly; folders, deletion, the temporary name, refused names.
TEST(FtpClient, PlainServerRoundTripListingAndFolders)
{
    const QList<QStringList> modes { {}, { QStringLiteral("--no-mlsd") },
        { QStringLiteral("--no-mlsd"), QStringLiteral("--dos-list") } };
    for (const QStringList& mode : modes) {
        SCOPED_TRACE(mode.join(u' ').toStdString());
        QTemporaryDir root, local;
        PlainServer server(root.path(), mode);
        ASSERT_GT(server.port(), 0);
        FtpClient c;
        logIn(c, server);
        ASSERT_TRUE(c.connect()) << c.lastError().words().toStdString();
        EXPECT_FALSE(c.isSecure());
        EXPECT_EQ(c.currentFolder(), "/");

        ASSERT_TRUE(c.makeFolders(QString::fromUtf8("/Respaldos/año 2026")));
        ASSERT_TRUE(c.changeFolder(QStringLiteral("Respaldos")));
        ASSERT_TRUE(c.changeFolder(QString::fromUtf8("año 2026")));
        EXPECT_EQ(c.currentFolder(), QString::fromUtf8("/Respaldos/año 2026/"));
        const QString remoteFolder = root.path() + QString::fromUtf8("/Respaldos/año 2026");

        const QStringList names { QStringLiteral("name with spaces.zip"), QStringLiteral("  two leading.zip"),
            QStringLiteral("-dash.zip"), QString::fromUtf8("acentuación ñ.zip"), QStringLiteral("trailing "),
            vmk::NativeName::fromBytes("caf\xe9.zip"), QStringLiteral("empty") };
        QMap<QString, QByteArray> contents;
        for (qsizetype i = 0; i < names.size(); ++i) {
            const QByteArray bytes = names[i] == "empty" ? QByteArray() : randomBytes(i == 0 ? 700000 : 100 + i);
            const QString source = local.filePath(QStringLiteral("src%1").arg(i));
            ASSERT_TRUE(writeFile(source, bytes));
            ASSERT_TRUE(c.upload(source, names[i]))
                << names[i].toStdString() << " " << c.lastError().words().toStdString();
            contents[names[i]] = bytes;
        }
        ASSERT_TRUE(c.makeFolder(QStringLiteral("-sub folder")));
        ASSERT_TRUE(c.makeFolder(QStringLiteral(" blank folder")));

        const auto listed = c.list();
        ASSERT_TRUE(listed.has_value());
        QStringList expected = names;
        expected << QStringLiteral("-sub folder/") << QStringLiteral(" blank folder/");
        expected.sort();
        EXPECT_EQ(namesOf(*listed), expected);
        for (const RemoteEntry& e : *listed) {
            if (!e.folder) {
                EXPECT_EQ(e.size, contents.value(e.name).size()) << e.name.toStdString();
            }
        }
        // Nothing is left under a temporary name, and the server holds the bytes sent.
        QStringList onDisk = namesOnDisk(remoteFolder);
        EXPECT_EQ(onDisk.size(), expected.size());
        EXPECT_EQ(readFile(remoteFolder + QStringLiteral("/name with spaces.zip")), contents["name with spaces.zip"]);

        for (const QString& name : names) {
            const QString target = local.filePath(QStringLiteral("back"));
            ASSERT_TRUE(c.download(name, target)) << name.toStdString();
            EXPECT_EQ(readFile(target), contents[name]) << name.toStdString();
        }
        // A second send replaces the first whole.
        ASSERT_TRUE(writeFile(local.filePath(QStringLiteral("v2")), "second"));
        ASSERT_TRUE(c.upload(local.filePath(QStringLiteral("v2")), QStringLiteral("-dash.zip")));
        EXPECT_EQ(readFile(remoteFolder + QStringLiteral("/-dash.zip")), "second");

        // Names that would smuggle a second command are refused before anything is sent.
        EXPECT_FALSE(c.upload(local.filePath(QStringLiteral("v2")), QStringLiteral("x\r\nDELE -dash.zip")));
        EXPECT_EQ(c.lastError().failure, FtpFailure::BadName);
        EXPECT_FALSE(c.makeFolder(QStringLiteral("a\nb")));
        EXPECT_EQ(c.lastError().failure, FtpFailure::BadName);
        EXPECT_EQ(namesOnDisk(remoteFolder), onDisk);

        // A missing folder or file: words naming the path, curl's code, the connection kept.
        EXPECT_FALSE(c.changeFolder(QStringLiteral("missing")));
        EXPECT_EQ(c.lastError().failure, FtpFailure::NotFound);
        EXPECT_EQ(c.lastError().path, QString::fromUtf8("/Respaldos/año 2026/missing/"));
        EXPECT_NE(c.lastError().curlCode, 0);
        EXPECT_FALSE(c.download(QStringLiteral("missing.zip"), local.filePath(QStringLiteral("never"))));
        EXPECT_EQ(c.lastError().failure, FtpFailure::NotFound);
        EXPECT_FALSE(QFileInfo::exists(local.filePath(QStringLiteral("never"))));
        EXPECT_EQ(c.currentFolder(), QString::fromUtf8("/Respaldos/año 2026/"));

        // A folder that holds files is not removed.
        EXPECT_FALSE(c.removeFolder(QString::fromUtf8("/Respaldos/año 2026")));
        EXPECT_NE(c.lastError().failure, FtpFailure::None);

        for (const QString& name : names)
            ASSERT_TRUE(c.removeFile(name)) << name.toStdString();
        ASSERT_TRUE(c.removeFolder(QStringLiteral("-sub folder")));
        ASSERT_TRUE(c.removeFolder(QStringLiteral(" blank folder")));
        EXPECT_TRUE(c.list()->isEmpty());
        EXPECT_TRUE(namesOnDisk(remoteFolder).isEmpty());

        ASSERT_TRUE(c.up());
        EXPECT_EQ(c.currentFolder(), "/Respaldos/");
        ASSERT_TRUE(c.up());
        ASSERT_TRUE(c.up());
        EXPECT_EQ(c.currentFolder(), "/");
        EXPECT_EQ(namesOf(*c.list()), QStringList { "Respaldos/" });
        // All of it on the one connection.
        EXPECT_EQ(c.staleRetries(), 0);
    }
}

TEST(FtpClient, RefusedLoginGivesTheServersReason)
{
    QTemporaryDir root, local;
    PlainServer server(root.path());
    ASSERT_GT(server.port(), 0);
    FtpClient c;
    logIn(c, server, QStringLiteral("wrong"));
    EXPECT_FALSE(c.connect());
    EXPECT_FALSE(c.isConnected());
    EXPECT_EQ(c.lastError().failure, FtpFailure::LoginRefused);
    EXPECT_EQ(c.lastError().curlCode, 67);
    EXPECT_TRUE(c.lastError().serverReply.startsWith(QStringLiteral("530"))) << c.lastError().serverReply.toStdString();

    ASSERT_TRUE(writeFile(local.filePath(QStringLiteral("bad")), "wrong\n"));
    const auto run
        = runVmk({ "ftp", "ls", server.url(QString()), "--pass-file", local.filePath(QStringLiteral("bad")) });
    EXPECT_EQ(run.code, 1);
    EXPECT_TRUE(run.err.contains(QStringLiteral("530 Authentication failed."))) << run.err.toStdString();
    EXPECT_TRUE(run.err.contains(QStringLiteral("(67)"))) << run.err.toStdString();
    EXPECT_TRUE(run.out.isEmpty());
}

// The server ends the session mid-transfer: the operation fails, the file at
// the target name is never half, and the next operation works again.
TEST(FtpClient, SessionDroppedMidTransfer)
{
    QTemporaryDir root, local;
    PlainServer server(root.path(), { QStringLiteral("--drop-after"), QStringLiteral("65536") });
    ASSERT_GT(server.port(), 0);
    const QByteArray big = randomBytes(1 << 20);
    ASSERT_TRUE(writeFile(local.filePath(QStringLiteral("big.zip")), big));
    ASSERT_TRUE(writeFile(root.filePath(QStringLiteral("served.zip")), big));
    ASSERT_TRUE(writeFile(local.filePath(QStringLiteral("kept.zip")), "the old copy"));

    FtpClient c;
    logIn(c, server);
    ASSERT_TRUE(c.connect());
    EXPECT_FALSE(c.upload(local.filePath(QStringLiteral("big.zip")), QStringLiteral("big.zip")));
    EXPECT_NE(c.lastError().failure, FtpFailure::None);
    EXPECT_NE(c.lastError().curlCode, 0);
    EXPECT_EQ(c.lastError().path, "/big.zip");
    EXPECT_FALSE(QFileInfo::exists(root.filePath(QStringLiteral("big.zip"))));

    EXPECT_FALSE(c.download(QStringLiteral("served.zip"), local.filePath(QStringLiteral("kept.zip"))));
    EXPECT_NE(c.lastError().failure, FtpFailure::None);
    EXPECT_EQ(readFile(local.filePath(QStringLiteral("kept.zip"))), "the old copy");
    EXPECT_EQ(namesOnDisk(local.path()), (QStringList { "big.zip", "kept.zip" }));

    const auto listed = c.list();
    ASSERT_TRUE(listed.has_value()) << c.lastError().words().toStdString();
    EXPECT_EQ(namesOf(*listed), QStringList { "served.zip" });
}

// The kept connection was forgotten by the server while idle, without a word:
// the next operation is repeated once on a fresh connection.
TEST(FtpClient, StaleConnectionIsRetriedOnce)
{
    QTemporaryDir root;
    PlainServer server(root.path(), { QStringLiteral("--stale-after"), QStringLiteral("1") });
    ASSERT_GT(server.port(), 0);
    ASSERT_TRUE(writeFile(root.filePath(QStringLiteral("a.zip")), "a"));
    FtpClient c;
    logIn(c, server);
    ASSERT_TRUE(c.connect());
    ASSERT_TRUE(c.list().has_value());
    std::this_thread::sleep_for(std::chrono::milliseconds(1800));
    const auto listed = c.list();
    ASSERT_TRUE(listed.has_value()) << c.lastError().words().toStdString();
    EXPECT_EQ(namesOf(*listed), QStringList { "a.zip" });
    EXPECT_EQ(c.staleRetries(), 1);
}

// A server that refuses a data connection with 522 (vsftpd does so to some TLS
// 1.3 clients) gets the request again over TLS 1.2, on a fresh connection.
TEST(FtpClient, Reply522SwitchesToTls12AndRepeats)
{
    QTemporaryDir root;
    PlainServer server(root.path(), { QStringLiteral("--refuse-data-once") });
    ASSERT_GT(server.port(), 0);
    ASSERT_TRUE(writeFile(root.filePath(QStringLiteral("a.zip")), "a"));
    FtpClient c;
    logIn(c, server);
    ASSERT_TRUE(c.connect());
    EXPECT_FALSE(c.tls12Only());
    const auto listed = c.list();
    ASSERT_TRUE(listed.has_value()) << c.lastError().words().toStdString();
    EXPECT_EQ(namesOf(*listed), QStringList { "a.zip" });
    EXPECT_TRUE(c.tls12Only());
}

TEST(FtpClient, CancelledTransfersLeaveNothing)
{
    QTemporaryDir root, local;
    PlainServer server(root.path());
    ASSERT_GT(server.port(), 0);
    ASSERT_TRUE(writeFile(local.filePath(QStringLiteral("big.zip")), randomBytes(4 << 20)));
    ASSERT_TRUE(writeFile(root.filePath(QStringLiteral("served.zip")), randomBytes(4 << 20)));
    FtpClient c;
    logIn(c, server);
    ASSERT_TRUE(c.connect());
    int calls = 0;
    const FtpClient::Progress stop = [&calls](qint64 done, qint64) { return ++calls < 3 || done == 0; };
    EXPECT_FALSE(c.upload(local.filePath(QStringLiteral("big.zip")), QStringLiteral("big.zip"), stop));
    EXPECT_EQ(c.lastError().failure, FtpFailure::Cancelled);
    EXPECT_EQ(c.lastError().curlCode, 42);
    EXPECT_EQ(namesOnDisk(root.path()), QStringList { "served.zip" });

    calls = 0;
    EXPECT_FALSE(c.download(QStringLiteral("served.zip"), local.filePath(QStringLiteral("got.zip")), stop));
    EXPECT_EQ(c.lastError().failure, FtpFailure::Cancelled);
    EXPECT_EQ(namesOnDisk(local.path()), QStringList { "big.zip" });

    // Progress reaches the whole size.
    qint64 last = 0, total = 0;
    ASSERT_TRUE(c.download(
        QStringLiteral("served.zip"), local.filePath(QStringLiteral("got.zip")), [&](qint64 done, qint64 all) {
            last = done;
            total = all;
            return true;
        }));
    EXPECT_EQ(last, 4 << 20);
    EXPECT_EQ(
        readFile(local.filePath(QStringLiteral("got.zip"))), readFile(root.filePath(QStringLiteral("served.zip"))));
    (void)total;
}

TEST(VmkFtp, PutGetListRemoveAndTheDevicesSettings)
{
    QTemporaryDir root, local;
    PlainServer server(root.path());
    ASSERT_GT(server.port(), 0);
    const QString pass = local.filePath(QStringLiteral("pass"));
    ASSERT_TRUE(writeFile(pass, "s3cret\r\n"));
    const QByteArray data = randomBytes(300000);
    const QString file = local.filePath(QStringLiteral("ago-01-2026,10.00.00.zip"));
    ASSERT_TRUE(writeFile(file, data));

    // put URL/ keeps the name and makes the folders on the way.
    auto r = runVmk({ "ftp", "put", file, server.url(QStringLiteral("Respaldos/PC%201/")), "--pass-file", pass });
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_EQ(readFile(root.filePath(QStringLiteral("Respaldos/PC 1/ago-01-2026,10.00.00.zip"))), data);
    // Options before the operands; URL/NAME gives the name, blanks and dash included.
    r = runVmk({ "ftp", "--pass-file", pass, "put", file, server.url(QStringLiteral("Respaldos/%20-copia.zip")) });
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    r = runVmk({ "ftp", "mkdir", server.url(QStringLiteral("Respaldos/nueva%20carpeta/")), "--pass-file", pass });
    ASSERT_EQ(r.code, 0) << r.err.toStdString();

    r = runVmk({ "ftp", "ls", server.url(QStringLiteral("Respaldos/")), "--pass-file", pass });
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    QStringList lines = r.out.split(u'\n', Qt::SkipEmptyParts);
    lines.sort();
    EXPECT_EQ(lines, (QStringList { " -copia.zip", "PC 1/", "nueva carpeta/" }));

    const QString back = local.filePath(QStringLiteral("back.zip"));
    r = runVmk({ "ftp", "get", server.url(QStringLiteral("Respaldos/%20-copia.zip")), back, "--pass-file", pass });
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_EQ(readFile(back), data);

    r = runVmk({ "ftp", "rm", server.url(QStringLiteral("Respaldos/%20-copia.zip")), "--pass-file", pass });
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    r = runVmk({ "ftp", "rm", server.url(QStringLiteral("Respaldos/nueva%20carpeta/")), "--pass-file", pass });
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_EQ(namesOnDisk(root.filePath(QStringLiteral("Respaldos"))), QStringList { "PC 1" });
    // A missing file: the path, the words, curl's code; exit 2.
    r = runVmk({ "ftp", "get", server.url(QStringLiteral("nada.zip")), back, "--pass-file", pass });
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(r.err.contains(QStringLiteral("/nada.zip"))) << r.err.toStdString();
    EXPECT_TRUE(r.err.contains(QStringLiteral("(78)"))) << r.err.toStdString();
    EXPECT_EQ(readFile(back), data);
    r = runVmk({ "ftp", "ls", "http://127.0.0.1/", "--pass-file", pass });
    EXPECT_EQ(r.code, 2);

    // Server, user and password from the device's settings.
    QTemporaryDir program;
    ASSERT_EQ(runVmk({ "settings", "--program-folder", program.path() }).code, 0);
    const QString cnf = program.filePath(QStringLiteral("VMK.cnf"));
    QString settings = QString::fromUtf8(readFile(cnf));
    QStringList kept;
    for (const QString& line : settings.split(QStringLiteral("\r\n"))) {
        if (line.startsWith(QLatin1String("#FtpServer=")))
            kept << QStringLiteral("#FtpServer=") + vmk::SealValue(server.server());
        else if (line.startsWith(QLatin1String("#FtpUserName=")))
            kept << QStringLiteral("#FtpUserName=") + vmk::SealValue(QStringLiteral("alice"));
        else if (line.startsWith(QLatin1String("#FtpPassword=")))
            kept << QStringLiteral("#FtpPassword=") + vmk::SealValue(QStringLiteral("s3cret"));
        else
            kept << line;
    }
    ASSERT_TRUE(writeFile(cnf, kept.join(QStringLiteral("\r\n")).toUtf8()));
    r = runVmk({ "ftp", "ls", "ftp:///Respaldos/PC%201/", "--program-folder", program.path() });
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_EQ(r.out, "ago-01-2026,10.00.00.zip\n");
}

// A certificate that does not verify is refused with its SHA-256 fingerprint and
// accepted when exactly that fingerprint is given; the login and the data then
// travel under TLS (the server takes nothing else).
TEST(FtpClient, TlsServerCertificateRefusedThenAcceptedByFingerprint)
{
    TlsServer server;
    if (server.skipReason())
        GTEST_SKIP() << server.skipReason();
    const QByteArray pin = Fingerprint::parse(server.fingerprintText());
    ASSERT_EQ(pin.size(), 32);

    FtpClient c;
    c.setServer(server.server());
    c.setUserName(server.user());
    c.setPassword(QStringLiteral("Pw-9x7"));
    EXPECT_FALSE(c.connect());
    EXPECT_EQ(c.lastError().failure, FtpFailure::CertificateUntrusted);
    EXPECT_EQ(c.lastError().fingerprint, pin);
    EXPECT_EQ(c.lastError().curlCode, 60);
    EXPECT_TRUE(server.fingerprintText().endsWith(c.lastError().detail().mid(8)))
        << c.lastError().detail().toStdString();

    QByteArray other = pin;
    other[0] = static_cast<char>(other[0] ^ 1);
    c.setAcceptedFingerprint(other);
    EXPECT_FALSE(c.connect());
    EXPECT_EQ(c.lastError().failure, FtpFailure::CertificateUntrusted);

    c.setAcceptedFingerprint(pin);
    ASSERT_TRUE(c.connect()) << c.lastError().words().toStdString() << " " << c.lastError().serverReply.toStdString();
    EXPECT_TRUE(c.isSecure());
    QTemporaryDir local;
    const QByteArray data = randomBytes(1500000);
    ASSERT_TRUE(writeFile(local.filePath(QStringLiteral("a.zip")), data));
    ASSERT_TRUE(c.makeFolders(QStringLiteral("/Respaldos")));
    ASSERT_TRUE(c.upload(local.filePath(QStringLiteral("a.zip")), QStringLiteral("/Respaldos/ a b.zip")))
        << c.lastError().words().toStdString() << " " << c.lastError().serverReply.toStdString();
    const auto listed = c.list(QStringLiteral("/Respaldos"));
    ASSERT_TRUE(listed.has_value()) << c.lastError().words().toStdString();
    EXPECT_EQ(namesOf(*listed), QStringList { " a b.zip" });
    ASSERT_TRUE(c.download(QStringLiteral("/Respaldos/ a b.zip"), local.filePath(QStringLiteral("back.zip"))));
    EXPECT_EQ(readFile(local.filePath(QStringLiteral("back.zip"))), data);
    EXPECT_EQ(readFile(server.home() + QStringLiteral("/Respaldos/ a b.zip")), data);
    RecordProperty("tls12_after_522", c.tls12Only() ? "yes" : "no");

    // The same from the command line, the fingerprint with and without colons.
    const QString pass = local.filePath(QStringLiteral("pass"));
    ASSERT_TRUE(writeFile(pass, "Pw-9x7\n"));
    auto r = runVmk({ "ftp", "ls", server.url(QStringLiteral("Respaldos/")), "--pass-file", pass });
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(r.err.contains(server.fingerprintText().mid(server.fingerprintText().indexOf(u'=') + 1)))
        << r.err.toStdString();
    r = runVmk({ "ftp", "ls", server.url(QStringLiteral("Respaldos/")), "--pass-file", pass, "--fingerprint",
        server.fingerprintText().mid(server.fingerprintText().indexOf(u'=') + 1) });
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_EQ(r.out, " a b.zip\n");
    r = runVmk(
        { "ftp", "get", server.url(QStringLiteral("Respaldos/%20a%20b.zip")), local.filePath(QStringLiteral("cli.zip")),
            "--pass-file", pass, "--fingerprint", QString::fromLatin1(pin.toHex()) });
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_EQ(readFile(local.filePath(QStringLiteral("cli.zip"))), data);
    r = runVmk({ "ftp", "ls", server.url(QString()), "--pass-file", pass, "--fingerprint", "AB:CD" });
    EXPECT_EQ(r.code, 2);

    // The certificate the owner accepted on the screen (#FtpCertificate) serves the
    // device's own server without --fingerprint.
    QTemporaryDir program;
    ASSERT_EQ(runVmk({ "settings", "--program-folder", program.path() }).code, 0);
    const QString cnf = program.filePath(QStringLiteral("VMK.cnf"));
    QByteArray settings = readFile(cnf);
    for (const auto& [key, value] : { std::pair { "#FtpServer", server.server() }, { "#FtpUserName", server.user() },
             { "#FtpPassword", TlsServer::password() } }) {
        const qsizetype at = settings.indexOf(QByteArray(key) + '=');
        ASSERT_GE(at, 0) << key;
        const qsizetype end = settings.indexOf("\r\n", at);
        settings.replace(at, end - at, QByteArray(key) + '=' + vmk::SealValue(value).toLatin1());
    }
    ASSERT_TRUE(writeFile(cnf, settings));
    r = runVmk({ "ftp", "ls", "ftp:///Respaldos/", "--program-folder", program.path() });
    EXPECT_EQ(r.code, 1) << r.err.toStdString();
    settings += "#FtpCertificate=" + vmk::SealValue(Fingerprint::text(pin)).toLatin1() + "\r\n";
    ASSERT_TRUE(writeFile(cnf, settings));
    r = runVmk({ "ftp", "ls", "ftp:///Respaldos/", "--program-folder", program.path() });
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_EQ(r.out, " a b.zip\n");
}
