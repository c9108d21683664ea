#include "components/ftp/Fingerprint.h"

namespace vmk::ftp
{

QString Fingerprint::text(const QByteArray& sha256)
{
    return QString::fromLatin1(sha256.toHex(':').toUpper());
}

QByteArray Fingerprint::parse(const QString& text)
{
    QString hex = text.trimmed();
    const qsizetype eq = hex.lastIndexOf(u'=');
    if (eq >= 0)
        hex = hex.mid(eq + 1).trimmed();
    hex.remove(u':');
    if (hex.size() != 64)
        return {};
    for (const QChar c : hex) {
        const char16_t u = c.toLower().unicode();
        if (!(u >= u'0' && u <= u'9') && !(u >= u'a' && u <= u'f'))
            return {};
    }
    return QByteArray::fromHex(hex.toLatin1());
}

} // namespace vmk::ftp
