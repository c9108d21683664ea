#include "PassPhraseInput.h"

#include "CliFailure.h"
#include "CommandLine.h"

#include "platform/TerminalInput.h"

#include <QFile>

#include <iostream>
#include <string>

QString readPassPhrase(const QString& passFile)
{
    if (!passFile.isEmpty()) {
        QFile f(CommandLine::inputFile(passFile));
        if (!f.open(QIODevice::ReadOnly))
            throw CliFailure(passFile, QStringLiteral("no se puede leer"));
        QString line = QString::fromUtf8(f.readLine());
        while (line.endsWith('\n') || line.endsWith('\r'))
            line.chop(1);
        return line;
    }
    // Typed on a terminal, without echo; else the first line of what is piped in.
    if (vmk::TerminalInput::standardInputIsTerminal()) {
        const auto typed = vmk::TerminalInput::readSecret(QStringLiteral("Pass phrase: "));
        if (!typed)
            throw CliFailure(QString(), QStringLiteral("no se dio ninguna contraseña"));
        return *typed;
    }
    std::string line;
    const bool got = static_cast<bool>(std::getline(std::cin, line));
    if (!got)
        throw CliFailure(QString(), QStringLiteral("no se dio ninguna contraseña"));
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
    return QString::fromStdString(line);
}
