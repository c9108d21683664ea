#include "components/engine/Engine.h"

#include "components/engine/EngineService.h"
#include "components/engine/EngineSession.h"

#include <QByteArray>

#include <map>
#include <mutex>

namespace vmk::engine
{
namespace
{

EngineSession& programSession()
{
    static EngineSession session;
    return session;
}

// Texts of getvalue, kept per number so that each stays put until read again.
std::map<int32_t, QByteArray>& valueTexts()
{
    static std::map<int32_t, QByteArray> texts;
    return texts;
}

std::mutex& valueMutex()
{
    static std::mutex m;
    return m;
}

} // namespace

int32_t LoadEngine()
{
    return EngineService::instance().load();
}

int32_t UnLoadEngine()
{
    return EngineService::instance().unload();
}

ScanResult ScanFile(const char16_t* path)
{
    return programSession().ScanFile(path);
}

void ReadAlert(int32_t index, AlertRecord* out)
{
    programSession().ReadAlert(index, out);
}

void getvalue(int32_t number, EngineValue* out)
{
    if (!out)
        return;
    std::lock_guard lock(valueMutex());
    QByteArray& text = valueTexts()[number];
    text = EngineService::instance().value(number);
    out->EngineStatus = EngineService::instance().loaded() ? 0 : 1;
    out->TextLen = static_cast<int32_t>(text.size());
    out->TextPtr = text.constData();
}

int32_t setvalue(int32_t number, const char* value)
{
    EngineService::instance().setValue(number, QByteArray(value ? value : ""));
    return 0;
}

} // namespace vmk::engine
