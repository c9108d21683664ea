#include "CliFailure.h"
#include "CommandRegistry.h"

#include "foundation/Globals.h"
#include "foundation/LanguageFile.h"
#include "platform/DriveMap.h"

#include <QCoreApplication>

#include <cstdio>

std::map<QString, CliCommand>& CommandRegistry::commands()
{
    static std::map<QString, CliCommand> table;
    return table;
}

CommandRegistry::Registrar::Registrar(const QString& name, CliCommand command)
{
    commands()[name] = std::move(command);
}

namespace
{
void print(FILE* out, const QString& text)
{
    std::fputs(text.toUtf8().constData(), out);
}

int printUsage(FILE* out)
{
    QString text = QStringLiteral("usage: vmk COMMAND [OPTIONS] OPERANDS...\n"
                                  "       vmk COMMAND --help\n"
                                  "       vmk --version\n\ncommands:\n");
    for (const auto& [name, cmd] : CommandRegistry::commands())
        text += QStringLiteral("  %1%2\n").arg(name, -12).arg(cmd.summary);
    text += QStringLiteral("\nOptions may stand before or after the operands; \"--\" ends the options.\n"
                           "Paths may be host paths or drive-letter paths such as E:\\Docs\\a.txt.\n"
                           "\nexit codes:\n"
                           "  0  done; nothing found\n"
                           "  1  threats found, or the data refused (a wrong pass phrase, a damaged file)\n"
                           "  2  error: a wrong command line, a missing or unreadable file, a full disk\n");
    print(out, text);
    return out == stdout ? 0 : 2;
}

int printCommandHelp(const QString& name, const CliCommand& cmd)
{
    print(stdout,
        QStringLiteral("usage: vmk %1\n\n%2\n").arg(cmd.synopsis, cmd.summary)
            + (cmd.details.isEmpty() ? QString() : u'\n' + cmd.details + u'\n')
            + QStringLiteral("\nexit codes: 0 done, 1 %1, 2 error\n")
                  .arg(name == QLatin1String("scan") ? QStringLiteral("threats found")
                                                     : QStringLiteral("the data refused")));
    return 0;
}
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QStringList args = QCoreApplication::arguments();
    args.removeFirst();
    if (args.isEmpty())
        return printUsage(stderr);
    const QString name = args.takeFirst();
    if (name == QLatin1String("--version") || name == QLatin1String("version")) {
        print(stdout, QStringLiteral("vmk " VMK_VERSION "\n"));
        return 0;
    }
    if (name == QLatin1String("help") && !args.isEmpty()) {
        const auto it = CommandRegistry::commands().find(args.first());
        if (it != CommandRegistry::commands().end())
            return printCommandHelp(it->first, it->second);
    }
    if (name == QLatin1String("help") || name == QLatin1String("--help") || name == QLatin1String("-h"))
        return printUsage(stdout);
    // The messages speak the language of the program folder's Language.cnf.
    vmk::G().LanguageIndex = vmk::ReadLanguageFile(vmk::DriveMap::instance().logicalProgramFolder());
    const auto it = CommandRegistry::commands().find(name);
    if (it == CommandRegistry::commands().end()) {
        print(stderr, QStringLiteral("vmk: ") + CliFailure::line(name, QStringLiteral("orden desconocida")) + u'\n');
        return printUsage(stderr);
    }
    // --help counts among the options, not after "--" (mid takes all when there is no "--").
    const QStringList options = args.mid(0, args.indexOf(QStringLiteral("--")));
    if (options.contains(QStringLiteral("--help")) || options.contains(QStringLiteral("-h")))
        return printCommandHelp(it->first, it->second);
    try {
        return it->second.run(args);
    } catch (const CliFailure& f) {
        print(stderr, QStringLiteral("vmk %1: %2\n").arg(name, f.text()));
        if (f.isUsage())
            print(stderr, QStringLiteral("usage: vmk %1   (vmk %2 --help)\n").arg(it->second.synopsis, name));
        return f.exitCode();
    } catch (const std::exception& e) {
        print(stderr, QStringLiteral("vmk %1: %2\n").arg(name, QString::fromUtf8(e.what())));
        return 2;
    }
}
