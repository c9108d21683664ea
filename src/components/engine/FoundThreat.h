#pragma once

#include <QByteArray>

namespace vmk::engine
{

// One (object, threat) pair found by a scan.
struct FoundThreat {
    QByteArray object; // the scanned path, followed by the member chain inside it
    QByteArray kind;
    QByteArray name;
    int repairable = 0;
};

} // namespace vmk::engine
