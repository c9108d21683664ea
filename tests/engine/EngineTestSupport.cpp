#include "EngineTestSupport.h"

#include "TestSupport.h"
#include "components/engine/Engine.h"
#include "components/engine/EngineService.h"

#include <QDir>

namespace vmk::test
{

QString builtSignatureFolder()
{
    return QDir(binDir()).filePath("sigs");
}

int loadBuiltEngine(const QString& tempFolder)
{
    auto& service = engine::EngineService::instance();
    service.setSignatureFolder(builtSignatureFolder());
    service.setTempFolder(tempFolder);
    return engine::LoadEngine();
}

EngineScan scanWithEngine(const QString& path)
{
    EngineScan s;
    const engine::ScanResult r = engine::ScanFile(reinterpret_cast<const char16_t*>(path.utf16()));
    s.code = r.ReturnCode;
    s.count = r.AlertCount;
    if (r.ReturnCode != 0)
        return s;
    for (int i = 0; i < r.AlertCount; ++i) {
        engine::AlertRecord a;
        engine::ReadAlert(i, &a);
        s.alerts << QString::fromUtf8(a.ObjectPtr, a.ObjectLen) + '|'
                + QString::fromUtf8(a.ThreatKindPtr, a.ThreatKindLen) + ':'
                + QString::fromUtf8(a.ThreatNamePtr, a.ThreatNameLen) + '|' + QString::number(a.Repairable);
    }
    return s;
}

QByteArray eicar()
{
    return QByteArray("X5O!P%@AP[4\\PZX54(P^)7CC)7}$EICAR-STANDARD-ANTIVIRUS-TEST-FILE!$H+H*");
}

} // namespace vmk::test
