#pragma once

#include <QString>

#include <optional>

namespace vmk
{

// Lines typed on the controlling terminal (/dev/tty), so that a secret can be
// asked even while standard input carries data.
class TerminalInput
{
public:
    // Shows `prompt` on the terminal and reads one line with the echo off (it is
    // restored afterwards). nullopt when the process has no terminal.
    static std::optional<QString> readSecret(const QString& prompt);
    // True when standard input is a terminal rather than a pipe or a file.
    static bool standardInputIsTerminal();
    // True when standard error is a terminal (progress is drawn there only then).
    static bool standardErrorIsTerminal();
};

} // namespace vmk
