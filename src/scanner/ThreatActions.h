#pragma once

namespace vmk
{

class ThreatListModel;

// The verbs on the ticked rows of ListViewInf, each walking every row from the
// first to the last. The full path of a row is its folder followed by its name.

// `Command6`: ForceDelete of each ticked row's file, then the tick is taken away
// and the row reads "Eliminado" when the file is gone, "Será eliminada al
// reiniciar" when it is still there.
void DeleteTickedThreats(ThreatListModel& threats);

// `Command7`: engine option 13 at "1" around the loop (and "0" after it, whatever
// the Repair setting says), each ticked row's file scanned so that the engine
// repairs it in place, the tick taken away and "Desinfectado" written: always,
// since the engine's answer is not what the row reports.
void DisinfectTickedThreats(ThreatListModel& threats);

} // namespace vmk
