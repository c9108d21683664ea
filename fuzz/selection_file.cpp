// A backup selection file as a user or another editor may leave it: any bytes.
// Every entry read is one line of the file, and writing the lists back and reading
// them again gives the same lists.
#include "backup/SelectionFile.h"
#include "platform/NativeName.h"

#include <cstdint>
#include <cstdlib>

using vmk::SelectionFile;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const SelectionFile::Lists lists = SelectionFile::Parse(bytes);
    for (const QStringList* list : { &lists.add, &lists.exclude }) {
        for (const QString& entry : *list) {
            const QByteArray line = vmk::NativeName::toBytes(entry);
            if (line.isEmpty() || line.contains('\r') || line.contains('\n') || !bytes.contains(line)
                || line == "[Add]" || line == "[Exclude]")
                abort();
        }
    }
    QStringList leftOut;
    const QByteArray written = SelectionFile::Compose(lists.add, lists.exclude, &leftOut);
    const SelectionFile::Lists back = SelectionFile::Parse(written);
    if (!leftOut.isEmpty() || back.add != lists.add || back.exclude != lists.exclude)
        abort();
    return 0;
}
