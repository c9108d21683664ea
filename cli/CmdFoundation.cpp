// vmk seal / unseal / settings / drives: the foundation from a terminal.

#include "CliFailure.h"
#include "CommandLine.h"
#include "CommandRegistry.h"
#include "FolderOptions.h"
#include "MessageCapture.h"

#include "foundation/FileServices.h"
#include "foundation/Globals.h"
#include "foundation/LanguageFile.h"
#include "foundation/Settings.h"
#include "foundation/StartUp.h"
#include "platform/DriveMap.h"

#include <QFileInfo>

#include <cstdio>

namespace
{
void printLine(const QString& text)
{
    std::fprintf(stdout, "%s\n", text.toUtf8().constData());
}

int sealCommand(const QStringList& args)
{
    const CommandLine cl(args, {});
    cl.expectOperands(1, 1, { QStringLiteral("TEXT") });
    QString hex;
    {
        const MessageCapture quiet;
        hex = vmk::SealValue(cl.operands().at(0));
    }
    if (hex.isEmpty())
        throw CliFailure(QString(), QStringLiteral("no se pudo usar la biblioteca de cifrado"), vmk::kSealErrorLibrary);
    printLine(hex);
    return 0;
}

int unsealCommand(const QStringList& args)
{
    const CommandLine cl(args, {});
    cl.expectOperands(1, 1, { QStringLiteral("HEX") });
    QString clear;
    bool failed = false;
    {
        const MessageCapture quiet;
        clear = vmk::UnsealValue(cl.operands().at(0));
        failed = !quiet.texts().isEmpty();
    }
    if (failed)
        throw CliFailure(cl.operands().at(0), QStringLiteral("el valor sellado está dañado o no es de este programa"),
            vmk::kSealErrorDamaged, CliFailure::kRefused);
    printLine(clear);
    return 0;
}

// Prints every setting, then names each folder setting whose folder is missing
// on the device, as the panel checks them at its start.
int settingsCommand(const QStringList& args)
{
    const CommandLine cl(args, FolderOptions());
    cl.expectOperands(0, 0, {});
    ApplyFolderOptions(cl);
    vmk::G().LanguageIndex = vmk::ReadLanguageFile(vmk::G().ProgramFolder, vmk::G().LanguageIndex);
    vmk::ReadSettings();
    if (!QFileInfo::exists(vmk::SettingsFilePath()))
        throw CliFailure(vmk::SettingsFilePath(), QStringLiteral("no se puede escribir"));
    const auto settings = vmk::SettingsInDefaultOrder();
    for (const auto& [key, value] : settings)
        printLine(key + u'=' + value);
    for (const auto& [key, value] : settings) {
        const QString folder = vmk::G().ProgramDrive + value;
        if (key.endsWith(QLatin1String("Folder")) && !vmk::FileExists(folder))
            std::fprintf(stderr, "vmk settings: %s\n",
                CliFailure::line(key + QStringLiteral(": ") + folder, QStringLiteral("no existe"))
                    .toUtf8()
                    .constData());
    }
    return 0;
}

int drivesCommand(const QStringList& args)
{
    const CommandLine cl(args, FolderOptions());
    cl.expectOperands(0, 0, {});
    ApplyFolderOptions(cl);
    for (const vmk::DriveInfo& d : vmk::DriveMap::instance().drives()) {
        const QString free = vmk::DriveFreeMB(d.drive());
        const QString total = vmk::DriveTotalMB(d.drive());
        printLine(
            QStringList { d.drive(), d.display(), d.root, (free.isEmpty() ? QStringLiteral("?") : free) + " MB free",
                (total.isEmpty() ? QStringLiteral("?") : total) + " MB total",
                d.isDevice ? QStringLiteral("device") : QString() }
                .join(u'\t')
                .trimmed());
    }
    return 0;
}

CommandRegistry::Registrar sealReg("seal",
    { QStringLiteral("seal TEXT"), QStringLiteral("the sealed hexadecimal form of a settings value"), QString(),
        sealCommand });
CommandRegistry::Registrar unsealReg("unseal",
    { QStringLiteral("unseal HEX"), QStringLiteral("the clear text of a sealed value"), QString(), unsealCommand });
CommandRegistry::Registrar settingsReg("settings",
    { QStringLiteral("settings [--program-folder DIR] [--device DIR]"),
        QStringLiteral("every setting of VMK.cnf as key=value (written with defaults if missing)"),
        FolderOptionsHelp()
            + QStringLiteral("\n  A folder setting whose folder is missing on the device is named on standard error."),
        settingsCommand });
CommandRegistry::Registrar drivesReg("drives",
    { QStringLiteral("drives [--program-folder DIR] [--device DIR]"),
        QStringLiteral("the drive letters, their folders and their space"), FolderOptionsHelp(), drivesCommand });
} // namespace
