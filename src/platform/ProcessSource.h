#pragma once

#include <QList>
#include <QString>

#include <cstdint>

namespace vmk
{

// One running process as a snapshot of the system lists it.
struct ProcessEntry {
    uint32_t ProcessID = 0;
    uint32_t ParentProcessID = 0;
    QString Name; // cut at its first NUL
    uint32_t ThreadCount = 0;
    uint32_t DefaultHeapID = 0; // the host has no such value: always 0
};

// One file loaded into a process.
struct ModuleEntry {
    QString Name; // the file's name, cut at its first NUL
    QString Path; // native path, as the system reports it
};

// Where the memory scan learns which processes run and which files they have
// loaded. The host's source reads /proc; tests give a fixed list.
class ProcessSource
{
public:
    virtual ~ProcessSource() = default;

    // The processes running now, by ascending number.
    virtual QList<ProcessEntry> processes() const = 0;
    // The files of a process, its own image first, each file once. Empty when the
    // process has gone or belongs to someone we may not look at.
    virtual QList<ModuleEntry> modules(uint32_t processId) const = 0;
    // Native path of the process's executable; "" when gone or denied.
    virtual QString imagePath(uint32_t processId) const = 0;

    // The host's source (/proc).
    static const ProcessSource& host();
};

} // namespace vmk
