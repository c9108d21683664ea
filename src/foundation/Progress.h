#pragma once

#include <functional>

namespace vmk
{

// The bars of the progress form Barra: ProgressBarF for the current file and
// ProgressBarT for the whole item, in percent (0..100). The form installs the
// hooks while it is shown; without a hook a value goes nowhere.
using ProgressHook = std::function<void(int percent)>;

void ProgressBarF(int percent);
void ProgressBarT(int percent);

// Install a hook and return the previous one (so a test or a form can restore it).
ProgressHook SetProgressBarFHook(ProgressHook hook);
ProgressHook SetProgressBarTHook(ProgressHook hook);

// The screen's mouse pointer: 11 hourglass, 1 default (0 is the form's own).
// The application installs a hook that sets the override cursor.
using MousePointerHook = std::function<void(int pointer)>;
void SetMousePointer(int pointer);
MousePointerHook SetMousePointerHook(MousePointerHook hook);

} // namespace vmk
