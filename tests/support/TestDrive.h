#pragma once

#include "platform/DriveMap.h"

#include <QString>

namespace vmk::test
{

// For the length of a test, a temporary folder is drive T: (and "/" stays C:),
// so paths are written as the program writes them.
class TestDrive
{
public:
    explicit TestDrive(const QString& root)
    {
        DriveMap::instance().setTestDrives({ { u'C', QStringLiteral("/") }, { u'T', root } }, u'T');
    }
    ~TestDrive() { DriveMap::instance().resetToHost(); }
    TestDrive(const TestDrive&) = delete;
    TestDrive& operator=(const TestDrive&) = delete;

    static QString logical(const QString& native) { return DriveMap::instance().toLogical(native); }
};

} // namespace vmk::test
