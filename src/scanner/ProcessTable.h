#pragma once

#include "scanner/ProcessRecord.h"

#include <QList>

#include <cstdint>

namespace vmk
{

// The process-wide list of the memory scan, built by BuildProcessList right
// before a memory walk and read by the control panel.
struct ProcessTable {
    QList<ProcessRecord> Record; // index 0 upward
    int32_t ProcessLast = -1; // highest valid index: the count of processes minus 1
    int32_t ModuleTotal = 0; // runs up during the walk; not shown
};

ProcessTable& Processes();

} // namespace vmk
