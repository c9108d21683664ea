#pragma once

#include <QByteArray>
#include <QString>

namespace vmk::fuzz
{

// Every fuzz target runs inside one private temporary folder: it is the device
// (drive E:, the program folder, the system folder), the current folder and the
// temporary folder of the process. From the first call on, every call that
// writes, removes, renames or changes a file outside that folder stops the run
// with a report, so a reader that is tricked into touching another file shows up
// as a crash instead of damaging the machine that fuzzes it.
class FuzzSandbox
{
public:
    // Sets everything up once (also a QCoreApplication and a message answerer
    // that says "no"); later calls only return.
    static void init();
    // Native folder that stands for the device E:\.
    static QString device();
    // Writes bytes to a file below the device (name with "/"), creating folders.
    static void writeDeviceFile(const QString& relative, const QByteArray& bytes);
    // Empties the device again between inputs.
    static void clearDevice();
};

} // namespace vmk::fuzz
