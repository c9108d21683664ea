#include "components/ftp/FtpLocation.h"

#include "platform/NativeName.h"

namespace vmk::ftp
{
namespace
{
QString decoded(const QString& escaped)
{
    return NativeName::fromBytes(QByteArray::fromPercentEncoding(NativeName::toBytes(escaped)));
}
} // namespace

std::optional<FtpLocation> FtpLocation::parse(const QString& text)
{
    if (text.contains(u'\r') || text.contains(u'\n'))
        return std::nullopt;
    QString rest = text.trimmed();
    const qsizetype scheme = rest.indexOf(QStringLiteral("://"));
    if (scheme >= 0) {
        if (rest.left(scheme).compare(QStringLiteral("ftp"), Qt::CaseInsensitive) != 0)
            return std::nullopt;
        rest = rest.mid(scheme + 3);
    }
    FtpLocation loc;
    const qsizetype slash = rest.indexOf(u'/');
    QString authority = slash >= 0 ? rest.left(slash) : rest;
    if (slash >= 0) {
        // The first "/" only separates; "%2F" after it makes the path absolute.
        loc.path = decoded(rest.mid(slash + 1));
    }
    const qsizetype at = authority.lastIndexOf(u'@');
    if (at >= 0) {
        loc.hasUser = true;
        QString user = authority.left(at);
        // A password written in the address is not taken: it would show in
        // process lists and shell histories.
        const qsizetype colon = user.indexOf(u':');
        if (colon >= 0)
            user = user.left(colon);
        loc.user = decoded(user);
        authority = authority.mid(at + 1);
    }
    QString portText;
    if (authority.startsWith(u'[')) {
        const qsizetype close = authority.indexOf(u']');
        if (close < 0)
            return std::nullopt;
        loc.host = authority.mid(1, close - 1);
        const QString after = authority.mid(close + 1);
        if (!after.isEmpty()) {
            if (!after.startsWith(u':'))
                return std::nullopt;
            portText = after.mid(1);
        }
    } else {
        const qsizetype colon = authority.lastIndexOf(u':');
        loc.host = colon >= 0 ? authority.left(colon) : authority;
        if (colon >= 0)
            portText = authority.mid(colon + 1);
    }
    if (loc.host.isEmpty())
        return std::nullopt;
    for (const QChar c : loc.host) {
        if (c.isSpace() || c == u'/' || c == u'@' || c == u'%' || c == u'?' || c == u'#')
            return std::nullopt;
    }
    if (!portText.isEmpty()) {
        bool ok = false;
        loc.port = portText.toInt(&ok);
        if (!ok || loc.port < 1 || loc.port > 65535)
            return std::nullopt;
    }
    return loc;
}

} // namespace vmk::ftp
