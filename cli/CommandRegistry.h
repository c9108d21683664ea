#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <map>

// The commands of vmk. Each Cmd*.cpp file registers its commands with a static
// Registrar, so a new command needs no edit elsewhere.
struct CliCommand {
    QString usage; // one line for the help text
    std::function<int(const QStringList& args)> run; // args after the command name; returns the exit code
};

class CommandRegistry
{
public:
    static std::map<QString, CliCommand>& commands();

    struct Registrar {
        Registrar(const QString& name, const QString& usage, std::function<int(const QStringList&)> run);
    };
};
