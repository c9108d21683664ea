// A sealed file as it may come back from a device or a download: any header,
// any chunks. The corpus files are sealed under the pass phrase "fuzz" with
// tiny key-derivation costs and 16-byte chunks, so that the fuzzer reaches the
// chunk code quickly.
#include "FuzzSandbox.h"

#include "components/cipher/FileCipher.h"
#include "components/cipher/PassPhraseKey.h"

#include <QFile>

#include <cstdint>
#include <cstring>

using namespace vmk;

namespace
{
quint32 u32At(const uint8_t* p)
{
    return p[0] | (p[1] << 8) | (p[2] << 16) | (static_cast<quint32>(p[3]) << 24);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::FuzzSandbox::init();
    // A header may ask for a derivation of up to 16 passes over 1 GiB, which the
    // reader accepts on purpose; that is seconds of work, not a fault, so such
    // inputs are left out here to keep the run fast.
    if (size >= 24 && (u32At(data + 12) > 2 || u32At(data + 16) > 256))
        return 0;
    fuzz::FuzzSandbox::clearDevice();
    fuzz::FuzzSandbox::writeDeviceFile(
        QStringLiteral("in.vmk"), QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    const QString target = fuzz::FuzzSandbox::device() + QStringLiteral("/out.bin");
    const auto result = cipher::FileCipher::decryptFile(
        fuzz::FuzzSandbox::device() + QStringLiteral("/in.vmk"), target, QByteArrayLiteral("fuzz"));
    // A failure never leaves a target behind.
    if (result != cipher::CipherError::None && QFile::exists(target))
        abort();
    cipher::PassPhraseKey::clearCache();
    return 0;
}
