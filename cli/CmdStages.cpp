// vmk compress, decompress, encrypt, decrypt, list: the pack and seal stages from a terminal.
#include "CliFailure.h"
#include "CommandLine.h"
#include "CommandRegistry.h"
#include "ErrorWords.h"
#include "MessageCapture.h"
#include "PassPhraseInput.h"

#include "components/cipher/CipherError.h"
#include "components/zip/ZipArchiver.h"
#include "components/zip/ZipCodes.h"
#include "filemanager/Stages.h"
#include "foundation/Globals.h"
#include "foundation/Settings.h"
#include "platform/DriveMap.h"
#include "platform/TerminalInput.h"

#include <QFile>
#include <QFileInfo>
#include <QTextStream>

#include <cstdio>
#include <iostream>
#include <string>

namespace
{
// A host path in the program's logical form, as the stages and the zip component take it.
QString logicalOf(const QString& hostPath)
{
    return vmk::DriveMap::instance().toLogical(hostPath);
}

void warn(const QString& command, const QString& line)
{
    std::fprintf(stderr, "vmk %s: %s\n", command.toUtf8().constData(), line.toUtf8().constData());
}

// A file to write named by `arg`; an existing folder takes a file of the source's name.
QString targetFor(const QString& arg, const QString& sourcePath)
{
    const QString path = CommandLine::hostPath(arg, CommandLine::PathUse::Write);
    if (QFileInfo(path).isDir() && !QFileInfo(path).isSymLink())
        return CommandLine::outputFile(path + u'/' + QFileInfo(sourcePath).fileName());
    return CommandLine::outputFile(arg);
}

// Sources are files and folders; a folder goes in whole, its tree under its own
// name, through the component's "*<r>" recursion.
int compress(const QStringList& args)
{
    const CommandLine cl(args, { { QStringLiteral("--method"), true } });
    cl.expectOperands(2, -1, { QStringLiteral("SOURCE"), QStringLiteral("ARCHIVE") });
    const QString methodName = cl.value(QStringLiteral("--method"), QStringLiteral("deflate"));
    int method = 0;
    if (methodName == QLatin1String("deflate"))
        method = vmk::zip::MethodDeflate;
    else if (methodName == QLatin1String("bzip2"))
        method = vmk::zip::MethodBzip2;
    else
        throw CliFailure::usage(QStringLiteral("--method ") + methodName, QStringLiteral("valor no válido"));

    QStringList sources = cl.operands();
    const QString archiveArg = sources.takeLast();
    QStringList lines, folders;
    QString firstSource;
    for (const QString& arg : sources) {
        const QString path = CommandLine::hostPath(arg);
        if (QFileInfo(path).isDir()) {
            const QString logical = logicalOf(path);
            folders << logical;
            lines << (logical.endsWith(u'\\') ? logical : logical + u'\\') + QStringLiteral("*<r>");
        } else {
            lines << logicalOf(CommandLine::inputFile(arg));
        }
        if (firstSource.isEmpty())
            firstSource = path;
    }
    const QString archive
        = sources.size() == 1 ? targetFor(archiveArg, firstSource) : CommandLine::outputFile(archiveArg);

    vmk::zip::ZipArchiver zip;
    zip.setArchiveName(logicalOf(archive));
    zip.setCompressionLevel(9);
    zip.setCompressionMethod(method);
    zip.setReplaceArchive(true);
    zip.setPreservePaths(true);
    zip.setFilesToProcess(lines.join(QStringLiteral("\r\n")));
    zip.setFilesToExclude(QString());
    // A folder's files are stored below the folder's own name, as zip -r does.
    zip.events().preprocessingFile = [&folders](QString& stored, const QString& source, qint64, bool&) {
        for (const QString& folder : folders) {
            if (folder.endsWith(u'\\'))
                continue; // a drive root has no name of its own
            if (source.startsWith(folder + u'\\')) {
                stored = folder.mid(folder.lastIndexOf(u'\\') + 1) + u'\\' + stored;
                return;
            }
        }
    };
    int skipped = 0;
    zip.events().skippingFile = [&skipped](const QString& name, int reason) {
        ++skipped;
        warn(QStringLiteral("compress"),
            CliFailure::line(vmk::DriveMap::instance().nativeOfArgument(name), ErrorWords::zipSkip(reason), reason));
    };
    const int result = zip.compress();
    if (result != 0)
        throw CliFailure(archiveArg, ErrorWords::zipResult(result), result, ErrorWords::zipExitCode(result));
    return skipped > 0 ? CliFailure::kError : 0;
}

int decompress(const QStringList& args)
{
    const CommandLine cl(args, {});
    cl.expectOperands(2, 2, { QStringLiteral("ARCHIVE"), QStringLiteral("FOLDER") });
    const QString archive = CommandLine::inputFile(cl.operands().at(0));
    const QString folder = CommandLine::hostPath(cl.operands().at(1));
    if (QFileInfo::exists(folder) && !QFileInfo(folder).isDir())
        throw CliFailure(cl.operands().at(1), QStringLiteral("no es una carpeta"));
    vmk::zip::ZipArchiver zip;
    zip.events().skippingFile = [](const QString& name, int reason) {
        warn(QStringLiteral("decompress"), CliFailure::line(name, ErrorWords::zipSkip(reason), reason));
    };
    int result = 0;
    {
        const MessageCapture quiet;
        vmk::DecompressFile(logicalOf(archive), logicalOf(folder), zip, &result);
    }
    if (result != 0)
        throw CliFailure(cl.operands().at(0), ErrorWords::zipResult(result), result, ErrorWords::zipExitCode(result));
    return 0;
}

int seal(const QStringList& args, bool encrypt)
{
    const CommandLine cl(args, { { QStringLiteral("--algorithm"), true }, { QStringLiteral("--pass-file"), true } });
    cl.expectOperands(2, 2, { QStringLiteral("SOURCE"), QStringLiteral("TARGET") });
    const QString algorithm = cl.value(QStringLiteral("--algorithm"), QStringLiteral("0"));
    if (algorithm != QLatin1String("0") && algorithm != QLatin1String("1"))
        throw CliFailure::usage(QStringLiteral("--algorithm ") + algorithm, QStringLiteral("valor no válido"));
    const QString source = CommandLine::inputFile(cl.operands().at(0));
    const QString target = targetFor(cl.operands().at(1), source);
    vmk::G().PassPhrase = readPassPhrase(cl.value(QStringLiteral("--pass-file")));
    vmk::S().EncripAlgorithm = algorithm.toInt();
    int error = 0;
    {
        const MessageCapture quiet;
        if (encrypt)
            vmk::EncryptFile(logicalOf(source), logicalOf(target), &error);
        else
            vmk::DecryptFile(logicalOf(source), logicalOf(target), &error);
    }
    if (error == 0)
        return 0;
    using vmk::cipher::CipherError;
    const bool aboutTarget
        = error == static_cast<int>(CipherError::TargetUnwritable) || error == static_cast<int>(CipherError::DiskFull);
    throw CliFailure(aboutTarget ? cl.operands().at(1) : cl.operands().at(0), ErrorWords::cipher(error), error,
        ErrorWords::cipherExitCode(error));
}

int list(const QStringList& args)
{
    const CommandLine cl(args, {});
    cl.expectOperands(1, 1, { QStringLiteral("ARCHIVE") });
    const QString archive = CommandLine::inputFile(cl.operands().at(0));
    vmk::zip::ZipArchiver zip;
    QTextStream out(stdout);
    zip.events().listingFile = [&](const QString& name, qint64 size) { out << name << '\t' << size << '\n'; };
    zip.setArchiveName(logicalOf(archive));
    const int result = zip.listArchive();
    out.flush();
    if (result != 0)
        throw CliFailure(cl.operands().at(0), ErrorWords::zipResult(result), result, ErrorWords::zipExitCode(result));
    return 0;
}

const QString kPassHelp
    = QStringLiteral("  --pass-file FILE   the pass phrase is the first line of FILE; without it, it is\n"
                     "                     read from the terminal (not echoed) or from standard input");

CommandRegistry::Registrar r1("compress",
    { QStringLiteral("compress [--method deflate|bzip2] SOURCE... ARCHIVE"),
        QStringLiteral("pack files and whole folders into a zip archive"),
        QStringLiteral("  SOURCE             a file, or a folder: its whole tree goes in under the folder's name\n"
                       "  ARCHIVE            the zip file to write (replaced if it exists); with one SOURCE\n"
                       "                     it may be a folder, which then takes a file of SOURCE's name\n"
                       "  --method METHOD    deflate (the default) or bzip2"),
        compress });
CommandRegistry::Registrar r2("decompress",
    { QStringLiteral("decompress ARCHIVE FOLDER"), QStringLiteral("unpack a zip archive into a folder"),
        QStringLiteral("  Entries that cannot be written safely are named on standard error and left out."),
        decompress });
CommandRegistry::Registrar r3("encrypt",
    { QStringLiteral("encrypt [--algorithm 0|1] [--pass-file FILE] SOURCE TARGET"),
        QStringLiteral("seal a file under a pass phrase"),
        QStringLiteral("  --algorithm N      0 AES-256 (the default), 1 Twofish-256\n") + kPassHelp,
        [](const QStringList& a) { return seal(a, true); } });
CommandRegistry::Registrar r4("decrypt",
    { QStringLiteral("decrypt [--pass-file FILE] SOURCE TARGET"), QStringLiteral("open a sealed file"),
        QStringLiteral("  The cipher is read from the file. A wrong pass phrase and a damaged or cut file\n"
                       "  are told apart, and no TARGET is written.\n")
            + kPassHelp,
        [](const QStringList& a) { return seal(a, false); } });
CommandRegistry::Registrar r5("list",
    { QStringLiteral("list ARCHIVE"), QStringLiteral("the entries of a zip archive and their sizes"), QString(),
        list });
} // namespace
