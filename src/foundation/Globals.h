#pragma once

#include <QString>

namespace vmk
{

// The process-wide values that every subsystem shares. They start at zero and
// are set by start-up, the panel and the tools, as their owners describe.
struct Globals {
    int LanguageIndex = 0; // 0 Spanish .. 6 Chinese
    QString ProgramFolder; // logical folder of the executable, e.g. "E:\" or "E:\VMK"
    QString SystemFolder; // logical per-user folder that stands in for the system folder
    QString ProgramDrive; // "E:"
    bool EngineLoaded = false;
    bool QuitWithEject = false;
    bool ScanHost = false;
    bool PasswordOk = false;
    QString PassPhrase; // the owner's password, also the pass phrase of sealed files
    QString PickedFolder;
    int MessageAnswer = 0; // 6 yes, 7 no
    bool CancelRequested = false;
    bool ExcludeFile = false;
};

Globals& G();

} // namespace vmk
