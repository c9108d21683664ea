#include "FolderOptions.h"

#include "foundation/Globals.h"
#include "foundation/StartUp.h"
#include "platform/DriveMap.h"

const QList<CliOption>& FolderOptions()
{
    static const QList<CliOption> options { { QStringLiteral("--program-folder"), true },
        { QStringLiteral("--device"), true } };
    return options;
}

const QString& FolderOptionsHelp()
{
    static const QString help = QStringLiteral(
        "  --program-folder DIR  the program folder (default: the folder of vmk); a link is followed\n"
        "  --device DIR          the folder that is the device (default: the mount that holds the program folder)");
    return help;
}

void ApplyFolderOptions(const CommandLine& cl)
{
    vmk::DriveMap& map = vmk::DriveMap::instance();
    if (cl.has(QStringLiteral("--device")))
        map.setDeviceOverride(CommandLine::inputFolder(cl.value(QStringLiteral("--device"))));
    if (cl.has(QStringLiteral("--program-folder")))
        map.setProgramFolder(CommandLine::inputFolder(cl.value(QStringLiteral("--program-folder"))));
    vmk::G().ProgramFolder = map.logicalProgramFolder();
    vmk::SettleProgramDrive();
}
