#pragma once

#include "platform/ProcessSource.h"

namespace vmk
{

// The process list of Linux, read from /proc (or from a folder of the same
// shape, for tests). Every read fails quietly: a process that ends while it is
// being read, or that belongs to another user, leaves empty texts and lists.
//
// Modules are the file-backed executable mappings of /proc/PID/maps. /proc keeps
// no load order, so the image comes first and the other files follow by
// descending address, which is the order the loader mapped them in under the
// kernel's default top-down layout (ld.so, then preloads, then the needed
// libraries). A file whose mapping is marked " (deleted)" keeps its path without
// the mark, so its row names what the process loaded and the engine reports the
// file as missing (or scans what now lies at that path). memfd files have no path
// anyone can open: an executable run from one gives an empty image path (its
// image still heads the modules, without a path), and memfd libraries are left out.
class ProcProcessSource : public ProcessSource
{
public:
    explicit ProcProcessSource(QString procRoot = QStringLiteral("/proc"));

    QList<ProcessEntry> processes() const override;
    QList<ModuleEntry> modules(uint32_t processId) const override;
    QString imagePath(uint32_t processId) const override;

private:
    // The exe link's target without the deleted mark, as bytes; "" when unreadable.
    QByteArray imageTarget(uint32_t processId) const;

    QString m_root;
};

} // namespace vmk
