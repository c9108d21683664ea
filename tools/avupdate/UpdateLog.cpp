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
    // One entry is one line: a line break or other control character inside a
    // source name or an error text would let it pose as a line of its own,
    // and the panel judges the last line.
    QString flat = text;
    for (QChar& c : flat)
        if (c.unicode() < 0x20 || c.unicode() == 0x7f || c == QChar::LineSeparator || c == QChar::ParagraphSeparator)
            c = QLatin1Char(' ');
    const QByteArray l
        = (QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss ")) + flat).toUtf8();
    std::fprintf(stderr, "%s\n", l.constData());
    if (m_file.isOpen()) {
        m_file.write(l + "\r\n");
        m_file.flush();
    }
}

} // namespace vmk::avupdate
