#pragma once

#include "components/engine/CompiledEngine.h"
#include "components/engine/EngineCode.h"
#include "components/engine/EngineOptions.h"

#include <QByteArray>
#include <QString>

#include <map>
#include <memory>
#include <mutex>

namespace vmk::engine
{

// The process's engine: the options set so far, the signature folder and the
// compiled engine that serves them. Scanners ask for a Handle before each file;
// a stale engine (an engine-level option changed) is rebuilt then, once, while
// scans already running finish on the engine they hold. Safe from any thread.
class EngineService
{
public:
    static EngineService& instance();

    struct Handle {
        int code = 0; // EngineCode; the engine is null unless 0
        std::shared_ptr<const CompiledEngine> engine;
        EngineOptions options;
    };

    int load();
    int unload();
    bool loaded() const;
    // Why the engine is not running: the code of the last load that failed,
    // NotLoaded before any load and after an unload, Ok while it runs.
    int loadCode() const;
    Handle acquire();

    void setValue(int number, const QByteArray& value);
    // Text of EngineValue::SignatureVersion or SignatureCount; empty for others.
    QByteArray value(int number) const;

    // Native folder of the signatures; empty means "sigs" in the current folder.
    void setSignatureFolder(const QString& nativeFolder);
    QString signatureFolder() const;
    // Native temporary folder; empty means the host's.
    void setTempFolder(const QString& nativeFolder);

private:
    EngineService() = default;
    QString effectiveTempFolder() const;

    mutable std::mutex m_mutex;
    bool m_loaded = false;
    int m_loadCode = NotLoaded;
    bool m_stale = false;
    EngineOptions m_options;
    std::shared_ptr<const CompiledEngine> m_engine;
    QString m_signatureFolder;
    QString m_tempFolder;
};

} // namespace vmk::engine
