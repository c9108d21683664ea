#include "components/cipher/TargetFile.h"

#include "platform/DriveFigures.h"
#include "platform/FileReplace.h"

#include <QFileInfo>

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

CipherError TargetFile::failure() const
{
    return DriveFigures::wasFull(QFileInfo(m_target).absolutePath(), m_lastWrite) ? CipherError::DiskFull
                                                                                  : CipherError::TargetUnwritable;
}

bool TargetFile::commit()
{
    if (!m_temp.isOpen() || !m_temp.flush())
        return false;
    m_temp.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
    const QString temp = m_temp.fileName();
    m_temp.close();
    if (!FileReplace::replace(temp, m_target))
        return false;
    m_temp.setAutoRemove(false);
    return true;
}

} // namespace vmk::cipher
