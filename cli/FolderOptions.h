#pragma once

#include "CommandLine.h"

#include <QList>
#include <QString>

// "--program-folder DIR" and "--device DIR": the commands that work on a
// device's own settings and folders take them alike.
const QList<CliOption>& FolderOptions();
const QString& FolderOptionsHelp();
// Applies both, each made canonical so a folder reached through a link lies on
// its real drive, and settles the program folder and drive from them.
void ApplyFolderOptions(const CommandLine& cl);
