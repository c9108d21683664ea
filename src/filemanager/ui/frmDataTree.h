#pragma once

#include "filemanager/ui/FormNewEdit.h"

#include <QHash>
#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <QWidget>

#include <memory>

class QAction;
class QMenu;

namespace vmk
{

class Barra;
class SmartTree;

// The file manager: the host tree (SmartDataTree) and the device tree (SmartUIFlash)
// side by side, each with its marks; the popup menu `menu` whose items the popup
// rule offers for the node under the pointer; the five drag popups; and the verbs.
// A verb only prepares the shared transfer state (G()) and hands over to the
// one-shot TimerF (menu verbs) or TimerD (drops), one tick per item: the tick shows
// Barra, runs TransferItem, refreshes both trees and reports what stayed behind.
// Controls, menu items and timers keep their historic names as object names.
class frmDataTree : public QWidget
{
    Q_OBJECT
public:
    explicit frmDataTree(QWidget* parent = nullptr);
    ~frmDataTree() override;

    // Centres and translates the form and enables Timer1, which fills the trees once
    // the form is on screen.
    void Form_Load();
    void Timer1_Timer();

    SmartTree* SmartDataTree() const { return m_host; }
    SmartTree* SmartUIFlash() const { return m_device; }
    QMenu* menu() const { return m_menu; }
    // A drag popup by name ("MenuDrag", "MenuDragEnc", "MenuDragDec", "MenuDragZip", "MenuDragUzip").
    QMenu* dragMenu(const QString& name) const { return m_dragMenus.value(name); }
    // A menu item (of `menu` or of a drag popup) by name.
    QAction* item(const QString& name) const { return m_items.value(name); }
    Barra* barra() const { return m_barra.get(); }
    QTimer* Timer1() const { return m_timer1; }
    QTimer* TimerF() const { return m_timerF; }
    QTimer* TimerD() const { return m_timerD; }
    // The clipboard: node keys, bars kept.
    const QStringList& ListMultiple() const { return m_listMultiple; }
    bool busy() const { return m_busy; }
    // The panel's periodic timer, paused for the length of each tick.
    void setPanelTimer(QTimer* timer) { m_panelTimer = timer; }
    // The last name dialog opened by Rename or NewFolder.
    FormNewEdit* formNewEdit() const { return m_formNewEdit; }

    // The popup rule for the selected node of `tree` (TreeSide follows the tree);
    // with `at` the menu is popped up there, otherwise only prepared.
    void PopupFor(SmartTree* tree, const QPoint* at = nullptr);
    // A node of the tree named `sourceTree` was dropped on `dropKey` of `onto`: sets
    // TreeSide and DragSide and raises the drag popup the folders choose (returned
    // by name; "" when either end is missing). With `at` it pops up there.
    QString OLEDragDrop(
        SmartTree* onto, const QString& dropKey, const QString& sourceTree, const QString& dragKey, const QPoint* at);

    // The verbs of `menu`.
    void OpenF_Click();
    void Copy_Click();
    void Cut_Click();
    void Paste_Click();
    void PasteEncript_Click();
    void PasteDecript_Click();
    void pasteZ_Click();
    void PasteUz_Click();
    void Delete_Click();
    void Rename_Click();
    void NewFolder_Click();
    void Properties_Click();
    void Restaura_Click();
    // The verbs of the drag popups.
    void Copydrag_Click();
    void movedrag_Click();
    void CopyDragEnc_Click();
    void MoveDragEnc_Click();
    void CopydragDec_Click();
    void movedragDec_Click();
    void Copydragzip_Click();
    void MoveDragZip_Click();
    void CopydragUzip_Click();
    void MoveDragUzip_Click();

    void TimerF_Timer();
    void TimerD_Timer();

signals:
    // The form was closed: the panel comes back.
    void unloaded();
    // A tick began its item, with Barra up and its count label set.
    void tickStarted();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    QAction* addItem(QMenu* menu, const char* name, const QString& caption, void (frmDataTree::*slot)());
    QAction* addSeparator(QMenu* menu, const char* name);
    SmartTree* treeOfSide(int side) const;
    void wireTree(SmartTree* tree, int side);
    void clipboardFromSelection(bool move);
    void pasteVerb(int code, bool passPhrase);
    void dragVerb(int code, bool move, bool passPhrase);
    void prepareItem(int code, const QString& count);
    void waitForTick();
    // One tick per clipboard item, in list order, under count labels such as "2\3".
    void runClipboard(int code, QTimer* timer, bool fromDrop);
    void tick(bool fromDrop);
    void afterTick();
    void removeFromTrees(const QString& key);
    void refreshFolder(const QString& key);
    bool isRoot(SmartTree* tree, const QString& key) const;
    void explainDisabled(SmartTree* tree, const QString& key);

    SmartTree* m_host;
    SmartTree* m_device;
    QMenu* m_menu;
    QHash<QString, QMenu*> m_dragMenus;
    QHash<QString, QAction*> m_items;
    std::unique_ptr<Barra> m_barra;
    QTimer* m_timer1;
    QTimer* m_timerF;
    QTimer* m_timerD;
    QPointer<QTimer> m_panelTimer;
    QPointer<FormNewEdit> m_formNewEdit;

    QStringList m_listMultiple;
    QString m_sourceKey; // the item's key as its tree holds it (bars kept)
    QString m_dragSourceKey; // DragSourceNode
    QString m_dragSourceText;
    QString m_dropTargetKey; // DropTargetNode
    int m_index = 0; // the item in progress, from 1; 0 for a single item
    int m_count = 0; // items of the run; 0 for a single item
    bool m_busy = false;
    bool m_inTick = false; // an item is running: the form stays open until it ends
    bool m_filled = false;
};

} // namespace vmk
