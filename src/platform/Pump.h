#pragma once

#include <functional>

namespace vmk
{

// Long loops call DoEvents() between steps so that the screens stay alive and
// Stop, Pause and Cancel can act re-entrantly. The application installs a hook
// that processes Qt events; tests install scripted hooks. Without a hook it does
// nothing, which is what the command-line tool wants.
using PumpHook = std::function<void()>;

void DoEvents();
void SetPumpHook(PumpHook hook);
PumpHook CurrentPumpHook();

} // namespace vmk
