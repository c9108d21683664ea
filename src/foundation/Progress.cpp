#include "foundation/Progress.h"

#include <utility>

namespace vmk
{
namespace
{
ProgressHook& barF()
{
    static ProgressHook hook;
    return hook;
}

ProgressHook& barT()
{
    static ProgressHook hook;
    return hook;
}

MousePointerHook& pointer()
{
    static MousePointerHook hook;
    return hook;
}

template<typename Hook, typename... Args> void call(const Hook& slot, Args... args)
{
    // Copy first: the hook may replace itself while it runs.
    Hook hook = slot;
    if (hook)
        hook(args...);
}
} // namespace

void ProgressBarF(int percent)
{
    call(barF(), percent);
}

void ProgressBarT(int percent)
{
    call(barT(), percent);
}

ProgressHook SetProgressBarFHook(ProgressHook hook)
{
    return std::exchange(barF(), std::move(hook));
}

ProgressHook SetProgressBarTHook(ProgressHook hook)
{
    return std::exchange(barT(), std::move(hook));
}

void SetMousePointer(int value)
{
    call(pointer(), value);
}

MousePointerHook SetMousePointerHook(MousePointerHook hook)
{
    return std::exchange(pointer(), std::move(hook));
}

} // namespace vmk
