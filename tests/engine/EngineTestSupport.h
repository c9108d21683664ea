#pragma once

#include <QString>
#include <QStringList>

namespace vmk::test
{

// The alerts of one ScanFile through the six operations, each as
// "object|Kind:Name|repairable", and the return code.
struct EngineScan {
    int code = 0;
    int count = 0;
    QStringList alerts;
};

EngineScan scanWithEngine(const QString& path);
// Starts the engine on the built signature set (bin/sigs) with `tempFolder` for scratch files.
int loadBuiltEngine(const QString& tempFolder = QString());
QString builtSignatureFolder();
// The EICAR test file's 68 bytes.
QByteArray eicar();

} // namespace vmk::test
