#pragma once

#include <QString>

namespace vmk::zip
{

// The archive's own layout, read from its central directory and local headers
// (libzip does not tell where an entry's data lies). Extraction refuses an
// archive whose entries share data: many entries over one local record is how a
// small file unpacks to an enormous size.
class ZipLayout
{
public:
    enum class Verdict {
        Sound, // every entry's record and data lie apart
        Overlapping, // two entries share bytes
        Unreadable, // the directory or a local header is not where it says
    };
    // `entries` is the count libzip found; the directory must hold the same.
    static Verdict check(const QString& nativeArchive, qint64 entries);
};

} // namespace vmk::zip
