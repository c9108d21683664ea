#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace vmk
{

class FileTreeModel;

// The multi-selection marks of one tree: the hidden list of marked keys and the
// Shift and Ctrl rules. Marking colours the node (the model's MarkedRole), adds its
// key to the list and collapses the node; unmarking restores the colours, drops the
// node's selection and removes the key. The view feeds the key and mouse events.
class SelectionMarks
{
public:
    struct Hooks {
        std::function<void(const QString& key)> collapse;
        std::function<void(const QString& key)> deselect;
    };

    SelectionMarks(FileTreeModel& model, Hooks hooks);

    // The marked keys in the order they were marked (ListMultipleTemp / ListMultipleTemp2).
    const QStringList& keys() const { return m_keys; }
    bool isListed(const QString& key) const { return m_keys.contains(key); }

    bool shiftHeld() const { return m_shiftHeld; }
    bool ctrlHeld() const { return m_ctrlHeld; }
    bool blankClick() const { return m_blankClick; }
    QString lastToggledKey() const { return m_lastToggledKey; }

    // Shift (16) or Ctrl (17) went down: the first time, the selected node is marked.
    void KeyDown(int keyCode, const QString& selectedKey);
    void KeyUp(int keyCode);
    void LostFocus();
    // A button went down on `key` ("" when no node is under the pointer).
    void MouseDown(const QString& key, bool leftButton);
    // The click on a node that follows MouseDown.
    void NodeClick(const QString& key);

    void mark(const QString& key);
    void unmark(const QString& key);
    void unmarkAll();

private:
    FileTreeModel& m_model;
    Hooks m_hooks;
    QStringList m_keys;
    bool m_shiftHeld = false;
    bool m_ctrlHeld = false;
    bool m_blankClick = false;
    QString m_lastToggledKey;
};

} // namespace vmk
