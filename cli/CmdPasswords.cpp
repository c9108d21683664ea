// vmk passwords: the password manager's store, for scripts.

#include "CliFailure.h"
#include "CommandLine.h"
#include "CommandRegistry.h"
#include "FolderOptions.h"
#include "MessageCapture.h"

#include "foundation/Globals.h"
#include "foundation/LanguageFile.h"
#include "foundation/Settings.h"
#include "passwords/OwnerPassword.h"
#include "passwords/PasswordStore.h"
#include "platform/TerminalInput.h"

#include <QFile>

#include <cstdio>
#include <iostream>
#include <string>

using namespace vmk;
using namespace vmk::passwords;

namespace
{
void printLine(const QString& text)
{
    std::fprintf(stdout, "%s\n", text.toUtf8().constData());
}

QString withoutLineEnd(QString line)
{
    while (line.endsWith(u'\n') || line.endsWith(u'\r'))
        line.chop(1);
    return line;
}

// The owner's password: the first line of --pass-file, or typed on the terminal.
QString ownerPassword(const CommandLine& cl, bool confirm)
{
    if (cl.has(QStringLiteral("--pass-file"))) {
        const QString path = CommandLine::inputFile(cl.value(QStringLiteral("--pass-file")));
        QFile f(path);
        if (!f.open(QIODevice::ReadOnly))
            throw CliFailure(path, QStringLiteral("no se puede leer"));
        return withoutLineEnd(QString::fromUtf8(f.readLine()));
    }
    const auto typed = TerminalInput::readSecret(QStringLiteral("Contraseña: "));
    if (!typed)
        throw CliFailure::usage(
            QStringLiteral("--pass-file"), QStringLiteral("no hay terminal para pedir la contraseña"));
    if (confirm && TerminalInput::readSecret(QStringLiteral("Confirmar contraseña: ")) != typed)
        throw CliFailure(QString(), QStringLiteral("¡Las contraseñas no coinciden!"), -1, CliFailure::kRefused);
    return *typed;
}

// The lock: a wrong owner's password ends the command before anything is shown.
void unlock(const CommandLine& cl)
{
    ReadSettings();
    if (!OwnerPassword::isChosen()) {
        const QString chosen = ownerPassword(cl, true);
        if (chosen.isEmpty())
            throw CliFailure(
                QString(), QStringLiteral("¡La contraseña no puede quedar vacía!"), -1, CliFailure::kRefused);
        const MessageCapture quiet;
        if (!OwnerPassword::choose(chosen, true))
            throw CliFailure(SettingsFilePath(), QStringLiteral("no se puede escribir"));
        return;
    }
    if (!OwnerPassword::check(ownerPassword(cl, false)))
        throw CliFailure(QString(), QStringLiteral("¡Contraseña incorrecta!"), -1, CliFailure::kRefused);
}

// The records of the store; lines that do not unseal are named on standard error.
PswNodes loadStore()
{
    PswNodes nodes;
    const MessageCapture quiet;
    LoadPasswordStore(nodes);
    for (const QString& text : quiet.texts())
        std::fprintf(stderr, "vmk passwords: %s\n",
            CliFailure::line(PasswordStorePath(), text.section(u'\n', 0, 0)).toUtf8().constData());
    return nodes;
}

void saveStore(const PswNodes& nodes)
{
    const MessageCapture quiet;
    if (!SavePasswordStore(nodes))
        throw CliFailure(PasswordStorePath(), QStringLiteral("no se puede escribir"));
}

// The record node of record N (from 1), or a failure naming N.
int recordIndex(const PswNodes& nodes, const QString& operand)
{
    bool ok = false;
    const int n = operand.toInt(&ok);
    const int i = 3 * (n - 1) + 1;
    if (!ok || n < 1 || !nodes.Exists(i + 2))
        throw CliFailure::usage(operand, QStringLiteral("no existe ese registro"));
    return i;
}

int passwordsCommand(const QStringList& args)
{
    QList<CliOption> options = FolderOptions();
    options << CliOption { QStringLiteral("--pass-file"), true };
    const CommandLine cl(args, options);
    cl.expectOperands(1, 3, { QStringLiteral("list|show|add|rm") });
    const QString verb = cl.operands().at(0);
    const qsizetype wanted = verb == QLatin1String("list")             ? 1
        : verb == QLatin1String("add")                                 ? 3
        : verb == QLatin1String("show") || verb == QLatin1String("rm") ? 2
                                                                       : -1;
    if (wanted < 0)
        throw CliFailure::usage(verb, QStringLiteral("orden desconocida"));
    if (cl.operands().size() != wanted)
        throw CliFailure::usage(verb, QStringLiteral("número de operandos equivocado"));
    ApplyFolderOptions(cl);
    G().LanguageIndex = ReadLanguageFile(G().ProgramFolder, G().LanguageIndex);
    unlock(cl);
    PswNodes nodes = loadStore();
    if (verb == QLatin1String("list")) {
        for (int i = 1, n = 1; i + 2 <= nodes.Count(); i += 3, ++n)
            printLine(QStringLiteral("%1\t%2\t%3").arg(n).arg(nodes.Text(i), nodes.Text(i + 1)));
    } else if (verb == QLatin1String("show")) {
        printLine(nodes.Tag(recordIndex(nodes, cl.operands().at(1)) + 2));
    } else if (verb == QLatin1String("rm")) {
        const int i = recordIndex(nodes, cl.operands().at(1));
        nodes.Remove(i + 2);
        nodes.Remove(i + 1);
        nodes.Remove(i);
        saveStore(nodes);
    } else {
        std::string line;
        std::getline(std::cin, line);
        const QString password = withoutLineEnd(QString::fromUtf8(line.data(), qsizetype(line.size())));
        const QString fields[3] = { cl.operands().at(1), cl.operands().at(2), password };
        // The store has no escape for ";": such a record would be lost at the next load.
        for (const QString& field : fields) {
            if (field.contains(u';'))
                throw CliFailure::usage(field, QStringLiteral("un campo no puede contener \";\""));
        }
        agregalink(nodes, fields[0] + u';' + fields[1] + u';' + fields[2]);
        saveStore(nodes);
    }
    return 0;
}

CommandRegistry::Registrar passwordsReg("passwords",
    { QStringLiteral("passwords list|show N|add SITE USER|rm N [--pass-file FILE] [--program-folder DIR]"),
        QStringLiteral("the password manager's records (PSWADMON.cnf), behind the owner's password"),
        FolderOptionsHelp()
            + QStringLiteral(
                "\n  --pass-file FILE      the owner's password is the file's first line (default: asked on the "
                "terminal)\n"
                "  list prints \"N<TAB>SITE<TAB>USER\" a record a line; show N prints record N's password;\n"
                "  add reads the new record's password from the first line of standard input.\n"
                "  With no owner's password chosen yet, the first use chooses it."),
        passwordsCommand });
} // namespace
