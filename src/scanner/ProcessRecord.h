#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>

namespace vmk
{

// One running process of the memory scan, with the files it has loaded.
struct ProcessRecord {
    QString ExeName; // as the process list gives it, cut at its first NUL
    QString ExePath; // resolved full path in upper case, or ""
    uint32_t ProcessID = 0;
    uint32_t ParentProcessID = 0;
    bool HasThreads = false; // thread count above 0
    uint32_t ThreadCount = 0; // written only when above 0
    // The modules after the image, at the same indices. Both hold exactly
    // ModuleLast + 1 entries; ModuleLast is -1 when there are none, and process
    // 0 (the idle process) keeps 0 with both empty, which no walk reads since
    // modules are scanned only when ModuleLast is above 0.
    QStringList ModuleNames;
    QStringList ModulePaths;
    int32_t ModuleLast = -1;
    uint32_t DefaultHeapID = 0; // kept as the list gives it; not used in the scan
};

} // namespace vmk
