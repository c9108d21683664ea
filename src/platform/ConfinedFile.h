#pragma once

#include <QByteArray>

namespace vmk
{

// One file being written beneath a ConfinedFolder: the data goes to a temporary
// name beside it, and commit renames it into place. Renaming replaces what stood
// under the name and never writes through it. Destroyed uncommitted, it leaves nothing.
class ConfinedFile
{
public:
    ConfinedFile(int folderFd, int fd, QByteArray tempName, QByteArray finalName);
    ~ConfinedFile();
    ConfinedFile(const ConfinedFile&) = delete;
    ConfinedFile& operator=(const ConfinedFile&) = delete;

    bool write(const char* data, qint64 length);
    // Sets the modification time (seconds since the epoch) and renames the file into place.
    bool commit(qint64 modified);
    void cancel();

private:
    int m_folderFd;
    int m_fd;
    QByteArray m_tempName, m_finalName;
};

} // namespace vmk
