#include "CommandRegistry.h"

#include <QCoreApplication>

#include <cstdio>

std::map<QString, CliCommand>& CommandRegistry::commands()
{
    static std::map<QString, CliCommand> table;
    return table;
}

CommandRegistry::Registrar::Registrar(
    const QString& name, const QString& usage, std::function<int(const QStringList&)> run)
{
    commands()[name] = CliCommand { usage, std::move(run) };
}

static int printUsage(FILE* out)
{
    std::fprintf(out, "usage: vmk COMMAND [ARGS]\n\ncommands:\n");
    for (const auto& [name, cmd] : CommandRegistry::commands())
        std::fprintf(out, "  %s\n", cmd.usage.toUtf8().constData());
    return out == stdout ? 0 : 2;
}

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QStringList args = QCoreApplication::arguments();
    args.removeFirst();
    if (args.isEmpty())
        return printUsage(stderr);
    const QString name = args.takeFirst();
    if (name == "help" || name == "--help" || name == "-h")
        return printUsage(stdout);
    auto it = CommandRegistry::commands().find(name);
    if (it == CommandRegistry::commands().end()) {
        std::fprintf(stderr, "vmk: unknown command '%s'\n", name.toUtf8().constData());
        return printUsage(stderr);
    }
    try {
        return it->second.run(args);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "vmk %s: %s\n", name.toUtf8().constData(), e.what());
        return 2;
    }
}
