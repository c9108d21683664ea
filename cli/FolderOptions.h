#pragma once

#include "CommandLine.h"

#include <QList>
#include <QString>

// "--program-folder DIR" and "--device DIR", for the commands that read the
// device's settings.
namespace FolderOptions
{
extern const QList<CliOption> kOptions;
extern const QString kHelp;
// Applies both, each made canonical so a folder reached through a link lies on
// its real drive, and settles the program drive.
void apply(const CommandLine& cl);
} // namespace FolderOptions
