#pragma once

#include <QString>

namespace vmk
{

// Opening host files by their real bytes (see NativeName), for readers that then
// hand the descriptor to a QFile, a stdio stream or a library.
class NativeFile
{
public:
    // A descriptor open for reading, or -1 (errno set). It never blocks on a FIFO
    // and never becomes a controlling terminal.
    static int openForReading(const QString& native);
    static void close(int fd);
    // lstat: true when anything, a dangling link included, has this name.
    static bool exists(const QString& native);
};

} // namespace vmk
