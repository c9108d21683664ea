#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
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
// The test program that every clamav-testfiles sample carries.
QByteArray clamExe();
// The marker string of a PUA category's test signature ("ADSPY", "JOKE", ...).
QByteArray puaMarker(const char* category);

struct ZipMember {
    QByteArray name;
    QByteArray data;
    bool stored = false; // deflated unless stored
};
// Writes a zip archive with libzip; false on failure.
bool makeZip(const QString& path, const QList<ZipMember>& members);
// Stored bytes of each member (compressed as written), by name; empty map when unreadable.
QMap<QByteArray, QByteArray> zipRawMembers(const QString& path);
QMap<QByteArray, QByteArray> zipMembers(const QString& path);

} // namespace vmk::test
