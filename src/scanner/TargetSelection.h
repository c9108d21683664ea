#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace vmk
{

// The selection of scanTree's target tree, held in two lists and not in the tree:
// ListAdd, the roots the session walks (paths, folders ending in "\", or
// "*Memory*"), and ListExc, the exceptions that shape the tree's ticks only. The
// tree fills lazily and every new node takes its tick from the lists (ChildTick).
// NodeCheck keeps the lists up to date on a user's tick; what it needs of the tree
// comes through the hooks, so the logic runs without a window.
class TargetSelection
{
public:
    struct TreeHooks {
        std::function<bool(const QString& key)> isChecked;
        std::function<void(const QString& key, bool checked)> setChecked; // from code: no NodeCheck
        std::function<QString(const QString& key)> parentKey; // "" above a root
        std::function<bool(const QString& key)> isExpanded;
        std::function<void(const QString& key)> collapse;
        std::function<void(const QString& key)> reexpand; // collapse and expand: the children take new ticks
        std::function<QString()> selectedKey;
        std::function<QStringList()> driveKeys; // the drives below "|HOST|", in the tree's order
        std::function<QStringList()> specialRootKeys; // the desktop and the documents
        std::function<void()> startTimer; // Timer: runs Timer_Timer once this event is over
    };

    TargetSelection() = default;
    explicit TargetSelection(TreeHooks hooks);
    void setHooks(TreeHooks hooks) { m_hooks = std::move(hooks); }

    const QStringList& ListAdd() const { return m_listAdd; }
    const QStringList& ListExc() const { return m_listExc; }
    // Both lists empty, as at each load of the form.
    void Clear();

    // The list helpers. Each strips every "|" from its argument first; equality is
    // exact and case-sensitive, the removal below a path is by containment, not
    // case-sensitive, anywhere in an entry (not only as its start).
    void RemoveFromAdd(const QString& key);
    void RemoveFromExc(const QString& key);
    bool IsInAdd(const QString& key) const;
    bool IsInExc(const QString& key) const;
    void RemoveBelowFromAdd(const QString& key);
    void RemoveBelowFromExc(const QString& key);
    // The last part of a path with its backslash; a final backslash does not count.
    static QString LastPathPart(const QString& path);

    // The tick a node takes when its folder is read: below a ticked folder it is
    // ticked unless it is an exception, otherwise only when it is a target itself.
    bool ChildTick(const QString& childKey, bool parentTicked) const;

    // A user ticked or unticked a node. `scanHost` tells the tree's form.
    void NodeCheck(const QString& key, bool checked, bool scanHost);
    // The deferred untick of a refused tick (a node cannot be unticked inside its
    // own event): clears PendingUncheckKey and unticks that node.
    void Timer_Timer();
    const QString& PendingUncheckKey() const { return m_pendingUncheckKey; }

private:
    void refuse(const QString& key, const QString& text);
    bool ancestorIn(const QString& key, bool (TargetSelection::*test)(const QString&) const) const;
    void reexpandIfExpanded(const QString& key);

    TreeHooks m_hooks;
    QStringList m_listAdd;
    QStringList m_listExc;
    QString m_pendingUncheckKey;
};

} // namespace vmk
