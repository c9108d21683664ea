// Language.cnf on the device: its first line names the language.
#include "FuzzSandbox.h"

#include "foundation/LanguageFile.h"

#include <cstdint>

using namespace vmk;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::FuzzSandbox::init();
    fuzz::FuzzSandbox::writeDeviceFile(
        QStringLiteral("Language.cnf"), QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    const int index = ReadLanguageFile(QStringLiteral("E:\\"), 1);
    if (index < 0 || index > 6)
        abort();
    return 0;
}
