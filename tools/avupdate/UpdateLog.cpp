#include "UpdateLog.h"

#include <QDateTime>

#include <cstdio>

namespace vmk::avupdate
{

bool UpdateLog::open(const QString& nativePath)
{
    m_file.setFileName(nativePath);
    return m_file.open(QIODevice::WriteOnly | QIODevice::Truncate);
}

void UpdateLog::line(const QString& text)
{
    const QByteArray l
        = (QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss ")) + text).toUtf8();
    std::fprintf(stderr, "%s\n", l.constData());
    if (m_file.isOpen()) {
        m_file.write(l + "\r\n");
        m_file.flush();
    }
}

} // namespace vmk::avupdate
