// avupdate.conf, the updater's configuration beside the program.
#include "FuzzSandbox.h"

#include "UpdateConfig.h"

#include <cstdint>

using namespace vmk;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::FuzzSandbox::init();
    fuzz::FuzzSandbox::writeDeviceFile(
        QStringLiteral("avupdate.conf"), QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    QString error;
    const auto config
        = avupdate::UpdateConfig::read(fuzz::FuzzSandbox::device() + QStringLiteral("/avupdate.conf"), error);
    // Either a configuration or a reason, never neither.
    if (!config && error.isEmpty())
        abort();
    if (config && config->timeoutSeconds <= 0)
        abort();
    return 0;
}
