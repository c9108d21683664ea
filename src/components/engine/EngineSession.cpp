#include "components/engine/EngineSession.h"

#include "components/engine/EngineCode.h"
#include "components/engine/EnginePath.h"
#include "components/engine/EngineService.h"

#include <QString>

namespace vmk::engine
{

ScanResult EngineSession::ScanFile(const char16_t* path)
{
    m_last = ScanOutcome();
    const QString logical = path ? QString::fromUtf16(path) : QString();
    if (logical.isEmpty()) {
        m_last.code = BadPath;
        return { m_last.code, 0 };
    }
    EngineService::Handle h = EngineService::instance().acquire();
    if (h.code != Ok) {
        m_last.code = h.code;
        return { m_last.code, 0 };
    }
    m_last = h.engine->scan(NativePathOf(logical), logical.toUtf8(), h.options);
    return { m_last.code, static_cast<int32_t>(m_last.alerts.size()) };
}

void EngineSession::ReadAlert(int index, AlertRecord* out) const
{
    if (!out)
        return;
    *out = AlertRecord();
    if (index < 0 || static_cast<size_t>(index) >= m_last.alerts.size())
        return;
    const FoundThreat& t = m_last.alerts[static_cast<size_t>(index)];
    out->ObjectLen = static_cast<int32_t>(t.object.size());
    out->ObjectPtr = t.object.constData();
    out->ThreatNameLen = static_cast<int32_t>(t.name.size());
    out->ThreatNamePtr = t.name.constData();
    out->ThreatKindLen = static_cast<int32_t>(t.kind.size());
    out->ThreatKindPtr = t.kind.constData();
    out->Repairable = t.repairable;
}

} // namespace vmk::engine
