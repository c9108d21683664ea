#pragma once

#include <QString>

namespace vmk
{

// One alert of a scanned file as the program shows it.
struct AlertRow {
    QString Object; // the file, or the member inside it
    QString ThreatKind;
    QString ThreatName;
    QString Threat; // ThreatKind + ":" + ThreatName
    bool Repairable = false;
};

} // namespace vmk
