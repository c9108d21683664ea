#include "panel/ControlPanel.h"

#include "panel/DeviceIntegration.h"
#include "panel/PanelFigures.h"
#include "panel/SignatureDate.h"

#include "components/engine/Engine.h"
#include "components/engine/EngineCode.h"
#include "components/engine/EngineService.h"
#include "foundation/FileServices.h"
#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "foundation/Settings.h"
#include "foundation/StartUp.h"
#include "foundation/Translate.h"
#include "platform/DriveMap.h"
#include "platform/LogicalPath.h"
#include "platform/RunAndWait.h"
#include "platform/Shell.h"
#include "scanner/Antivir.h"
#include "scanner/QuarantinePurge.h"

#include <QDir>
#include <QFile>

namespace vmk::panel
{
namespace
{
QString engineText(int number)
{
    engine::EngineValue v;
    engine::getvalue(number, &v);
    return LiftEngineText(v.TextLen, v.TextPtr);
}
} // namespace

const char* const ControlPanel::kWebAddress = "https://vormak.example.org/";

QString ControlPanel::ProgramFolderSlash() const
{
    return LogicalPath::withSlash(G().ProgramFolder);
}

void ControlPanel::OpenWebSite() const
{
    Shell::open(QString::fromLatin1(kWebAddress));
}

void ControlPanel::CheckFolders() const
{
    const struct {
        const QString& setting;
        const char* literal;
    } folders[] = {
        { S().QuarenteneFolder, "¡Carpeta de Cuarentena no existe!" },
        { S().DesinfectedFolder, "¡Carpeta de Desinfección no existe!" },
        { S().BackupsFolder, "¡Carpeta de Respaldos no existe!" },
        { S().CompFileFolder, "¡Carpeta Comprimida no existe!" },
        { S().EncriptFileFolder, "¡Carpeta Encriptada no existe!" },
    };
    for (const auto& f : folders) {
        if (!FileExists(G().ProgramDrive + f.setting))
            ShowMessage(QString::fromUtf8(f.literal) + QStringLiteral("\r\n")
                + QStringLiteral("Por favor, revise su configuración!"));
    }
}

int ControlPanel::PurgeQuarantine(const QDate& today) const
{
    if (S().DeleteFilesOpt != 1)
        return 0;
    return scanner::PurgeOldFiles(G().ProgramDrive + S().QuarenteneFolder, S().DeleteFilesAfter, today);
}

bool ControlPanel::SignatureIndexExists() const
{
    return FileExists(ProgramFolderSlash() + QStringLiteral("idx\\master.idx"));
}

QString ControlPanel::SignatureCaption() const
{
    if (!SignatureIndexExists())
        return QStringLiteral("-----");
    const QString caption = SignatureDate::ReadSignatureDate(
        DriveMap::instance().toNative(ProgramFolderSlash() + QStringLiteral("idx\\master.idx")));
    return caption.isEmpty() ? QStringLiteral("-----") : caption;
}

bool ControlPanel::AskForOldSignatures(const QString& caption, const QDate& today) const
{
    if (!SignatureDate::NeedsUpdateWarning(caption, today))
        return false;
    return ShowMessage(QStringLiteral("¡Las firmas no han sigo actualizadas en más de 5 días!") + QStringLiteral("\r\n")
                   + QStringLiteral("¿Desea actualizar ahora?"),
               1)
        == 6;
}

QString ControlPanel::EngineFailure() const
{
    const engine::EngineService& service = engine::EngineService::instance();
    if (service.loaded())
        return QString();
    const int code = service.loadCode();
    const QString signatures = ProgramFolderSlash() + QStringLiteral("sigs\\");
    QString reason;
    switch (code) {
    case engine::SignaturesMissing:
        reason = Translate(QStringLiteral("No hay archivos de firmas en la carpeta ")) + signatures;
        break;
    case engine::SignaturesBroken:
    case engine::CompileFailed:
        reason = Translate(QStringLiteral("Los archivos de firmas están dañados en la carpeta ")) + signatures;
        break;
    case engine::TempFolderUnusable:
        reason = Translate(QStringLiteral("No se puede escribir en la carpeta temporal "))
            + DriveMap::instance().toLogical(QDir::tempPath());
        break;
    case engine::InitFailed:
        reason = Translate(QStringLiteral("No se pudo iniciar la biblioteca del motor"));
        break;
    case engine::NotLoaded:
        return Translate(QStringLiteral("El motor no está iniciado"));
    default:
        reason = Translate(QStringLiteral("¡Error iniciando servicio!"));
        break;
    }
    return reason + QStringLiteral(" (") + QString::number(code) + QLatin1Char(')');
}

QString ControlPanel::EngineVersionText() const
{
    return engineText(engine::EngineValue::SignatureVersion);
}

QString ControlPanel::EngineCountText() const
{
    return PanelFigures::FormatCount(engineText(engine::EngineValue::SignatureCount));
}

void ControlPanel::PushOptions() const
{
    PushEngineOptions();
}

void ControlPanel::ReadDrive(qint64* freeMB, qint64* totalMB) const
{
    // An empty text (a drive that is gone) reads as 0.
    *freeMB = DriveFreeMB(G().ProgramDrive).toLongLong();
    *totalMB = DriveTotalMB(G().ProgramDrive).toLongLong();
}

bool ControlPanel::ProgramFileExists() const
{
    return FileExists(ProgramFolderSlash() + QStringLiteral("Vormak.exe"));
}

void ControlPanel::DevicePulled() const
{
    DeviceIntegration::RemoveShellKeys();
}

UpdateVerdict ControlPanel::RunUpdater() const
{
    // A log left by an earlier run must not be judged as this run's.
    QFile::remove(DriveMap::instance().toNative(SignatureUpdate::LogPath(G().ProgramDrive)));
    const platform::RunOutcome run = platform::RunAndWait(
        SignatureUpdate::UpdaterProgram(G().ProgramFolder), SignatureUpdate::UpdaterArguments(G().ProgramDrive));
    return SignatureUpdate::JudgeLog(run, DriveMap::instance().toNative(SignatureUpdate::LogPath(G().ProgramDrive)));
}

void ControlPanel::RestartEngine() const
{
    engine::UnLoadEngine();
    engine::LoadEngine();
}

void ControlPanel::ShutDownServices() const
{
    if (engine::UnLoadEngine() != 0)
        ShowMessage(QStringLiteral("¡Error al finalizar servicio!"));
    DeviceIntegration::RestoreAutorun(G().ProgramDrive);
}

bool ControlPanel::StartEjectHelper() const
{
    return DeviceIntegration::StartEjectHelper(G().SystemFolder, G().LanguageIndex, G().ProgramDrive);
}

} // namespace vmk::panel
