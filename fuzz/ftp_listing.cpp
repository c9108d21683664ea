// What an FTP server sends for a folder: MLSD lines and LIST lines of Unix and
// DOS servers. The first byte picks the reader, the rest is the reply.
#include "components/ftp/ListingParser.h"
#include "platform/NativeName.h"

#include <cstdint>
#include <cstdlib>

using namespace vmk::ftp;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    const QByteArray reply(reinterpret_cast<const char*>(data) + 1, static_cast<qsizetype>(size - 1));
    const QList<RemoteEntry> entries = data[0] & 1 ? ListingParser::parseMlsd(reply)
                                                   : ListingParser::parseList(reply, QDate(2026, 11, 23));
    for (const RemoteEntry& e : entries) {
        // Every name is one the operations can reach, and it is the server's own bytes.
        const QByteArray name = vmk::NativeName::toBytes(e.name);
        if (name.isEmpty() || name == "." || name == ".." || name.contains('/') || name.contains('\r')
            || name.contains('\n') || name.contains('\0') || !reply.contains(name))
            abort();
        if (e.folder && e.size > 0 && data[0] & 1)
            abort();
    }
    return 0;
}
