// Unlock.exe PATH: clears what keeps a file from being removed, where this user
// may: write permission on the file and on its folder, and the immutable and
// append-only flags of both. It removes nothing itself; Delete.exe follows.
// Exit code: 0 done (whatever could be cleared), 2 bad argument (one absolute
// path without "." or ".." components).

#include "platform/FileRemoval.h"
#include "platform/HelperArgument.h"

#include <QCoreApplication>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const auto argument = vmk::HelperPathArgument("Unlock.exe");
    if (!argument)
        return 2;
    vmk::FileRemoval::unlock(*argument);
    return 0;
}
