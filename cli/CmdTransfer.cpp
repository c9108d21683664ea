// vmk copy / move: the file manager's transfer engine from a terminal, for scripts.
#include "CliFailure.h"
#include "CommandLine.h"
#include "CommandRegistry.h"
#include "EngineLoading.h"
#include "FolderOptions.h"
#include "PassPhraseInput.h"

#include "components/engine/Engine.h"
#include "filemanager/Transfer.h"
#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "foundation/Progress.h"
#include "foundation/Settings.h"
#include "foundation/Translate.h"
#include "platform/DriveMap.h"
#include "platform/FileSearch.h"
#include "platform/LogicalPath.h"
#include "platform/NativeName.h"
#include "platform/TerminalInput.h"

#include <QDir>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <cstdio>

namespace
{
// Paths are printed with their real bytes, those that are not UTF-8 included.
void print(FILE* stream, const QString& line)
{
    std::fputs(vmk::NativeName::toBytes(line).constData(), stream);
    std::fputc('\n', stream);
}

QString nativeOf(const QString& logical)
{
    return vmk::DriveMap::instance().nativeOfArgument(logical);
}

// The progress of the item on standard error, one line redrawn in place.
class TerminalProgress
{
public:
    explicit TerminalProgress(bool on)
        : m_on(on)
    {
        if (!m_on)
            return;
        m_clock.start();
        m_labels = vmk::SetTransferLabelsHook([this](const QString& name, const QString&) {
            m_name = name;
            m_percent = 0;
            draw();
        });
        m_file = vmk::SetProgressBarFHook([this](int percent) {
            m_percent = percent;
            draw();
        });
    }
    ~TerminalProgress()
    {
        if (!m_on)
            return;
        vmk::SetTransferLabelsHook(m_labels);
        vmk::SetProgressBarFHook(m_file);
        clear();
    }
    TerminalProgress(const TerminalProgress&) = delete;
    TerminalProgress& operator=(const TerminalProgress&) = delete;

    // Before a message line, so the two do not share a line.
    void clear()
    {
        if (m_on && m_drawn) {
            std::fputs("\r\033[K", stderr);
            m_drawn = false;
        }
    }

private:
    // At most ten lines a second: a folder of small files would otherwise spend
    // its time writing to the terminal.
    void draw()
    {
        if (m_drawn && m_clock.elapsed() < 100)
            return;
        m_clock.restart();
        const QString line = QStringLiteral("\r\033[K[%1/%2] %3%  %4")
                                 .arg(std::max(vmk::G().DoneFiles, 1))
                                 .arg(vmk::G().TotalFiles)
                                 .arg(m_percent, 3)
                                 .arg(m_name);
        std::fputs(vmk::NativeName::toBytes(line).constData(), stderr);
        std::fflush(stderr);
        m_drawn = true;
    }

