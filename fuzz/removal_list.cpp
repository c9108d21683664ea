// The leftover-removal list WinInit.ini (and its record of long names), as an
// earlier session or anyone with access to the system folder left it. The input
// is the list, then a form feed, then the record. Start-up carries the list out,
// so it acts on files: the sandbox stops the run if an entry reaches anything
// outside the device folder.
#include "FuzzSandbox.h"

#include "foundation/ForceDelete.h"

#include <cstdint>

using namespace vmk;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::FuzzSandbox::init();
    fuzz::FuzzSandbox::clearDevice();
    const QByteArray input(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const qsizetype cut = input.indexOf('\f');
    fuzz::FuzzSandbox::writeDeviceFile(QStringLiteral("Windows/WinInit.ini"), cut < 0 ? input : input.left(cut));
    if (cut >= 0)
        fuzz::FuzzSandbox::writeDeviceFile(QStringLiteral("Windows/WinInit.ini.names"), input.mid(cut + 1));
    // Files for the entries to act on, the list's own entry added last.
    fuzz::FuzzSandbox::writeDeviceFile(QStringLiteral("a.txt"), "a");
    fuzz::FuzzSandbox::writeDeviceFile(QStringLiteral("my file.txt"), "b");
    fuzz::FuzzSandbox::writeDeviceFile(QStringLiteral("Docs/c.txt"), "c");
    ScheduleDeleteAtReboot(QStringLiteral("E:\\Docs\\c.txt"));
    ProcessPendingRemovals();
    return 0;
}
