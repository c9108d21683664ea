#include "platform/RunAndWait.h"

#include "platform/DriveMap.h"
#include "platform/Pump.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStandardPaths>

namespace vmk::platform
{

QStringList SplitCommandLine(const QString& commandLine)
{
    QStringList out;
    QString current;
    bool inQuotes = false;
    bool hasToken = false;
    qsizetype i = 0;
    while (i < commandLine.size() && (commandLine[i] == u' ' || commandLine[i] == u'\t'))
        ++i;
    // A quoted program name ends at its closing quote, as CreateProcess reads it:
    // in "\"X:\\eject.exe\"2|E:" the program is X:\eject.exe and "2|E:" its argument.
    if (i < commandLine.size() && commandLine[i] == u'"') {
        const qsizetype close = commandLine.indexOf(u'"', i + 1);
        if (close > i) {
            out << commandLine.mid(i + 1, close - i - 1);
            i = close + 1;
        }
    }
    for (; i < commandLine.size(); ++i) {
        const QChar c = commandLine[i];
        if (c == u'"') {
            if (inQuotes && i + 1 < commandLine.size() && commandLine[i + 1] == u'"') {
                current += u'"';
                ++i;
            } else {
                inQuotes = !inQuotes;
            }
            hasToken = true;
        } else if (!inQuotes && (c == u' ' || c == u'\t')) {
            if (hasToken)
                out << current;
            current.clear();
            hasToken = false;
        } else {
            current += c;
            hasToken = true;
        }
    }
    if (hasToken)
        out << current;
    return out;
}

QString ResolveProgram(const QString& program)
{
    if (program.isEmpty())
        return {};
    QString native;
    if (DriveMap::hasDriveLetter(program) || program.startsWith(u'\\'))
        native = DriveMap::instance().toNative(program);
    else if (program.contains(u'/') || program.contains(u'\\'))
        native = DriveMap::instance().toNative(program);
    if (!native.isEmpty()) {
        const QFileInfo fi(native);
        return fi.isFile() && fi.isExecutable() ? fi.absoluteFilePath() : QString();
    }
    const QFileInfo here(QDir::current().filePath(program));
    if (here.isFile() && here.isExecutable())
        return here.absoluteFilePath();
    return QStandardPaths::findExecutable(program);
}

RunOutcome RunAndWait(const QString& commandLine)
{
    RunOutcome outcome;
    QStringList parts = SplitCommandLine(commandLine);
    if (parts.isEmpty()) {
        outcome.error = QStringLiteral("empty command line");
        return outcome;
    }
    const QString program = parts.takeFirst();
    return RunAndWait(program, parts);
}

RunOutcome RunAndWait(const QString& programName, const QStringList& arguments)
{
    RunOutcome outcome;
    const QString program = ResolveProgram(programName);
    if (program.isEmpty()) {
        outcome.error = QStringLiteral("program not found: ") + programName;
        return outcome;
    }
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QString::fromLatin1(DriveMap::kInheritedVariable), DriveMap::instance().exportForChildren());
    process.setProcessEnvironment(env);
    process.setProgram(program);
    process.setArguments(arguments);
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.setInputChannelMode(QProcess::ForwardedInputChannel);
    process.start();
    if (!process.waitForStarted(-1)) {
        outcome.error = process.errorString();
        return outcome;
    }
    outcome.started = true;
    while (!process.waitForFinished(50)) {
        if (process.state() == QProcess::NotRunning)
            break;
        DoEvents();
    }
    outcome.crashed = process.exitStatus() == QProcess::CrashExit;
    outcome.exitCode = outcome.crashed ? -1 : process.exitCode();
    return outcome;
}

} // namespace vmk::platform
