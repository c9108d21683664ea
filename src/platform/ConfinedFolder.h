#pragma once

#include "platform/ConfinedFile.h"

#include <QString>
#include <QStringList>

#include <memory>

namespace vmk
{

// Output written only beneath one folder, following no link that already lies
// inside it: every folder below the root is opened component by component
// without following links (openat with O_NOFOLLOW), and a link met on the way,
// or standing under the name of the file to write, is refused. The root itself
// is the caller's choice and is opened as it is, made when missing.
class ConfinedFolder
{
public:
    enum class Refusal {
        None,
        LinkOnPath, // a component below the root, or the file's own name, is a link
        NotAFolder, // a component that must be a folder is something else
        BadName, // an empty, ".", ".." or "/"-holding component
        Failed, // the system refused (see errno)
    };

    explicit ConfinedFolder(const QString& nativeRoot);
    ~ConfinedFolder();
    ConfinedFolder(const ConfinedFolder&) = delete;
    ConfinedFolder& operator=(const ConfinedFolder&) = delete;

    bool isOpen() const { return m_rootFd >= 0; }
    QString root() const { return m_root; }
    // Bytes the user may still write on the root's filesystem; -1 when unknown.
    qint64 freeBytes() const;

    // Makes the folders `names` (native names, one per level) beneath the root.
    Refusal makeFolders(const QStringList& names);
    // Starts the file whose folders and name are `names`; its folders are made as needed.
    std::unique_ptr<ConfinedFile> createFile(const QStringList& names, Refusal& why);

private:
    // A descriptor of the folder `names` beneath the root, or -1 with `why` set.
    int openFolder(const QStringList& names, Refusal& why);

    QString m_root;
    int m_rootFd = -1;
};

} // namespace vmk
