#include "components/cipher/TargetFile.h"

#include <QFileInfo>

#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

namespace vmk::cipher
{

TargetFile::TargetFile(const QString& target)
    : m_target(target)
    , m_temp(QFileInfo(target).absolutePath() + QStringLiteral("/.") + QFileInfo(target).fileName()
          + QStringLiteral(".XXXXXX"))
{
}

bool TargetFile::open()
{
    if (!QFileInfo(QFileInfo(m_target).absolutePath()).isDir())
        return false;
    return m_temp.open();
}

bool TargetFile::rewrite(qint64 pos, const char* data, qint64 len)
{
    const qint64 end = m_temp.pos();
    return m_temp.seek(pos) && m_temp.write(data, len) == len && m_temp.seek(end);
}

bool TargetFile::commit()
{
    if (!m_temp.isOpen() || !m_temp.flush())
        return false;
    m_temp.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
    const QString temp = m_temp.fileName();
    m_temp.close();
    const QByteArray from = QFile::encodeName(temp), to = QFile::encodeName(m_target);
    // Renaming over an existing file makes ext4 push the new file's data to the
    // disk first (its guard against empty files after a crash): a second per
    // gigabyte. Exchanging the two names is just as atomic and does not; the old
    // data is then removed under the temporary name. Filesystems without the
    // exchange get the plain rename, which replaces the target in one step too.
    if (QFileInfo(m_target).isFile()
        && ::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_EXCHANGE) == 0) {
        ::unlink(from.constData());
        m_temp.setAutoRemove(false);
        return true;
    }
    if (std::rename(from.constData(), to.constData()) != 0)
        return false;
    m_temp.setAutoRemove(false);
    return true;
}

} // namespace vmk::cipher
