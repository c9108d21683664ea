#pragma once

class QWidget;

namespace vmk
{

class BackTree;

// The panels of BackTree that classes of their own supply. Each is made by one
// function, defined in a file of its own (MakeFrame1.cpp, MakeFrame5.cpp,
// MakeFrame4.cpp), so that a panel's owner edits that one file and BackTree stays
// as it is. The widget returned carries the frame's name as its objectName; the
// form owns it. A panel reaches the form through `form`: the shared zip component,
// RestoreMode, the run panel, ShowPanels and the form's signals.
QWidget* MakeFrame1(BackTree& form); // the archives on the device
QWidget* MakeFrame5(BackTree& form); // restoring from one archive
QWidget* MakeFrame4(BackTree& form); // the remote store

} // namespace vmk
