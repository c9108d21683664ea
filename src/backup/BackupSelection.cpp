#include "backup/BackupSelection.h"

#include "filemanager/TreeKey.h"
#include "foundation/Messages.h"

namespace vmk
{
namespace
{
void removeBeginningWith(QStringList& list, const QString& key)
{
    const QString path = TreeKey::pathOf(key);
    list.removeIf([&path](const QString& entry) { return entry.startsWith(path); });
}
} // namespace

void BackupSelection::RemoveFromAdd(const QString& key)
{
    m_listAdd.removeOne(TreeKey::pathOf(key));
}

void BackupSelection::RemoveFromExc(const QString& key)
{
    m_listExc.removeOne(TreeKey::pathOf(key));
}

bool BackupSelection::InAdd(const QString& key) const
{
    return m_listAdd.contains(TreeKey::pathOf(key));
}

bool BackupSelection::InExc(const QString& key) const
{
    return m_listExc.contains(TreeKey::pathOf(key));
}

void BackupSelection::RemoveBelowAdd(const QString& key)
{
    removeBeginningWith(m_listAdd, key);
}

void BackupSelection::RemoveBelowExc(const QString& key)
{
    removeBeginningWith(m_listExc, key);
}

bool BackupSelection::ChildTick(const QString& childKey, bool parentTicked) const
{
    return parentTicked ? !InExc(childKey) : InAdd(childKey);
}

bool BackupSelection::ancestorIn(const QString& key, bool (BackupSelection::*test)(const QString&) const) const
{
    // From the parent up to, not including, the device root or "|HOST|".
    for (QString up = m_hooks.parentKey(key); !up.isEmpty() && up != TreeKey::host() && up != m_deviceRoot;
         up = m_hooks.parentKey(up)) {
        if ((this->*test)(up))
            return true;
    }
    return false;
}

void BackupSelection::refuse(const QString& key, const QString& text)
{
    m_nodeToUndo = key;
    ShowMessage(text);
    m_hooks.startTimer();
}

void BackupSelection::reexpandIfExpanded(const QString& key)
{
    if (m_hooks.isExpanded(key))
        m_hooks.reexpand(key);
}

void BackupSelection::NodeCheck(const QString& key, bool checked)
{
    // The whole computer is never one backup; the root is no path for the lists.
    if (key == TreeKey::host()) {
        if (checked)
            refuse(key, QStringLiteral("¡No se puede respaldar toda su PC!"));
        return;
    }
    if (checked) {
        if (InExc(key))
            RemoveFromExc(key);
        if (ancestorIn(key, &BackupSelection::InExc)) {
            refuse(key, QStringLiteral("No es posible seleccionar este nodo, hay una excepción existente!"));
            return;
        }
        // Covered by an entry above: nothing is added.
        if (!ancestorIn(key, &BackupSelection::InAdd) && !InAdd(key)) {
            RemoveBelowAdd(key);
            m_listAdd << TreeKey::pathOf(key);
        }
    } else {
        // Within an exception already: nothing changes.
        if (ancestorIn(key, &BackupSelection::InExc))
            return;
        if (InAdd(key)) {
            RemoveBelowExc(key);
            RemoveFromAdd(key);
        } else if (!InExc(key)) {
            // Below an entry, or below nothing at all: an exception either way.
            RemoveBelowExc(key);
            m_listExc << TreeKey::pathOf(key);
        }
    }
    reexpandIfExpanded(key);
}

void BackupSelection::Timer_Timer()
{
    const QString key = m_nodeToUndo;
    m_nodeToUndo.clear();
    if (!key.isEmpty())
        m_hooks.setChecked(key, false);
}

} // namespace vmk
