#include "filemanager/StageProgress.h"

#include <utility>

namespace vmk
{
namespace
{
StageProgressHook& hookSlot()
{
    static StageProgressHook hook;
    return hook;
}
} // namespace

void SetStageProgressHook(StageProgressHook hook)
{
    hookSlot() = std::move(hook);
}

void ReportStageProgress(int percent)
{
    if (hookSlot())
        hookSlot()(percent);
}

} // namespace vmk