    bool m_on;
    bool m_drawn = false;
    QElapsedTimer m_clock;
    QString m_name;
    int m_percent = 0;
    vmk::TransferLabelsHook m_labels;
    vmk::ProgressHook m_file;
};

int transfer(const QStringList& args, bool move)
{
    const QString command = move ? QStringLiteral("move") : QStringLiteral("copy");
    const QList<CliOption> stageOptions { { QStringLiteral("--compress"), false },
        { QStringLiteral("--decompress"), false }, { QStringLiteral("--encrypt"), false },
        { QStringLiteral("--decrypt"), false } };
    const CommandLine cl(args,
        stageOptions
            + QList<CliOption> { { QStringLiteral("--pass-file"), true }, { QStringLiteral("--scan"), false },
                { QStringLiteral("--db"), true }, { QStringLiteral("--overwrite"), false } }
            + FolderOptions());
    cl.expectOperands(2, -1, { QStringLiteral("SRC"), QStringLiteral("DESTFOLDER") });
    int code = vmk::TransferCopy;
    QString stage;
    const int codes[] = { vmk::TransferCompress, vmk::TransferDecompress, vmk::TransferEncrypt, vmk::TransferDecrypt };
    for (int i = 0; i < 4; ++i) {
        if (!cl.has(stageOptions[i].name))
            continue;
        if (!stage.isEmpty())
            throw CliFailure::usage(stage + u' ' + stageOptions[i].name, QStringLiteral("elija una sola etapa"));
        stage = stageOptions[i].name;
        code = codes[i];
    }
    const bool scan = cl.has(QStringLiteral("--scan"));
    if (cl.has(QStringLiteral("--db")) && !scan)
        throw CliFailure::usage(QStringLiteral("--db"), QStringLiteral("solo con --scan"));
    const bool overwrite = cl.has(QStringLiteral("--overwrite"));
    if (cl.has(QStringLiteral("--device")) || cl.has(QStringLiteral("--program-folder"))) {
        ApplyFolderOptions(cl);
        vmk::ReadSettings();
    }

    const vmk::DriveMap& map = vmk::DriveMap::instance();
    QStringList sources = cl.operands();
    const QString destArg = sources.takeLast();
    QStringList logicalSources;
    for (const QString& arg : sources) {
        const QString path = CommandLine::hostPath(arg);
        if (!vmk::FileSearch::entryOfNative(path))
            throw CliFailure(arg, QStringLiteral("no existe"));
        const QString logical = map.toLogical(path);
        if (logical.isEmpty())
            throw CliFailure(arg, QStringLiteral("no está en ninguna unidad"));
        logicalSources << logical;
    }
    const QString dest = CommandLine::hostPath(destArg, CommandLine::PathUse::Write);
    const auto destEntry = vmk::FileSearch::entryOfNative(dest);
    if (destEntry && destEntry->kind != vmk::EntryKind::Folder)
        throw CliFailure(destArg, QStringLiteral("no es una carpeta"));
    if (!destEntry && !QDir().mkpath(dest))
        throw CliFailure(destArg, QStringLiteral("no se puede escribir"));
    const QString logicalDest = map.toLogical(dest);
    if (logicalDest.isEmpty())
        throw CliFailure(destArg, QStringLiteral("no está en ninguna unidad"));

    if (code == vmk::TransferEncrypt || code == vmk::TransferDecrypt)
        vmk::G().PassPhrase = readPassPhrase(cl.value(QStringLiteral("--pass-file")));
    vmk::S().ScanFilesOperations = scan ? QStringLiteral("1") : QStringLiteral("0");
    if (scan) {
        loadEngine(cl.value(QStringLiteral("--db")));
        vmk::G().EngineLoaded = true;
    }

    TerminalProgress progress(vmk::TerminalInput::standardErrorIsTerminal());
    // The engine's notices become lines of standard error, their subject (the line
    // after the words) as a host path; a question about an existing file is
    // answered by --overwrite, one about an infected file with "leave it out".
    QSet<QString> named;
    const QString existsQuestion = QStringLiteral("¿El archivo ya existe, desea remplazarlo?");
    const vmk::MessageAnswerer previous = vmk::SetMessageAnswerer([&](const QString& text, int kind) {
        if (kind != 0) {
            if (text.startsWith(existsQuestion))
                return overwrite ? 6 : 7;
            return text.startsWith(vmk::Translate(QStringLiteral("¡Archivo infectado! ¿Desea excluir este archivo?")))
                ? 6
                : 7;
        }
        QStringList lines = text.split(QRegularExpression(QStringLiteral("\r?\n")), Qt::SkipEmptyParts);
        const QString words = lines.value(0);
        QString subject = lines.mid(1).join(u' ');
        if (vmk::DriveMap::hasDriveLetter(subject)) {
            subject = nativeOf(subject);
            named.insert(subject);
        }
        progress.clear();
        print(stderr,
            QStringLiteral("vmk ") + command + QStringLiteral(": ")
                + (vmk::DriveMap::hasDriveLetter(lines.mid(1).join(u' ')) ? subject + QStringLiteral(": ") + words
                                                                          : lines.join(u' ')));
        return 0;
    });

    bool infected = false, kept = false, failed = false;
    vmk::G().OperationCode = code;
    vmk::G().MoveFlag = move;
    vmk::G().CancelRequested = false;
    const QString notDone = move ? QStringLiteral("no se movió") : QStringLiteral("no se copió");
    auto report = [&](const QString& logical, const QString& words) {
        const QString native = nativeOf(logical);
        progress.clear();
        print(stderr, QStringLiteral("vmk ") + command + QStringLiteral(": ") + CliFailure::line(native, words));
    };
    for (const QString& logical : logicalSources) {
        const QString native = nativeOf(logical);
        const auto entry = vmk::FileSearch::entryOfNative(native);
        const QString name = native.mid(native.lastIndexOf(u'/') + 1);
        if (entry && entry->kind == vmk::EntryKind::Folder) {
            vmk::TransferItem(vmk::LogicalPath::withSlash(logical), logicalDest, vmk::DriveMap::encodeName(name));
        } else {
            // A single file is replaced without a question in the engine; here it is kept unless asked.
            const QString target = dest + u'/' + name;
            if (!overwrite && vmk::FileSearch::entryOfNative(target)) {
                kept = true;
                report(map.toLogical(target), QStringLiteral("ya existe; se conserva (--overwrite lo reemplaza)"));
                continue;
            }
            vmk::TransferItem(logical, logicalDest, QString());
        }
        const vmk::TransferNotes& notes = vmk::TN();
        if (!notes.Refused.isEmpty())
            failed = true;
        for (const QString& excluded : notes.Excluded) {
            infected = true;
            progress.clear();
            print(stdout,
                nativeOf(excluded) + QStringLiteral(": ") + vmk::Translate(QStringLiteral("infectado; se deja fuera")));
        }
        for (const QString& k : notes.Kept) {
            kept = true;
            report(k, QStringLiteral("ya existe; se conserva (--overwrite lo reemplaza)"));
        }
        for (const QString& f : notes.Failed) {
            failed = true;
            if (!named.contains(nativeOf(f)))
                report(f, notDone);
        }
    }
    vmk::SetMessageAnswerer(previous);
    if (scan)
        vmk::engine::UnLoadEngine();
    if (failed)
        return CliFailure::kError;
    return infected || kept ? CliFailure::kRefused : 0;
}

const QString kTransferHelp = QStringLiteral(
    "  SRC                a file or a folder; it lands as DESTFOLDER/its name, a folder whole\n"
    "  DESTFOLDER         made when missing\n"
    "  --compress         each file becomes a zip archive under its own name\n"
    "  --decompress       each file is a zip archive; its entry comes out under the file's name\n"
    "  --encrypt          each file is sealed under the pass phrase, under its own name\n"
    "  --decrypt          each sealed file is opened; a wrong pass phrase leaves no file\n"
    "  --pass-file FILE   the pass phrase is the first line of FILE; without it, it is\n"
    "                     read from the terminal (not echoed) or from standard input\n"
    "  --scan             scan each file on the way (the source, or the opened result);\n"
    "                     a file found infected is left out, named on standard output, exit 1\n"
    "  --db DIR           the signature folder for --scan (default: sigs beside vmk)\n"
    "  --overwrite        replace files that exist in DESTFOLDER (default: keep and report them, exit 1)\n");

CommandRegistry::Registrar copyCmd("copy",
    { QStringLiteral("copy [--compress|--decompress|--encrypt|--decrypt] [--pass-file FILE] [--scan [--db DIR]] "
                     "[--overwrite] [--program-folder DIR] [--device DIR] SRC... DESTFOLDER"),
        QStringLiteral("copy files and folders through the file manager's stages"), kTransferHelp + FolderOptionsHelp(),
        [](const QStringList& a) { return transfer(a, false); } });
CommandRegistry::Registrar moveCmd("move",
    { QStringLiteral("move [--compress|--decompress|--encrypt|--decrypt] [--pass-file FILE] [--scan [--db DIR]] "
                     "[--overwrite] [--program-folder DIR] [--device DIR] SRC... DESTFOLDER"),
        QStringLiteral("move files and folders; a source goes only once its result exists"),
        kTransferHelp + FolderOptionsHelp(), [](const QStringList& a) { return transfer(a, true); } });
} // namespace
