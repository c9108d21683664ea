// PSWADMON.cnf as a user or another program may have left it on the device.
// Build with the fuzz folder's CMakeLists:
//   vmk_fuzz_target(password_store DEPS vormak_passwords)
#include "FuzzSandbox.h"

#include "passwords/PasswordStore.h"

#include <cstdint>

using namespace vmk;
using namespace vmk::passwords;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::FuzzSandbox::init();
    fuzz::FuzzSandbox::clearDevice();
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    fuzz::FuzzSandbox::writeDeviceFile(QStringLiteral("PSWADMON.cnf"), bytes);
    PasswordStoreLines(bytes);
    PswNodes nodes;
    LoadPasswordStore(nodes);
    // Whatever loaded is whole records, and writes back and reads again the same.
    if (nodes.Count() % 3 != 0)
        abort();
    for (int i = 1; i <= nodes.Count(); i += 3) {
        if (nodes.Tag(i) != kRecordTag || nodes.Parent(i + 1) != i || nodes.Parent(i + 2) != i
            || nodes.Text(i + 2) != kPasswordMask)
            abort();
    }
    if (!SavePasswordStore(nodes))
        abort();
    PswNodes again;
    LoadPasswordStore(again);
    if (again.Count() != nodes.Count())
        abort();
    for (int i = 1; i <= nodes.Count(); ++i) {
        if (again.Text(i) != nodes.Text(i) || again.Tag(i) != nodes.Tag(i))
            abort();
    }
    return 0;
}
