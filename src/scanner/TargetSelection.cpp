#include "scanner/TargetSelection.h"

#include "foundation/Messages.h"

namespace vmk
{
namespace
{
const QString kHost = QStringLiteral("|HOST|");

QString pathOf(const QString& key)
{
    QString path = key;
    path.remove(u'|');
    return path;
}

void removeContaining(QStringList& list, const QString& key)
{
    const QString path = pathOf(key);
    list.removeIf([&path](const QString& entry) { return entry.contains(path, Qt::CaseInsensitive); });
}
} // namespace

TargetSelection::TargetSelection(TreeHooks hooks)
    : m_hooks(std::move(hooks))
{
}

void TargetSelection::Clear()
{
    m_listAdd.clear();
    m_listExc.clear();
    m_pendingUncheckKey.clear();
}

void TargetSelection::RemoveFromAdd(const QString& key)
{
    m_listAdd.removeOne(pathOf(key));
}

void TargetSelection::RemoveFromExc(const QString& key)
{
    m_listExc.removeOne(pathOf(key));
}

bool TargetSelection::IsInAdd(const QString& key) const
{
    return m_listAdd.contains(pathOf(key));
}

bool TargetSelection::IsInExc(const QString& key) const
{
    return m_listExc.contains(pathOf(key));
}

void TargetSelection::RemoveBelowFromAdd(const QString& key)
{
    removeContaining(m_listAdd, key);
}

void TargetSelection::RemoveBelowFromExc(const QString& key)
{
    removeContaining(m_listExc, key);
}

QString TargetSelection::LastPathPart(const QString& path)
{
    const QString trimmed = path.endsWith(u'\\') ? path.chopped(1) : path;
    const qsizetype slash = trimmed.lastIndexOf(u'\\');
    return slash < 0 ? trimmed : trimmed.mid(slash);
}

bool TargetSelection::ChildTick(const QString& childKey, bool parentTicked) const
{
    return parentTicked ? !IsInExc(childKey) : IsInAdd(childKey);
}

bool TargetSelection::ancestorIn(const QString& key, bool (TargetSelection::*test)(const QString&) const) const
{
    // Up to, not including, the tree's top node: the device root or "|HOST|".
    for (QString up = m_hooks.parentKey(key); !up.isEmpty(); up = m_hooks.parentKey(up)) {
        if (m_hooks.parentKey(up).isEmpty())
            return false;
        if ((this->*test)(up))
            return true;
    }
    return false;
}

void TargetSelection::refuse(const QString& key, const QString& text)
{
    ShowMessage(text);
    m_pendingUncheckKey = key;
    m_hooks.startTimer();
}

void TargetSelection::reexpandIfExpanded(const QString& key)
{
    if (m_hooks.isExpanded(key))
        m_hooks.reexpand(key);
}

void TargetSelection::NodeCheck(const QString& key, bool checked, bool scanHost)
{
    // 1. The desktop and the documents lie on a drive that the ticked host root holds already.
    if (scanHost && m_hooks.specialRootKeys().contains(key) && m_hooks.isChecked(kHost)) {
        refuse(key, QStringLiteral("¡La carpeta ya ha sido incluida!"));
        return;
    }
    // 2. The device root of the device-only tree.
    if (!scanHost && m_hooks.parentKey(key).isEmpty()) {
        if (checked) {
            if (!IsInAdd(key)) {
                RemoveBelowFromAdd(key);
                m_listAdd << pathOf(key);
            }
        } else if (IsInAdd(key)) {
            RemoveBelowFromExc(key);
            RemoveFromAdd(key);
        } else if (!IsInExc(key)) {
            RemoveBelowFromExc(key);
            m_listExc << pathOf(key);
        }
        const QString selected = m_hooks.selectedKey();
        if (!selected.isEmpty())
            m_hooks.reexpand(selected);
        return;
    }
    // 3. The host root stands for every drive.
    if (key == kHost) {
        if (checked) {
            m_listExc.clear();
            m_listAdd.clear();
            for (const QString& special : m_hooks.specialRootKeys()) {
                m_hooks.setChecked(special, false);
                m_hooks.collapse(special);
            }
            for (const QString& drive : m_hooks.driveKeys()) {
                m_hooks.setChecked(drive, true);
                m_hooks.collapse(drive);
                m_listAdd << pathOf(drive);
            }
        } else {
            for (const QString& drive : m_hooks.driveKeys()) {
                m_hooks.setChecked(drive, false);
                m_hooks.collapse(drive);
                if (IsInAdd(drive)) {
                    RemoveBelowFromExc(drive);
                    RemoveFromAdd(drive);
                } else if (!IsInExc(drive)) {
                    RemoveBelowFromExc(drive);
                    m_listExc << pathOf(drive);
                }
            }
        }
        return;
    }
    if (checked) {
        // 4. Ticked: an exception above refuses; a target above covers it already.
        if (IsInExc(key))
            RemoveFromExc(key);
        if (ancestorIn(key, &TargetSelection::IsInExc)) {
            refuse(key, QStringLiteral("No es posible seleccionar este nodo, hay una excepción existente!"));
            return;
        }
        if (ancestorIn(key, &TargetSelection::IsInAdd)) {
            reexpandIfExpanded(key);
            return;
        }
        if (!IsInAdd(key)) {
            // A folder swallows the targets below it.
            RemoveBelowFromAdd(key);
            m_listAdd << pathOf(key);
        }
    } else {
        // 5. Unticked: below an exception nothing changes; a target leaves the list;
        // anything else (below a ticked folder) becomes an exception.
        if (ancestorIn(key, &TargetSelection::IsInExc))
            return;
        if (IsInAdd(key)) {
            RemoveBelowFromExc(key);
            RemoveFromAdd(key);
        } else if (!IsInExc(key)) {
            RemoveBelowFromExc(key);
            m_listExc << pathOf(key);
        }
    }
    // 6.
    reexpandIfExpanded(key);
}

void TargetSelection::Timer_Timer()
{
    const QString key = m_pendingUncheckKey;
    m_pendingUncheckKey.clear();
    if (!key.isEmpty())
        m_hooks.setChecked(key, false);
}

} // namespace vmk
