#include "components/zip/ZipLayout.h"

#include "platform/NativeFile.h"

#include <QFile>

#include <algorithm>
#include <utility>
#include <vector>

namespace vmk::zip
{
namespace
{
constexpr quint32 kEndRecord = 0x06054b50;
constexpr quint32 kEnd64Locator = 0x07064b50;
constexpr quint32 kEnd64Record = 0x06064b50;
constexpr quint32 kCentralRecord = 0x02014b50;
constexpr quint32 kLocalRecord = 0x04034b50;
constexpr qint64 kEndSize = 22;
constexpr qint64 kCentralSize = 46;
constexpr qint64 kLocalSize = 30;
constexpr qint64 kMaxComment = 0xFFFF;

// A little-endian field, byte by byte: callers check the record's length first,
// and reading bytes (not a cast of the buffer) keeps the compiler's bounds
// analysis, which cannot see those checks, quiet as well.
template<class T> T at(const QByteArray& b, qint64 offset)
{
    T value = 0;
    for (qint64 i = qint64(sizeof(T)) - 1; i >= 0; --i)
        value = T((value << 8) | static_cast<uchar>(b.at(offset + i)));
    return value;
}

QByteArray readAt(QFile& f, qint64 offset, qint64 length)
{
    if (offset < 0 || length < 0 || !f.seek(offset))
        return {};
    return f.read(length);
}

struct Directory {
    quint64 offset = 0, size = 0, entries = 0;
};

bool findDirectory(QFile& f, Directory& d)
{
    const qint64 size = f.size();
    const qint64 tail = std::min(size, kEndSize + kMaxComment);
    const QByteArray end = readAt(f, size - tail, tail);
    if (end.size() != tail)
        return false;
    for (qint64 i = tail - kEndSize; i >= 0; --i) {
        if (at<quint32>(end, i) != kEndRecord)
            continue;
        d.entries = at<quint16>(end, i + 10);
        d.size = at<quint32>(end, i + 12);
        d.offset = at<quint32>(end, i + 16);
        const qint64 endAt = size - tail + i;
        if (d.entries != 0xFFFF && d.size != 0xFFFFFFFF && d.offset != 0xFFFFFFFF)
            return true;
        // ZIP64: the locator sits just before the end record and names the larger one.
        const QByteArray locator = readAt(f, endAt - 20, 20);
        if (locator.size() != 20 || at<quint32>(locator, 0) != kEnd64Locator)
            return false;
        const QByteArray end64 = readAt(f, static_cast<qint64>(at<quint64>(locator, 8)), 56);
        if (end64.size() != 56 || at<quint32>(end64, 0) != kEnd64Record)
            return false;
        d.entries = at<quint64>(end64, 32);
        d.size = at<quint64>(end64, 40);
        d.offset = at<quint64>(end64, 48);
        return true;
    }
    return false;
}
} // namespace

ZipLayout::Verdict ZipLayout::check(const QString& nativeArchive, qint64 entries)
{
    QFile f;
    const int fd = NativeFile::openDescriptor(nativeArchive);
    if (fd < 0 || !f.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        NativeFile::closeDescriptor(fd);
        return Verdict::Unreadable;
    }
    Directory d;
    const quint64 fileSize = static_cast<quint64>(f.size());
    if (!findDirectory(f, d) || d.offset > fileSize || d.size > fileSize - d.offset
        || d.entries != static_cast<quint64>(entries))
        return Verdict::Unreadable;
    const QByteArray dir = readAt(f, static_cast<qint64>(d.offset), static_cast<qint64>(d.size));
    if (static_cast<quint64>(dir.size()) != d.size)
        return Verdict::Unreadable;

    // Each entry spans from its local record to the end of its data.
    std::vector<std::pair<quint64, quint64>> spans;
    spans.reserve(static_cast<size_t>(d.entries));
    qint64 pos = 0;
    for (quint64 n = 0; n < d.entries; ++n) {
        if (pos + kCentralSize > dir.size() || at<quint32>(dir, pos) != kCentralRecord)
            return Verdict::Unreadable;
        quint64 packed = at<quint32>(dir, pos + 20);
        quint64 plain = at<quint32>(dir, pos + 24);
        const qint64 nameLength = at<quint16>(dir, pos + 28);
        const qint64 extraLength = at<quint16>(dir, pos + 30);
        const qint64 commentLength = at<quint16>(dir, pos + 32);
        quint64 local = at<quint32>(dir, pos + 42);
        const qint64 extraAt = pos + kCentralSize + nameLength;
        const qint64 next = extraAt + extraLength + commentLength;
        if (next > dir.size())
            return Verdict::Unreadable;
        // The ZIP64 field holds, in this order, the values whose short field is full.
        for (qint64 e = extraAt; e + 4 <= extraAt + extraLength;) {
            const quint16 id = at<quint16>(dir, e);
            const qint64 length = at<quint16>(dir, e + 2);
            if (e + 4 + length > extraAt + extraLength)
                break;
            if (id == 0x0001) {
                qint64 v = e + 4;
                for (quint64* field : { &plain, &packed, &local }) {
                    if (*field != 0xFFFFFFFF)
                        continue;
                    if (v + 8 > e + 4 + length)
                        return Verdict::Unreadable;
                    *field = at<quint64>(dir, v);
                    v += 8;
                }
            }
            e += 4 + length;
        }
        const QByteArray header = readAt(f, static_cast<qint64>(std::min(local, fileSize)), kLocalSize);
        if (header.size() != kLocalSize || at<quint32>(header, 0) != kLocalRecord)
            return Verdict::Unreadable;
        const quint64 dataAt = local + kLocalSize + at<quint16>(header, 26) + at<quint16>(header, 28);
        if (packed > fileSize || dataAt + packed > fileSize)
            return Verdict::Unreadable;
        spans.emplace_back(local, dataAt + packed);
        pos = next;
    }
    std::sort(spans.begin(), spans.end());
    for (size_t i = 1; i < spans.size(); ++i)
        if (spans[i].first < spans[i - 1].second)
            return Verdict::Overlapping;
    return Verdict::Sound;
}

} // namespace vmk::zip
