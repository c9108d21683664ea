#pragma once

#include <QString>

#include <vector>

namespace vmk
{

// One open host file for the copier: whole reads and writes, with the data moved
// in the kernel where the pair of files allows it.
class NativeFile
{
public:
    NativeFile() = default;
    ~NativeFile();
    NativeFile(const NativeFile&) = delete;
    NativeFile& operator=(const NativeFile&) = delete;

    // True when the path leads to something, links followed (a dangling link is nothing).
    static bool exists(const QString& nativePath);
    // The size of a regular file, links followed; -1 for anything else or nothing.
    static qint64 regularFileSize(const QString& nativePath);

    // Opens for reading from the start, telling the kernel the reads are sequential.
    bool openForReading(const QString& nativePath);
    // Why a file to be read whole (as the engine scans it) was not opened.
    enum OpenOutcome { Opened, Missing, Folder, NotRegular, Unreadable };
    // Opens a regular file for reading; FIFOs, sockets and devices are never
    // opened, and one swapped in after the check cannot block (O_NONBLOCK).
    OpenOutcome openRegularFile(const QString& nativePath);
    // The open descriptor, for a library that reads by descriptor; -1 when closed.
    int descriptor() const { return m_fd; }
    // A bare descriptor open for reading, or -1 (errno set), for readers that hand
    // it to a QFile, a stdio stream or a library. It never blocks on a FIFO and
    // never becomes a controlling terminal.
    static int openDescriptor(const QString& nativePath);
    static void closeDescriptor(int fd);

    // Creates or truncates for writing (mode 0644 before the umask).
    bool createForWriting(const QString& nativePath);
    bool isOpen() const { return m_fd >= 0; }
    // Moves the next `size` bytes of `source` to the end of this file: in the
    // kernel (copy_file_range) while the pair allows, else through a buffer.
    // False on an error or when the source ends early.
    bool copyFrom(NativeFile& source, qint64 size);
    // False when the file could not be closed cleanly (the last writes failed).
    bool close();

private:
    int m_fd = -1;
    bool m_inKernel = true;
    std::vector<char> m_buffer;
};

} // namespace vmk
