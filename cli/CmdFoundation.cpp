// vmk seal / unseal / settings / drives: the foundation from a terminal.

#include "CommandRegistry.h"

#include "foundation/FileServices.h"
#include "foundation/Globals.h"
#include "foundation/LanguageFile.h"
#include "foundation/Messages.h"
#include "foundation/Settings.h"
#include "foundation/StartUp.h"
#include "platform/DriveMap.h"

#include <QDir>
#include <QFileInfo>

#include <cstdio>

namespace
{
void printLine(const QString& text)
{
    std::fprintf(stdout, "%s\n", text.toUtf8().constData());
}

int fail(const QString& text, int code = 1)
{
    std::fprintf(stderr, "vmk: %s\n", text.toUtf8().constData());
    return code;
}

// Runs `work` and tells whether it showed a message (the seal operations report
// their errors only that way); the message still reaches the console.
template<typename Work> bool showedMessage(Work work)
{
    bool shown = false;
    vmk::MessageAnswerer previous;
    previous = vmk::SetMessageAnswerer([&](const QString& text, int kind) {
        shown = true;
        return previous ? previous(text, kind) : 0;
    });
    work();
    vmk::SetMessageAnswerer(previous);
    return shown;
}

// Takes "--program-folder DIR" and "--device DIR" out of args and applies them.
// Returns an error text, or "" when all is well.
QString applyFolderOptions(QStringList& args)
{
    vmk::DriveMap& map = vmk::DriveMap::instance();
    for (qsizetype i = 0; i < args.size();) {
        const QString opt = args[i];
        if (opt != QLatin1String("--program-folder") && opt != QLatin1String("--device")) {
            ++i;
            continue;
        }
        if (i + 1 >= args.size())
            return opt + QStringLiteral(" needs a folder");
        const QFileInfo dir(args[i + 1]);
        if (!dir.isDir())
            return QStringLiteral("not a folder: ") + args[i + 1];
        if (opt == QLatin1String("--device"))
            map.setDeviceOverride(dir.absoluteFilePath());
        else
            map.setProgramFolder(dir.absoluteFilePath());
        args.remove(i, 2);
    }
    vmk::G().ProgramFolder = map.logicalProgramFolder();
    vmk::SettleProgramDrive();
    return {};
}

int sealCommand(const QStringList& args)
{
    if (args.size() != 1)
        return fail(QStringLiteral("usage: vmk seal TEXT"), 2);
    QString hex;
    if (showedMessage([&] { hex = vmk::SealValue(args[0]); }) || hex.isEmpty())
        return 1;
    printLine(hex);
    return 0;
}

int unsealCommand(const QStringList& args)
{
    if (args.size() != 1)
        return fail(QStringLiteral("usage: vmk unseal HEX"), 2);
    QString clear;
    if (showedMessage([&] { clear = vmk::UnsealValue(args[0]); }))
        return 1;
    printLine(clear);
    return 0;
}

int settingsCommand(const QStringList& given)
{
    QStringList args = given;
    const QString error = applyFolderOptions(args);
    if (!error.isEmpty())
        return fail(error, 2);
    if (!args.isEmpty())
        return fail(QStringLiteral("usage: vmk settings [--program-folder DIR]"), 2);
    vmk::G().LanguageIndex = vmk::ReadLanguageFile(vmk::G().ProgramFolder, vmk::G().LanguageIndex);
    vmk::ReadSettings();
    if (!QFileInfo::exists(vmk::SettingsFilePath()))
        return fail(QStringLiteral("cannot write ") + vmk::SettingsFilePath());
    for (const auto& [key, value] : vmk::SettingsInDefaultOrder())
        printLine(key + u'=' + value);
    return 0;
}

int drivesCommand(const QStringList& given)
{
    QStringList args = given;
    const QString error = applyFolderOptions(args);
    if (!error.isEmpty())
        return fail(error, 2);
    if (!args.isEmpty())
        return fail(QStringLiteral("usage: vmk drives [--program-folder DIR] [--device DIR]"), 2);
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

CommandRegistry::Registrar sealReg(
    "seal", "seal TEXT                      sealed hexadecimal of a settings value", sealCommand);
CommandRegistry::Registrar unsealReg(
    "unseal", "unseal HEX                     clear text of a sealed value", unsealCommand);
CommandRegistry::Registrar settingsReg(
    "settings", "settings [--program-folder DIR]  every setting of VMK.cnf as key=value", settingsCommand);
CommandRegistry::Registrar drivesReg(
    "drives", "drives [--program-folder DIR] [--device DIR]  the drive letters and their space", drivesCommand);
} // namespace
