// VMK.cnf as a user or another program may have left it on the device.
#include "FuzzSandbox.h"

#include "foundation/Settings.h"

#include <QFile>

#include <cstdint>

using namespace vmk;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::FuzzSandbox::init();
    fuzz::FuzzSandbox::clearDevice();
    fuzz::FuzzSandbox::writeDeviceFile(
        QStringLiteral("VMK.cnf"), QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    // A file that does not read is replaced by the defaults; either way what is
    // in memory afterwards must write back and read again.
    ReadSettings();
    if (!WriteSettings() || !ReloadSettings())
        abort();
    SettingsInDefaultOrder();
    return 0;
}
