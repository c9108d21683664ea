#include "components/engine/ThreatText.h"

#include <QList>

namespace vmk::engine
{

ThreatText ThreatText::split(QByteArray s)
{
    static const QByteArray unofficial = ".UNOFFICIAL";
    if (s.endsWith(unofficial))
        s.chop(unofficial.size());

    const QList<QByteArray> parts = s.split('.');
    ThreatText t;
    if (parts.size() >= 4 && parts.at(0) == "PUA") {
        // PUA.Win.Joke.Name-1 -> Joke : Win.Name-1
        t.kind = parts.at(2);
        t.name = parts.at(1) + '.' + s.mid(parts.at(0).size() + parts.at(1).size() + parts.at(2).size() + 3);
    } else if (parts.size() >= 2 && parts.at(0) == "Heuristics") {
        t.kind = parts.at(0);
        t.name = s.mid(parts.at(0).size() + 1);
    } else if (parts.size() >= 3) {
        // Win.Trojan.Agent-1 -> Trojan : Win.Agent-1
        t.kind = parts.at(1);
        t.name = parts.at(0) + '.' + s.mid(parts.at(0).size() + parts.at(1).size() + 2);
    } else if (parts.size() == 2) {
        t.kind = parts.at(0);
        t.name = parts.at(1);
    } else {
        t.kind = "Virus";
        t.name = s;
    }
    return t;
}

} // namespace vmk::engine
