#include "scanner/ThreatActions.h"

#include "components/engine/Engine.h"
#include "components/engine/Option.h"
#include "foundation/FileServices.h"
#include "foundation/ForceDelete.h"
#include "foundation/Translate.h"
#include "scanner/ThreatListModel.h"

namespace vmk
{

void DeleteTickedThreats(ThreatListModel& threats)
{
    for (qsizetype row = 0; row < threats.rowCountWithPending(); ++row) {
        if (!threats.isTicked(row))
            continue;
        const QString path = threats.fullPath(row);
        ForceDelete(path);
        threats.setTicked(row, false);
        threats.setStatus(row,
            FileExists(path) ? Translate(QStringLiteral("Será eliminada al reiniciar"))
                             : Translate(QStringLiteral("Eliminado")));
    }
}

void DisinfectTickedThreats(ThreatListModel& threats)
{
    engine::setvalue(engine::Option::Repair, "1");
    for (qsizetype row = 0; row < threats.rowCountWithPending(); ++row) {
        if (!threats.isTicked(row))
            continue;
        const QString path = threats.fullPath(row);
        // What the engine answers is kept from the row on purpose.
        engine::ScanFile(reinterpret_cast<const char16_t*>(path.utf16()));
        threats.setTicked(row, false);
        threats.setStatus(row, Translate(QStringLiteral("Desinfectado")));
    }
    engine::setvalue(engine::Option::Repair, "0");
}

} // namespace vmk
