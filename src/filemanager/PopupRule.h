#pragma once

#include <QHash>
#include <QString>

namespace vmk
{

// Which items the file manager's popup menu offers for a node, and which of the
// five drag popups a drop raises. Pure rules over keys and the configured folders
// (#CompFileFolder, #EncriptFileFolder, #QuarenteneFolder), which count only on the
// program drive: "K in folder F" means upper-cased K begins with upper-cased
// program drive + F.
class PopupRule
{
public:
    struct Input {
        int side = 0; // 1 the device tree (SmartUIFlash), 2 the host tree (SmartDataTree)
        QString key; // K, the selected node's key
        int marks = 0; // items in the tree's list of marks
        QString sourcePath; // the single item on the clipboard
        int clipboard = 0; // items of ListMultiple
    };

    // Item name -> shown (true) or hidden (false). An item missing from the answer
    // keeps what it showed before; Copy, Cut and Delete are always shown.
    static QHash<QString, bool> Decide(const Input& in);

    // The drag popup for a drop: "MenuDragZip", "MenuDragEnc", "MenuDragUzip",
    // "MenuDragDec" or "MenuDrag", by the first rule that holds.
    static QString DragMenu(const QString& dropKey, const QString& dragKey);

    // True when `keyOrPath` stands in the configured folder `folder` of the program drive.
    static bool InFolder(const QString& keyOrPath, const QString& folder);
};

} // namespace vmk
