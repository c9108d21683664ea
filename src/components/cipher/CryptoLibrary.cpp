#include "components/cipher/CryptoLibrary.h"

#include <gcrypt.h>

#include <mutex>

namespace vmk::cipher
{

bool EnsureCryptoLibrary()
{
    static std::once_flag once;
    static bool ok = false;
    std::call_once(once, [] {
        if (!gcry_check_version("1.10.0"))
            return;
        // No secure memory: the suite runs as an ordinary user without mlock rights.
        gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
        gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
        ok = true;
    });
    return ok;
}

} // namespace vmk::cipher
