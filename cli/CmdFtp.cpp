// vmk ftp: the backup's remote store from a terminal, for scheduled copies.

#include "CliFailure.h"
#include "CommandLine.h"
#include "CommandRegistry.h"
#include "FolderOptions.h"
#include "MessageCapture.h"

#include "backup/FtpErrorWords.h"
#include "components/ftp/Fingerprint.h"
#include "components/ftp/FtpClient.h"
#include "components/ftp/FtpLocation.h"
#include "foundation/Settings.h"
#include "foundation/Translate.h"
#include "platform/NativeName.h"

#include <QFile>
#include <QFileInfo>

#include <cstdio>

namespace
{
using vmk::ftp::FtpClient;
using vmk::ftp::FtpFailure;
using vmk::ftp::FtpLocation;

[[noreturn]] void failWith(const FtpClient& client)
{
    const vmk::ftp::FtpError& e = client.lastError();
    const QString words = vmk::FtpErrorWords(e);
    const bool refused = e.failure == FtpFailure::LoginRefused || e.failure == FtpFailure::CertificateUntrusted;
    throw CliFailure(e.path, words, e.curlCode, refused ? CliFailure::kRefused : CliFailure::kError);
}

QString serverText(const QString& host, int port)
{
    return QStringLiteral("ftp://") + (host.contains(u':') ? u'[' + host + u']' : host) + u':' + QString::number(port);
}

// The first line of the file, without its line end.
QString passwordFrom(const QString& arg)
{
    QFile file(CommandLine::inputFile(arg));
    if (!file.open(QIODevice::ReadOnly))
        throw CliFailure(arg, QStringLiteral("no se puede leer"));
    QByteArray line = file.readLine();
    while (line.endsWith('\n') || line.endsWith('\r'))
        line.chop(1);
    return vmk::NativeName::fromBytes(line);
}

int ftpCommand(const QStringList& args)
{
    QList<CliOption> options = FolderOptions();
    options << CliOption { QStringLiteral("--pass-file"), true } << CliOption { QStringLiteral("--fingerprint"), true };
    const CommandLine cl(args, options);
    cl.expectOperands(2, 3, { QStringLiteral("put|get|ls|rm|mkdir"), QStringLiteral("URL") });
    const QStringList& ops = cl.operands();
    const QString verb = ops.at(0);
    const bool twoPaths = verb == QLatin1String("put") || verb == QLatin1String("get");
    if (verb != QLatin1String("ls") && verb != QLatin1String("rm") && verb != QLatin1String("mkdir") && !twoPaths)
        throw CliFailure::usage(verb, QStringLiteral("orden desconocida"));
    if (twoPaths)
        cl.expectOperands(3, 3,
            { verb, verb == QLatin1String("put") ? QStringLiteral("FILE") : QStringLiteral("URL"),
                verb == QLatin1String("put") ? QStringLiteral("URL") : QStringLiteral("FILE") });
    else
        cl.expectOperands(2, 2, { verb, QStringLiteral("URL") });
    const QString urlText = verb == QLatin1String("put") ? ops.at(2) : ops.at(1);
    // "ftp:///PATH" or a bare "/PATH" names the device's own server.
    const QString parsedText = urlText.startsWith(u'/') ? QStringLiteral("ftp://") + urlText : urlText;
    std::optional<FtpLocation> url;
    if (parsedText.startsWith(QLatin1String("ftp:///"), Qt::CaseInsensitive)) {
        url = FtpLocation {};
        url->host.clear();
        url->path = FtpLocation::parse(QStringLiteral("ftp://x/") + parsedText.mid(7)).value_or(FtpLocation {}).path;
    } else {
        url = FtpLocation::parse(parsedText);
    }
    if (!url || !parsedText.startsWith(QLatin1String("ftp://"), Qt::CaseInsensitive))
        throw CliFailure::usage(urlText, QStringLiteral("dirección de servidor no válida"));

    QString host = url->host;
    int port = url->port;
    QString user = url->user;
    QString password;
    QByteArray devicePin; // the certificate the owner accepted on the screen, for the device's server
    const bool needSettings = host.isEmpty() || !url->hasUser || !cl.has(QStringLiteral("--pass-file"));
    if (needSettings) {
        ApplyFolderOptions(cl);
        const MessageCapture quiet;
        vmk::ReadSettings();
        const auto server = FtpLocation::parse(vmk::S().FtpServer);
        const bool sameServer = server && (host.isEmpty() || (server->host == host && server->port == port));
        if (host.isEmpty()) {
            if (!server)
                throw CliFailure(QStringLiteral("#FtpServer"), QStringLiteral("dirección de servidor no válida"));
            host = server->host;
            port = server->port;
        }
        // The device's user name and password go only to the device's server.
        if (sameServer) {
            devicePin = vmk::ftp::Fingerprint::parse(vmk::S().FtpCertificate);
            if (!url->hasUser)
                user = vmk::S().FtpUserName;
            if (user == vmk::S().FtpUserName)
                password = vmk::S().FtpPassword;
        }
    }
    if (cl.has(QStringLiteral("--pass-file")))
        password = passwordFrom(cl.value(QStringLiteral("--pass-file")));

    FtpClient client;
    client.setServer(serverText(host, port));
    client.setUserName(user);
    client.setPassword(password);
    if (cl.has(QStringLiteral("--fingerprint"))) {
        const QByteArray pin = vmk::ftp::Fingerprint::parse(cl.value(QStringLiteral("--fingerprint")));
        if (pin.isEmpty())
            throw CliFailure::usage(
                cl.value(QStringLiteral("--fingerprint")), QStringLiteral("la huella SHA-256 no es válida"));
        client.setAcceptedFingerprint(pin);
    } else if (!devicePin.isEmpty()) {
        client.setAcceptedFingerprint(devicePin);
    }
    if (!client.connect())
        failWith(client);
    // The path is read from the login folder, as in every FTP address.
    const QString remote = url->path;
    const bool folderMeant = remote.isEmpty() || remote.endsWith(u'/');

    if (verb == QLatin1String("ls")) {
        const auto entries = client.list(remote.isEmpty() ? QStringLiteral(".") : remote);
        if (!entries)
            failWith(client);
        for (const vmk::ftp::RemoteEntry& e : *entries) {
            const QByteArray line = vmk::NativeName::toBytes(e.name) + (e.folder ? "/\n" : "\n");
            std::fwrite(line.constData(), 1, static_cast<size_t>(line.size()), stdout);
        }
        return 0;
    }
    if (verb == QLatin1String("mkdir")) {
        if (!client.makeFolder(remote))
            failWith(client);
        return 0;
    }
    if (verb == QLatin1String("rm")) {
        if (!(folderMeant ? client.removeFolder(remote) : client.removeFile(remote)))
            failWith(client);
        return 0;
    }
    if (verb == QLatin1String("get")) {
        if (folderMeant)
            throw CliFailure::usage(urlText, QStringLiteral("es una carpeta; se esperaba un archivo"));
        const QString file = CommandLine::outputFile(ops.at(2));
        if (!client.download(remote, file))
            failWith(client);
        return 0;
    }
    // put: "URL/" keeps the file's name; the folders on the way are made.
    const QString file = CommandLine::inputFile(ops.at(1));
    const QString target = folderMeant ? remote + QFileInfo(file).fileName() : remote;
    const auto absolute = client.resolve(target);
    if (!absolute) {
        client.upload(file, target); // words the refusal of the name
        failWith(client);
    }
    const QString folder = absolute->left(absolute->lastIndexOf(u'/') + 1);
    if (!client.makeFolders(folder) || !client.upload(file, *absolute))
        failWith(client);
    return 0;
}

CommandRegistry::Registrar ftpReg("ftp",
    { QStringLiteral("ftp put FILE URL/|URL/NAME | get URL FILE | ls URL/ | rm URL | mkdir URL/ [--pass-file FILE] "
                     "[--fingerprint SHA256] [--program-folder DIR] [--device DIR]"),
        QStringLiteral("send, receive, list and delete backups on an FTP server"),
        QStringLiteral("  URL                   ftp://USER@HOST[:PORT]/PATH; the path is read from the login folder\n"
                       "                        (%2F at its start makes it absolute). Without HOST (ftp:///PATH),\n"
                       "                        the device's #FtpServer; without USER, the device's #FtpUserName.\n"
                       "  put FILE URL/         sends FILE under its own name (URL/NAME: under NAME), through\n"
                       "                        NAME.part renamed when complete; missing folders are made\n"
                       "  get URL FILE          receives into FILE, replaced only when complete\n"
                       "  ls URL/               one entry a line, its name exactly, \"/\" after a folder's name\n"
                       "  rm URL                deletes a file (URL/: an empty folder)\n"
                       "  mkdir URL/            makes a folder\n"
                       "  --pass-file FILE      the password is the first line of FILE (default: the device's\n"
                       "                        #FtpPassword, given only to the device's own server and user)\n"
                       "  --fingerprint SHA256  accept the server certificate of this SHA-256 fingerprint although\n"
                       "                        it does not verify (as `openssl x509 -fingerprint -sha256` prints it,\n"
                       "                        colons optional; default: the device's #FtpCertificate, the one\n"
                       "                        the owner accepted on the screen, for the device's own server)\n")
            + FolderOptionsHelp()
            + QStringLiteral("\n  TLS is used whenever the server offers it, and then the password travels inside it."),
        ftpCommand });
} // namespace
