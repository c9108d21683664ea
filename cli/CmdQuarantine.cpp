// vmk quarantine: the quarantine folder and its ledger, for scripts.

#include "CliFailure.h"
#include "CommandLine.h"
#include "CommandRegistry.h"
#include "FolderOptions.h"
#include "MessageCapture.h"

#include "filemanager/QuarantineVerb.h"
#include "filemanager/Restaura.h"
#include "foundation/Globals.h"
#include "foundation/LanguageFile.h"
#include "foundation/Settings.h"
#include "panel/ControlPanel.h"
#include "platform/DriveMap.h"
#include "scanner/QuarantineLedger.h"

#include <QDate>
#include <QFileInfo>

#include <cstdio>

using namespace vmk;
using scanner::QuarantineLedger;

namespace
{
void printBytes(const QByteArray& bytes)
{
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    std::fputc('\n', stdout);
}

void warn(const QString& text)
{
    std::fprintf(stderr, "vmk quarantine: %s\n", text.toUtf8().constData());
}

// What the verbs told the user, a line each on standard error: a message whose
// second line names a file or folder reads "THAT: words", as every failure of vmk.
void tellCaptured(const MessageCapture& captured, const QString& subject)
{
    for (const QString& text : captured.texts()) {
        const qsizetype cut = text.indexOf(QStringLiteral("\r\n"));
        if (cut < 0)
            warn(CliFailure::line(subject, QString(text).replace(u'\n', u' ')));
        else
            warn(CliFailure::line(text.mid(cut + 2), text.left(cut)));
    }
}

// The host file of an operand, its own name kept: a link given is refused by
// the verb, never followed to what it leads to.
QString logicalOperand(const QString& arg)
{
    const QString native = CommandLine::hostPath(arg, CommandLine::PathUse::Write);
    const QString logical = DriveMap::instance().toLogical(native);
    if (logical.isEmpty())
        throw CliFailure(arg, QStringLiteral("no está en ninguna unidad"));
    return logical;
}

int list()
{
    const MessageCapture captured;
    const auto lines = QuarantineLedger::read();
    tellCaptured(captured, QuarantineLedger::ledgerPath());
    if (!lines)
        return captured.texts().isEmpty() ? 0 : CliFailure::kError;
    for (const scanner::LedgerLine& line : *lines) {
        if (!line.sound()) {
            warn(CliFailure::line(QuarantineLedger::ledgerPath() + u':' + QString::number(line.Number), line.Problem));
            continue;
        }
        // As the ledger keeps them: a line break in a name reads "/n".
        const QByteArray raw = line.Raw;
        const qsizetype bar = raw.indexOf('|');
        printBytes(raw.left(bar) + '\t' + raw.mid(bar + 1));
    }
    return 0;
}

int add(const QStringList& files)
{
    int status = 0;
    for (const QString& file : files) {
        const QString logical = logicalOperand(file);
        const MessageCapture captured;
        const QuarantineOutcome outcome = QuarantineFile(logical);
        tellCaptured(captured, file);
        if (outcome == QuarantineOutcome::Sealed)
            std::printf("%s\n", logical.toUtf8().constData());
        else
            status = CliFailure::kRefused;
    }
    return status;
}

int restore(const QStringList& names)
{
    int status = 0;
    for (const QString& name : names) {
        const MessageCapture captured;
        const RestoreOutcome outcome = Restaura(QuarantineLedger::sealedPath(name));
        tellCaptured(captured, name);
        if (outcome.Matched == 0) {
            warn(CliFailure::line(name, QStringLiteral("no está en el registro de cuarentena")));
            status = CliFailure::kRefused;
        } else if (outcome.Restored == 0 || outcome.FolderMissing > 0 || outcome.Failed > 0) {
            status = CliFailure::kRefused;
        }
        if (outcome.Restored > 0)
            std::printf("%s\n", name.toUtf8().constData());
    }
    return status;
}

int purge()
{
    const MessageCapture captured;
    const int removed = panel::ControlPanel().PurgeQuarantine(QDate::currentDate());
    tellCaptured(captured, QuarantineLedger::quarantineFolder());
    std::printf("Removed files: %d\n", removed);
    return captured.texts().isEmpty() ? 0 : CliFailure::kError;
}

int quarantineCommand(const QStringList& args)
{
    const CommandLine cl(args, FolderOptions());
    cl.expectOperands(1, -1, { QStringLiteral("list|add|restore|purge") });
    const QString verb = cl.operands().at(0);
    const QStringList rest = cl.operands().mid(1);
    const bool takesOperands = verb == QLatin1String("add") || verb == QLatin1String("restore");
    if (!takesOperands && verb != QLatin1String("list") && verb != QLatin1String("purge"))
        throw CliFailure::usage(verb, QStringLiteral("orden desconocida"));
    if (takesOperands == rest.isEmpty())
        throw CliFailure::usage(verb, QStringLiteral("número de operandos equivocado"));
    ApplyFolderOptions(cl);
    G().LanguageIndex = ReadLanguageFile(G().ProgramFolder, G().LanguageIndex);
    ReadSettings();
    if (verb == QLatin1String("list"))
        return list();
    if (verb == QLatin1String("add"))
        return add(rest);
    if (verb == QLatin1String("restore"))
        return restore(rest);
    return purge();
}

CommandRegistry::Registrar quarantineReg("quarantine",
    { QStringLiteral("quarantine list|add FILE...|restore NAME...|purge [--program-folder DIR] [--device DIR]"),
        QStringLiteral("the quarantine folder and its ledger (QFP.txt)"),
        FolderOptionsHelp()
            + QStringLiteral(
                "\n  list prints \"NAME<TAB>FORMER FOLDER\" a ledger line a line (a damaged line is named on\n"
                "  standard error); add seals each FILE into the quarantine folder and adds its line (a link\n"
                "  is refused, an item of the same name is never overwritten); restore brings the item NAME\n"
                "  back to its former folder and drops its lines, and when that folder is gone keeps the\n"
                "  line and says so; purge runs the start-up purge now (#DeleteFilesOpt, #DeleteFilesAfter).\n"
                "  Exit status 1 when an item was not sealed or not restored."),
        quarantineCommand });
} // namespace
