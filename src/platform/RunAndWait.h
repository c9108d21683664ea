#pragma once

#include <QString>
#include <QStringList>

namespace vmk::platform
{

struct RunOutcome {
    bool started = false; // false: the program could not be started (see error)
    int exitCode = -1; // meaningful when started
    bool crashed = false;
    QString error;
};

// Splits a command line the way a Windows program reads its own: blanks separate,
// double quotes group, a quote inside quotes is written twice. The first element
// is the program.
QStringList SplitCommandLine(const QString& commandLine);

// Finds the program of a command line: a logical path ("E:\VMK\x.exe") through the
// drive map, a native path as is, a bare name in the current folder first, then
// on PATH. Empty when not found.
QString ResolveProgram(const QString& program);

// Starts the command line and waits for it to end, running the pump (DoEvents)
// every 50 ms of waiting; the wait itself sleeps in the kernel, never spins.
// The child inherits the drive map so that it sees the same letters.
RunOutcome RunAndWait(const QString& commandLine);
// The same for a program and its arguments as a list: each argument reaches the
// program whole, whatever quotes or blanks it holds.
RunOutcome RunAndWait(const QString& program, const QStringList& arguments);

} // namespace vmk::platform
