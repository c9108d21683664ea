#pragma once

namespace vmk::cipher
{

// Initialises libgcrypt once per process; every entry of the cipher component
// calls it first. Returns false when the library is too old to use.
bool EnsureCryptoLibrary();

} // namespace vmk::cipher
