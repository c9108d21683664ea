#pragma once

#include <QByteArray>

namespace vmk::engine
{

// Splits a libclamav signature name into the two halves the program shows as
// "Kind:Name": a PUA signature gives its category, a heuristic "Heuristics", any
// other the family word of "Platform.Family.Name". The ".UNOFFICIAL" mark of
// unsigned sets is dropped first.
class ThreatText
{
public:
    QByteArray kind;
    QByteArray name;

    static ThreatText split(QByteArray signatureName);
};

} // namespace vmk::engine
