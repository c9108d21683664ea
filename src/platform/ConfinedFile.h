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
    // The same, but only while nothing stands under the name: an entry that
    // appeared there meanwhile is kept, and false comes back.
    bool commitNew(qint64 modified);
    void cancel();

private:
    bool finish(qint64 modified, bool replace);

    int m_folderFd;
    int m_fd;
    QByteArray m_tempName, m_finalName;
};

} // namespace vmk
