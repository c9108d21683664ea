#include "platform/NativeName.h"

#include <QByteArrayView>

namespace vmk
{
namespace
{
constexpr char16_t kRawBase = 0xF000;
constexpr char16_t kRawFirst = 0xF080; // bytes below 0x80 are always valid UTF-8

bool isRawByteChar(char16_t c)
{
    return c >= kRawFirst && c <= kRawBase + 0xFF;
}

// Length of the valid UTF-8 sequence at `i`, 0 when the byte starts none.
qsizetype validSequence(const unsigned char* s, qsizetype i, qsizetype n, char32_t& cp)
{
    const unsigned char b = s[i];
    qsizetype len;
    char32_t min;
    if (b < 0x80) {
        cp = b;
        return 1;
    } else if ((b & 0xE0) == 0xC0) {
        len = 2;
        cp = b & 0x1F;
        min = 0x80;
    } else if ((b & 0xF0) == 0xE0) {
        len = 3;
        cp = b & 0x0F;
        min = 0x800;
    } else if ((b & 0xF8) == 0xF0) {
        len = 4;
        cp = b & 0x07;
        min = 0x10000;
    } else {
        return 0;
    }
    if (i + len > n)
        return 0;
    for (qsizetype k = 1; k < len; ++k) {
        if ((s[i + k] & 0xC0) != 0x80)
            return 0;
        cp = (cp << 6) | (s[i + k] & 0x3F);
    }
    if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
        return 0;
    return len;
}
} // namespace

QString NativeName::fromBytes(const QByteArray& bytes)
{
    // Almost every name is plain UTF-8 without our private range (EF 80..83 xx).
    if (QByteArrayView(bytes).isValidUtf8() && !bytes.contains("\xEF\x80") && !bytes.contains("\xEF\x81")
        && !bytes.contains("\xEF\x82") && !bytes.contains("\xEF\x83"))
        return QString::fromUtf8(bytes);
    const auto* s = reinterpret_cast<const unsigned char*>(bytes.constData());
    const qsizetype n = bytes.size();
    QString out;
    out.reserve(n);
    for (qsizetype i = 0; i < n;) {
        char32_t cp = 0;
        const qsizetype len = validSequence(s, i, n, cp);
        if (len == 0 || (cp >= kRawBase && cp <= kRawBase + 0xFF)) {
            // A stray byte, or a real private character kept as its own bytes.
            const qsizetype count = len == 0 ? 1 : len;
            for (qsizetype k = 0; k < count; ++k)
                out += QChar(char16_t(kRawBase + s[i + k]));
            i += count;
            continue;
        }
        out += QString::fromUcs4(&cp, 1);
        i += len;
    }
    return out;
}

QByteArray NativeName::toBytes(const QString& native)
{
    if (!holdsRawBytes(native))
        return native.toUtf8();
    QByteArray out;
    out.reserve(native.size() * 2);
    qsizetype start = 0;
    for (qsizetype i = 0; i < native.size(); ++i) {
        const char16_t c = native.at(i).unicode();
        if (!isRawByteChar(c))
            continue;
        out += QStringView(native).mid(start, i - start).toUtf8();
        out += static_cast<char>(c - kRawBase);
        start = i + 1;
    }
    out += QStringView(native).mid(start).toUtf8();
    return out;
}

bool NativeName::holdsRawBytes(const QString& native)
{
    for (const QChar c : native)
        if (isRawByteChar(c.unicode()))
            return true;
    return false;
}

} // namespace vmk
