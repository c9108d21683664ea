#include "platform/Pump.h"

#include <utility>

namespace vmk
{
namespace
{
PumpHook& hookSlot()
{
    static PumpHook hook;
    return hook;
}
} // namespace

void DoEvents()
{
    // Copy first: the hook may replace itself while it runs.
    PumpHook hook = hookSlot();
    if (hook)
        hook();
}

void SetPumpHook(PumpHook hook)
{
    hookSlot() = std::move(hook);
}

PumpHook CurrentPumpHook()
{
    return hookSlot();
}

} // namespace vmk
