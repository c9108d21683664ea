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
    // The file manager's transfer (one at a time): the item, its target and the verb.
    QString SourcePath; // source item, key form or path
    QString SourceLeaf; // emptied with each selection
    QString SourceFolderName; // last component of a folder source
    QString TargetPath; // key of the target folder (for code 5 the item to delete)
    int TreeSide = 0; // 1 device tree, 2 host tree: where the menu was raised
    int DragSide = 0; // the same, for the tree where a drag began
    int OperationCode = 0; // 0 copy, 1 encrypt, 2 decrypt, 3 compress, 4 decompress, 5 delete
    bool MoveFlag = false; // remove the source once its result exists
    qint32 TotalFiles = 0; // from the pre-count
    qint32 DoneFiles = 0; // files begun so far
};

Globals& G();

} // namespace vmk
