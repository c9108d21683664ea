#pragma once

#include "components/engine/EngineOptions.h"
#include "components/engine/ScanOutcome.h"

#include <QByteArray>
#include <QString>

#include <memory>

struct cl_engine;

namespace vmk::engine
{

// One libclamav engine with its signatures loaded and compiled under a set of
// engine-level options. It is immutable once built, so any number of threads can
// scan with it at once; an option change builds a new one instead of touching it.
class CompiledEngine
{
public:
    ~CompiledEngine();
    CompiledEngine(const CompiledEngine&) = delete;
    CompiledEngine& operator=(const CompiledEngine&) = delete;

    // Loads every signature file of `signatureFolder` (native path) and compiles.
    // On failure returns null and sets `code` to an EngineCode.
    static std::shared_ptr<CompiledEngine> build(
        const QString& signatureFolder, const QString& tempFolder, const EngineOptions& options, int& code);

    // Scans one file. `nativePath` is opened; `objectText` is how alerts name it.
    // Per-scan switches (parsers, heuristics, repair) are taken from `options`.
    ScanOutcome scan(const QString& nativePath, const QByteArray& objectText, const EngineOptions& options) const;

    unsigned signatureCount() const { return m_signatures; }
    QByteArray versionText() const { return m_version; }
    const EngineOptions& builtWith() const { return m_builtWith; }

private:
    CompiledEngine() = default;

    cl_engine* m_engine = nullptr;
    unsigned m_signatures = 0;
    QByteArray m_version;
    EngineOptions m_builtWith;
};

} // namespace vmk::engine
