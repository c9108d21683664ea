#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <map>

// The commands of vmk. Each Cmd*.cpp file registers its commands with a static
// Registrar, so a new command needs no edit elsewhere.
struct CliCommand {
    QString synopsis; // "compress [--method deflate|bzip2] SOURCE... ARCHIVE", without "vmk "
    QString summary; // one line for the list of commands
    QString details; // operands and options, for "vmk COMMAND --help"
    std::function<int(const QStringList& args)> run; // args after the command name; returns the exit code
};

class CommandRegistry
{
public:
    static std::map<QString, CliCommand>& commands();

    struct Registrar {
        Registrar(const QString& name, CliCommand command);
    };
};
