// A sealed value of VMK.cnf (or of the password store): hexadecimal text that
// anyone can edit, and the bytes behind it.
#include "FuzzSandbox.h"

#include "components/cipher/ValueSeal.h"
#include "foundation/Settings.h"

#include <cstdint>

using namespace vmk;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::FuzzSandbox::init();
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    // The seal is deterministic: whatever unseals must seal back to the same bytes.
    if (const auto clear = cipher::ValueSeal::unseal(bytes)) {
        const auto again = cipher::ValueSeal::seal(*clear);
        if (!again || *again != bytes)
            abort();
    }
    const QString hex = QString::fromUtf8(bytes);
    const QString clear = UnsealValue(hex);
    if (!clear.isEmpty() && SealValue(clear).isEmpty())
        abort();
    HexToBytes(hex);
    return 0;
}
