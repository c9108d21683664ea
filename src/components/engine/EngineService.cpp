#include "components/engine/EngineService.h"

#include "components/engine/EngineCode.h"
#include "components/engine/EngineValue.h"

#include <QDir>

namespace vmk::engine
{

EngineService& EngineService::instance()
{
    static EngineService service;
    return service;
}

QString EngineService::signatureFolder() const
{
    return m_signatureFolder.isEmpty() ? QDir::current().filePath(QStringLiteral("sigs")) : m_signatureFolder;
}

QString EngineService::effectiveTempFolder() const
{
    return m_tempFolder.isEmpty() ? QDir::tempPath() : m_tempFolder;
}

void EngineService::setSignatureFolder(const QString& nativeFolder)
{
    std::lock_guard lock(m_mutex);
    m_signatureFolder = nativeFolder;
}

void EngineService::setTempFolder(const QString& nativeFolder)
{
    std::lock_guard lock(m_mutex);
    m_tempFolder = nativeFolder;
}

int EngineService::load()
{
    std::lock_guard lock(m_mutex);
    // A new engine runs on its built-in options until the program pushes its own.
    m_options = EngineOptions();
    m_engine.reset();
    m_loaded = false;
    int code = Ok;
    auto built = CompiledEngine::build(signatureFolder(), effectiveTempFolder(), m_options, code);
    m_loadCode = code;
    if (!built)
        return code;
    m_engine = std::move(built);
    m_stale = false;
    m_loaded = true;
    return Ok;
}

int EngineService::unload()
{
    std::lock_guard lock(m_mutex);
    m_engine.reset();
    m_loaded = false;
    m_loadCode = NotLoaded;
    return Ok;
}

bool EngineService::loaded() const
{
    std::lock_guard lock(m_mutex);
    return m_loaded;
}

int EngineService::loadCode() const
{
    std::lock_guard lock(m_mutex);
    return m_loadCode;
}

EngineService::Handle EngineService::acquire()
{
    std::lock_guard lock(m_mutex);
    Handle h;
    if (!m_loaded) {
        h.code = NotLoaded;
        return h;
    }
    if (m_stale || !m_engine) {
        int code = Ok;
        auto built = CompiledEngine::build(signatureFolder(), effectiveTempFolder(), m_options, code);
        if (!built) {
            h.code = code; // stays stale: the next scan tries again
            return h;
        }
        m_engine = std::move(built);
        m_stale = false;
    }
    h.engine = m_engine;
    h.options = m_options;
    return h;
}

void EngineService::setValue(int number, const QByteArray& value)
{
    std::lock_guard lock(m_mutex);
    if (m_options.set(number, value))
        m_stale = true;
}

QByteArray EngineService::value(int number) const
{
    std::lock_guard lock(m_mutex);
    if (!m_engine)
        return {};
    if (number == EngineValue::SignatureVersion)
        return m_engine->versionText();
    if (number == EngineValue::SignatureCount)
        return QByteArray::number(m_engine->signatureCount());
    return {};
}

} // namespace vmk::engine
