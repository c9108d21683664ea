#include "scanner/Antivir.h"

#include "components/engine/Engine.h"
#include "components/engine/EngineSession.h"
#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "foundation/SettingKey.h"
#include "foundation/Translate.h"

#include <QByteArray>

#include <cstring>

namespace vmk
{
namespace
{
constexpr int kAllAlertsPlace = 11;
} // namespace

QString LiftEngineText(int32_t length, const char* pointer)
{
    if (length <= 0 || !pointer)
        return QString();
    // One byte longer than the text; the last one stays 0.
    QByteArray bytes(length + 1, '\0');
    std::memcpy(bytes.data(), pointer, static_cast<size_t>(length));
    // The host's 8-bit code page is UTF-8.
    QString text = QString::fromUtf8(bytes.constData(), bytes.size());
    text.remove(QChar(u'\0'));
    return text;
}

const std::array<EngineSetting, 18>& EngineSettings()
{
    static const std::array<EngineSetting, 18> table = [] {
        std::array<EngineSetting, 18> rows {};
        // Option 41 has no key: all alerts are always asked for, as the eleventh call.
        rows[kAllAlertsPlace - 1] = { engine::Option::AllAlerts, nullptr };
        for (const SettingKey* k : SettingKeysBy(&SettingKey::EngineOrder))
            rows[static_cast<size_t>(k->EngineOrder - 1)] = { k->EngineOption, k->TextVariable };
        return rows;
    }();
    return table;
}

void PushEngineOptions(const SettingsValues& settings)
{
    for (const EngineSetting& s : EngineSettings()) {
        const QByteArray value = s.Key ? (settings.*s.Key).toLocal8Bit() : QByteArray("1");
        engine::setvalue(s.Number, value.constData());
    }
}

FileScanResult ScanOneFile(const QString& path, engine::EngineSession* session)
{
    FileScanResult out;
    const auto* wide = reinterpret_cast<const char16_t*>(path.utf16());
    const engine::ScanResult r = session ? session->ScanFile(wide) : engine::ScanFile(wide);
    out.ReturnCode = r.ReturnCode;
    out.AlertCount = r.AlertCount;
    if (!out.infected())
        return out;
    for (int i = 0; i < r.AlertCount; ++i) {
        engine::AlertRecord rec;
        if (session)
            session->ReadAlert(i, &rec);
        else
            engine::ReadAlert(i, &rec);
        AlertRow row;
        row.Object = LiftEngineText(rec.ObjectLen, rec.ObjectPtr);
        row.ThreatKind = LiftEngineText(rec.ThreatKindLen, rec.ThreatKindPtr);
        row.ThreatName = LiftEngineText(rec.ThreatNameLen, rec.ThreatNamePtr);
        row.Threat = row.ThreatKind + ':' + row.ThreatName;
        row.Repairable = rec.Repairable == 1;
        out.Rows << row;
    }
    return out;
}

QString NotProcessedText(int returnCode)
{
    return Translate(QStringLiteral("Error: ")) + QString::number(returnCode);
}

QString NotScannedText(EntryKind kind)
{
    switch (kind) {
    case EntryKind::DanglingLink:
        return Translate(QStringLiteral("Enlace roto: su destino no existe"));
    case EntryKind::Fifo:
        return Translate(QStringLiteral("Tubería con nombre (FIFO): no se analiza"));
    case EntryKind::Socket:
        return Translate(QStringLiteral("Socket: no se analiza"));
    case EntryKind::Device:
        return Translate(QStringLiteral("Archivo de dispositivo: no se analiza"));
    default:
        return {};
    }
}

bool SideScanForExclusion(const QString& path)
{
    const engine::ScanResult r = engine::ScanFile(reinterpret_cast<const char16_t*>(path.utf16()));
    FileScanResult result;
    result.ReturnCode = r.ReturnCode;
    result.AlertCount = r.AlertCount;
    return SideScanForExclusion(path, result);
}

bool SideScanForExclusion(const QString& shownPath, const FileScanResult& result)
{
    G().ExcludeFile = false;
    if (result.infected()) {
        const QString text
            = Translate(QStringLiteral("¡Archivo infectado! ¿Desea excluir este archivo?")) + "\r\n" + shownPath;
        if (ShowMessage(text, 4) == 6)
            G().ExcludeFile = true;
    }
    return G().ExcludeFile;
}

} // namespace vmk
