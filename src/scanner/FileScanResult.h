#pragma once

#include "scanner/AlertRow.h"

#include <QList>

namespace vmk
{

// The result of scanning one file the way every caller does it.
struct FileScanResult {
    int ReturnCode = 0;
    int AlertCount = 0;
    QList<AlertRow> Rows; // read only when ReturnCode is 0 and AlertCount is 1 or more

    bool processed() const { return ReturnCode == 0; }
    bool infected() const { return ReturnCode == 0 && AlertCount >= 1; }
};

} // namespace vmk
