#pragma once

#include "CommandLine.h"

// "--program-folder DIR" and "--device DIR", which every command that works on
// the device's files accepts.
extern const QList<CliOption> kFolderOptions;
extern const QString kFolderHelp;

// Applies the two options, each folder made canonical so a folder reached
// through a link lies on its real drive, and settles the program drive.
void applyFolderOptions(const CommandLine& cl);
