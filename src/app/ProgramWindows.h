#pragma once

#include "EnvironmentHooks.h"

#include "panel/ControlPanel.h"

namespace vmk
{
class Splash;
namespace panel
{
class Form1;
}

// The program's two lasting windows and how they hand over: Splash starts up
// and keeps the tray icon, Form1 is the panel. Built once by main().
class ProgramWindows
{
public:
    explicit ProgramWindows(EnvironmentHooks hooks);
    ~ProgramWindows();
    ProgramWindows(const ProgramWindows&) = delete;
    ProgramWindows& operator=(const ProgramWindows&) = delete;

    // Shows the splash and runs its Form_Load; the rest follows in the event loop.
    void start();
    // A second start on the device: the panel comes back to the front, or the
    // splash while start-up still runs.
    void bringToFront();

private:
    EnvironmentHooks m_hooks;
    panel::ControlPanel m_panel;
    Splash* m_splash = nullptr;
    panel::Form1* m_form = nullptr;
    bool m_panelShown = false;
};

} // namespace vmk
