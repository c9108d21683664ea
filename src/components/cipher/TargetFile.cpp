#include "components/cipher/TargetFile.h"

#include <QFileInfo>

#include <cstdio>

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

bool TargetFile::commit()
{
    if (!m_temp.isOpen() || !m_temp.flush())
        return false;
    m_temp.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
    const QString temp = m_temp.fileName();
    m_temp.close();
    // rename(2) replaces an existing target in one step.
    if (std::rename(QFile::encodeName(temp).constData(), QFile::encodeName(m_target).constData()) != 0)
        return false;
    m_temp.setAutoRemove(false);
    return true;
}

} // namespace vmk::cipher
