// Delete.exe PATH: removes the file (or an empty folder) and reports by exit
// code: 0 the path is gone, 1 it is still there, 2 bad argument (see
// HelperPathArgument: one absolute path without "." or ".." components).

#include "platform/FileRemoval.h"
#include "platform/HelperArgument.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const auto argument = vmk::HelperPathArgument("Delete.exe");
    if (!argument)
        return 2;
    if (!vmk::FileRemoval::makeWritableAndRemove(*argument, true)) {
        std::fprintf(stderr, "Delete.exe: %s: still there\n", argument->toUtf8().constData());
        return 1;
    }
    return 0;
}
