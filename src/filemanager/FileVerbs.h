#pragma once

#include <QDateTime>
#include <QString>

namespace vmk
{

// The file manager's verbs by name: rename and new folder, and what the properties
// dialog shows. Paths are logical ("E:\Docs\x.txt", folders ending in "\"); key
// bars are removed by the caller. Failures are told through ShowMessage, naming
// the entry; nothing existing is ever replaced.
class FileVerbs
{
public:
    // Why `name` cannot name one entry of a folder ("" when it can): "." and "..",
    // the separators "\" and "/", the key bar "|", and control characters such as a
    // line break. Every other character, "*", "?" and "\"" included, is a literal.
    static QString NameRefusal(const QString& name);

    // Renames the file or folder `path` to `newName` inside `parentFolder`. A name in
    // use (also by a twin differing only in case, where the folder tells case apart
    // it is another entry) is refused with a message. True when renamed.
    static bool RenameItem(const QString& path, const QString& parentFolder, const QString& newName);
    // Makes the folder `name` inside `parentFolder`. True when made.
    static bool MakeFolder(const QString& parentFolder, const QString& name);
    // The native path of `name` inside the logical folder, spelled exactly as given
    // (no case-blind match with an existing entry).
    static QString NativeChild(const QString& parentFolder, const QString& name);

    // What the properties dialog shows of an entry.
    struct Facts {
        bool exists = false;
        bool folder = false;
        bool link = false;
        QString path; // logical
        QString type; // "Carpeta", or the file's type as the system's type list names it
        qint64 bytes = -1; // a folder: the files below it (links not followed)
        qint64 files = 0; // a folder: how many files
        bool partial = false; // a folder too large to add up wholly
        QDateTime created, modified, accessed; // invalid when the filesystem keeps none
        QString permissions; // "rwxr-xr-x"
        QString owner, group;
    };
    static Facts ReadFacts(const QString& path);
    // "<KB>KB, <n> Bytes" above 1024 bytes, else "<n> Bytes"; "-----" for a negative size.
    static QString SizeWords(qint64 bytes);
    // Most entries a folder's size adds up before it shows a partial sum.
    static constexpr qint64 kFolderWalkLimit = 100000;
};

} // namespace vmk
