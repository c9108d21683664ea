#pragma once

#include <functional>

namespace vmk
{

// The percentage of the file a stage is working on, for ProgressBarF. The file
// manager's screen installs the hook; without one the percentage goes nowhere.
using StageProgressHook = std::function<void(int percent)>;

void SetStageProgressHook(StageProgressHook hook);
void ReportStageProgress(int percent);

} // namespace vmk
