#pragma once

#include <QByteArray>
#include <QString>

namespace vmk
{

// Host file names are bytes; the suite handles them as text. A name that is not
// valid UTF-8 (Latin-1 names from an old stick) keeps every byte: each byte that
// is not part of a valid UTF-8 sequence becomes the private-use character
// U+F000 + byte, and goes back to that byte on the way out. A real name holding
// one of U+F000..U+F0FF is carried by the bytes of its UTF-8 form the same way,
// so bytes -> text -> bytes gives back the name exactly.
class NativeName
{
public:
    static QString fromBytes(const QByteArray& bytes);
    static QByteArray toBytes(const QString& native);
    // True when the name holds a byte that is not valid UTF-8.
    static bool holdsRawBytes(const QString& native);
};

} // namespace vmk
