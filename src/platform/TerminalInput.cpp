#include "platform/TerminalInput.h"

#include <cstdio>
#include <string>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace vmk
{

std::optional<QString> TerminalInput::readSecret(const QString& prompt)
{
    const int fd = ::open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY);
    if (fd < 0)
        return std::nullopt;
    const QByteArray shown = prompt.toUtf8();
    [[maybe_unused]] const ssize_t w = ::write(fd, shown.constData(), static_cast<size_t>(shown.size()));
    termios before {};
    const bool isTerminal = ::tcgetattr(fd, &before) == 0;
    if (isTerminal) {
        termios quiet = before;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        ::tcsetattr(fd, TCSAFLUSH, &quiet);
    }
    std::string line;
    char c = 0;
    while (::read(fd, &c, 1) == 1 && c != '\n')
        line += c;
    if (isTerminal) {
        ::tcsetattr(fd, TCSAFLUSH, &before);
        [[maybe_unused]] const ssize_t nl = ::write(fd, "\n", 1);
    }
    ::close(fd);
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
    return QString::fromUtf8(line.data(), static_cast<qsizetype>(line.size()));
}

bool TerminalInput::standardInputIsTerminal()
{
    return ::isatty(STDIN_FILENO) == 1;
}

bool TerminalInput::standardErrorIsTerminal()
{
    return ::isatty(STDERR_FILENO) == 1;
}

} // namespace vmk
