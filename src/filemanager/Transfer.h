#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace vmk
{

// The transfer engine: every file verb of the file manager (copy, move, with the
// pack and seal stages on the way, and delete) over one item, a file or a whole
// folder. Its state is the shared one in G() (SourcePath, TargetPath,
// OperationCode, MoveFlag, CancelRequested, TotalFiles, DoneFiles, ExcludeFile)
// and SV().ArchiveEntryName. Paths are logical ("E:\Docs\x.txt"); a folder ends
// in "\". One transfer runs at a time, on the interface thread; it pumps events
// at each entry and each copy block, and stops when G().CancelRequested is set.
//
// A move removes a source only once its result exists (a single decompressed file
// too). Each result is made under a temporary name and renamed into place, so a
// failed, cancelled or refused file leaves nothing under its name. Refused, each
// with a message naming the path: a folder into or onto itself, a file onto
// itself, a target folder that is a link, links leading out of the item's tree
// and special files (FIFOs, sockets, devices, dangling links). A deleting or
// moving walk passes WalkGuard::checkChosen first. The screen's own alerts (the
// source still there after a move or delete) stay with the screen.

// The operation codes of G().OperationCode.
enum TransferCode : int {
    TransferCopy = 0,
    TransferEncrypt = 1,
    TransferDecrypt = 2,
    TransferCompress = 3,
    TransferDecompress = 4,
    TransferDelete = 5,
};

// The top, for one item: `source` a file or a folder (ending in "\"), `target`
// the folder it goes into (for code 5 the item to delete, with `source` ignored),
// `folderName` the name the folder takes there (a folder source only).
void TransferItem(const QString& source, const QString& target, const QString& folderName);
// Walks `sourceFolder` (ending in "\") into `targetBase` + `folderName`, file by
// file through the stage of G().OperationCode; asks before replacing a file.
void TransferFolder(const QString& sourceFolder, const QString& targetBase, const QString& folderName);
// The pre-count: adds the files below `sourceFolder` to G().TotalFiles.
void CountFiles(const QString& sourceFolder, const QString& targetBase, const QString& folderName);
// The scan step: true when the file is to be left out (found infected and the
// user chose to exclude it). Sets G().ExcludeFile.
bool ScanTransferFile(const QString& path);
// True when the transfer scans files on the way: #ScanFilesOperations is "1" and
// the engine is loaded.
bool TransferScans();

// What the screen shows of the file in progress: its name and its folder (Barra's
// LabelF and Label4). The screen installs the hook; returns the previous one.
using TransferLabelsHook = std::function<void(const QString& name, const QString& folder)>;
TransferLabelsHook SetTransferLabelsHook(TransferLabelsHook hook);

// What became of the files of the last TransferItem, for callers that report in
// words of their own (the command-line tool). Emptied at the start of each item.
struct TransferNotes {
    QStringList Excluded; // sources left out at the scan step (of their own, or their result, found infected)
    QStringList Kept; // existing targets kept after a "no" to the overwrite question
    QStringList Failed; // sources whose stage left no result
    QStringList Done; // results written
    QString Refused; // why the whole item was refused, when it was ("" otherwise)
};
TransferNotes& TN();

} // namespace vmk
