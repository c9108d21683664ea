#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace vmk
{

// What the backup tool saves, held in two plain lists and not in the tree:
// ListAdd, the paths to back up, and ListExc, the exceptions below them. A folder's
// path ends in "\", a file's does not; the run relies on that last character.
// Entries compare exactly and case-sensitively, keep their order of insertion, and
// a new entry swallows the entries that begin with it (by prefix: an entry that
// merely holds the path in its middle stays). NodeCheck keeps the lists up to date
// on a user's tick; what it needs of the tree comes through the hooks, so the
// rules run without a window.
class BackupSelection
{
public:
    struct TreeHooks {
        std::function<void(const QString& key, bool checked)> setChecked; // from code: no NodeCheck
        std::function<QString(const QString& key)> parentKey; // "" above a root
        std::function<bool(const QString& key)> isExpanded;
        std::function<void(const QString& key)> reexpand; // collapse and expand: the children take new ticks
        std::function<void()> startTimer; // Timer: runs Timer_Timer once this event is over
    };

    BackupSelection() = default;
    void setHooks(TreeHooks hooks) { m_hooks = std::move(hooks); }
    // The device root's key ("E:\"): the walk up to the ancestors stops there, as at "|HOST|".
    void setDeviceRoot(const QString& key) { m_deviceRoot = key; }

    const QStringList& ListAdd() const { return m_listAdd; }
    const QStringList& ListExc() const { return m_listExc; }
    // Loading a selection file adds to the lists as they stand.
    void AddToListAdd(const QString& path) { m_listAdd << path; }
    void AddToListExc(const QString& path) { m_listExc << path; }

    // The list helpers. Each strips every "|" from its key first.
    void RemoveFromAdd(const QString& key);
    void RemoveFromExc(const QString& key);
    bool InAdd(const QString& key) const;
    bool InExc(const QString& key) const;
    void RemoveBelowAdd(const QString& key); // every entry that begins with the path
    void RemoveBelowExc(const QString& key);

    // The tick a node takes when its folder is read: below a ticked folder it is
    // ticked unless it is an exception, otherwise only when it is an entry itself.
    bool ChildTick(const QString& childKey, bool parentTicked) const;

    // A user ticked or unticked a node.
    void NodeCheck(const QString& key, bool checked);
    // The deferred untick of a refused tick (a node cannot be unticked inside its
    // own event): clears NodeToUndo and unticks that node.
    void Timer_Timer();
    const QString& NodeToUndo() const { return m_nodeToUndo; }

private:
    void refuse(const QString& key, const QString& text);
    bool ancestorIn(const QString& key, bool (BackupSelection::*test)(const QString&) const) const;
    void reexpandIfExpanded(const QString& key);

    TreeHooks m_hooks;
    QString m_deviceRoot;
    QStringList m_listAdd;
    QStringList m_listExc;
    QString m_nodeToUndo;
};

} // namespace vmk
