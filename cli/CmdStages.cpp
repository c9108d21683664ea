// vmk compress, decompress, encrypt, decrypt, list: the pack and seal stages from a terminal.
#include "CommandRegistry.h"

#include "components/zip/ZipArchiver.h"
#include "filemanager/Stages.h"
#include "foundation/Globals.h"
#include "foundation/Settings.h"
#include "platform/DriveMap.h"

#include <QFile>
#include <QFileInfo>
#include <QTextStream>

#include <cstdio>
#include <iostream>
#include <string>
#include <termios.h>
#include <unistd.h>

namespace
{
// A host path given on the command line, in the program's logical form.
QString logicalOf(const QString& arg)
{
    return vmk::DriveMap::instance().toLogical(QFileInfo(arg).absoluteFilePath());
}

int usageError(const char* usage)
{
    std::fprintf(stderr, "usage: %s\n", usage);
    return 2;
}

// Takes "--name VALUE" out of args; returns false when the option is malformed.
bool takeOption(QStringList& args, const QString& name, QString& value)
{
    const qsizetype i = args.indexOf(name);
    if (i < 0)
        return true;
    if (i + 1 >= args.size())
        return false;
    value = args.at(i + 1);
    args.remove(i, 2);
    return true;
}

// A choice among 0..max given as text.
bool parseIndex(const QString& text, int max, int& out)
{
    bool ok = false;
    const int v = text.toInt(&ok);
    if (!ok || v < 0 || v > max)
        return false;
    out = v;
    return true;
}

// The pass phrase comes from a file or from the terminal without echo, never
// from the command line where other users could read it.
bool readPassPhrase(const QString& passFile, QString& out)
{
    if (!passFile.isEmpty()) {
        QFile f(passFile);
        if (!f.open(QIODevice::ReadOnly)) {
            std::fprintf(stderr, "vmk: cannot read the pass file %s\n", passFile.toUtf8().constData());
            return false;
        }
        QString line = QString::fromUtf8(f.readLine());
        while (line.endsWith('\n') || line.endsWith('\r'))
            line.chop(1);
        out = line;
        return true;
    }
    const bool tty = isatty(STDIN_FILENO);
    termios saved {};
    if (tty) {
        std::fprintf(stderr, "Pass phrase: ");
        std::fflush(stderr);
        tcgetattr(STDIN_FILENO, &saved);
        termios quiet = saved;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(STDIN_FILENO, TCSANOW, &quiet);
    }
    std::string line;
    const bool got = static_cast<bool>(std::getline(std::cin, line));
    if (tty) {
        tcsetattr(STDIN_FILENO, TCSANOW, &saved);
        std::fprintf(stderr, "\n");
    }
    if (!got) {
        std::fprintf(stderr, "vmk: no pass phrase given\n");
        return false;
    }
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
    out = QString::fromStdString(line);
    return true;
}

int compress(QStringList args)
{
    const char* usage = "vmk compress [--method 0|1|2] SRC DEST";
    QString method = "0";
    int index = 0;
    if (!takeOption(args, "--method", method) || !parseIndex(method, 2, index) || args.size() != 2)
        return usageError(usage);
    if (!QFileInfo(args[0]).isFile()) {
        std::fprintf(stderr, "vmk compress: no such file %s\n", args[0].toUtf8().constData());
        return 1;
    }
    QString dest = args[1];
    if (QFileInfo(dest).isDir())
        dest += "/" + QFileInfo(args[0]).fileName();
    vmk::S().CompAlgorithm = index;
    vmk::zip::ZipArchiver zip;
    return vmk::CompressFile(logicalOf(args[0]), logicalOf(dest), zip) ? 0 : 1;
}

int decompress(QStringList args)
{
    if (args.size() != 2)
        return usageError("vmk decompress ARCHIVE FOLDER");
    vmk::zip::ZipArchiver zip;
    return vmk::DecompressFile(logicalOf(args[0]), logicalOf(args[1]), zip) ? 0 : 1;
}

int seal(QStringList args, bool encrypt)
{
    const char* usage = encrypt ? "vmk encrypt [--algorithm 0|1] [--pass-file F] SRC DEST"
                                : "vmk decrypt [--algorithm 0|1] [--pass-file F] SRC DEST";
    QString algorithm = "0", passFile;
    int index = 0;
    if (!takeOption(args, "--algorithm", algorithm) || !takeOption(args, "--pass-file", passFile)
        || !parseIndex(algorithm, 1, index) || args.size() != 2)
        return usageError(usage);
    QString pass;
    if (!readPassPhrase(passFile, pass))
        return 1;
    vmk::S().EncripAlgorithm = index;
    vmk::G().PassPhrase = pass;
    const bool ok = encrypt ? vmk::EncryptFile(logicalOf(args[0]), logicalOf(args[1]))
                            : vmk::DecryptFile(logicalOf(args[0]), logicalOf(args[1]));
    return ok ? 0 : 1;
}

int list(const QStringList& args)
{
    if (args.size() != 1)
        return usageError("vmk list ARCHIVE");
    vmk::zip::ZipArchiver zip;
    QTextStream out(stdout);
    zip.events().listingFile = [&](const QString& name, qint64 size) { out << name << '\t' << size << '\n'; };
    zip.setArchiveName(logicalOf(args[0]));
    const int result = zip.listArchive();
    out.flush();
    if (result != 0) {
        std::fprintf(stderr, "vmk list: cannot read the archive %s (%d)\n", args[0].toUtf8().constData(), result);
        return 1;
    }
    return 0;
}

CommandRegistry::Registrar r1("compress", "compress [--method 0|1|2] SRC DEST", compress);
CommandRegistry::Registrar r2("decompress", "decompress ARCHIVE FOLDER", decompress);
CommandRegistry::Registrar r3("encrypt", "encrypt [--algorithm 0|1] [--pass-file F] SRC DEST",
    [](const QStringList& a) { return seal(a, true); });
CommandRegistry::Registrar r4("decrypt", "decrypt [--algorithm 0|1] [--pass-file F] SRC DEST",
    [](const QStringList& a) { return seal(a, false); });
CommandRegistry::Registrar r5("list", "list ARCHIVE", list);
} // namespace
