#include "filemanager/SelectionMarks.h"

#include "filemanager/FileTreeModel.h"

#include <utility>

namespace vmk
{
namespace
{
constexpr int kShift = 16;
constexpr int kCtrl = 17;
} // namespace

SelectionMarks::SelectionMarks(FileTreeModel& model, Hooks hooks)
    : m_model(model)
    , m_hooks(std::move(hooks))
{
}

void SelectionMarks::mark(const QString& key)
{
    if (key.isEmpty() || isListed(key))
        return;
    m_model.setMarked(key, true);
    m_keys << key;
    if (m_hooks.collapse)
        m_hooks.collapse(key);
}

void SelectionMarks::unmark(const QString& key)
{
    m_model.setMarked(key, false);
    if (m_hooks.deselect)
        m_hooks.deselect(key);
    m_keys.removeAll(key);
}

void SelectionMarks::unmarkAll()
{
    const QStringList keys = m_keys;
    for (const QString& key : keys)
        unmark(key);
    m_keys.clear();
}

void SelectionMarks::KeyDown(int keyCode, const QString& selectedKey)
{
    bool* held = keyCode == kShift ? &m_shiftHeld : keyCode == kCtrl ? &m_ctrlHeld : nullptr;
    if (!held || *held)
        return;
    *held = true;
    if (!selectedKey.isEmpty() && !isListed(selectedKey))
        mark(selectedKey);
}

void SelectionMarks::KeyUp(int keyCode)
{
    if (keyCode == kCtrl)
        m_ctrlHeld = false;
    else if (keyCode == kShift)
        m_shiftHeld = false;
}

void SelectionMarks::LostFocus()
{
    m_ctrlHeld = false;
    m_shiftHeld = false;
}

void SelectionMarks::MouseDown(const QString& key, bool leftButton)
{
    m_blankClick = key.isEmpty();
    if (m_blankClick)
        return;
    if (!m_ctrlHeld) {
        // A listed node keeps the list: the user may be starting a drag of the marked set.
        if (!isListed(key))
            unmarkAll();
        return;
    }
    if (!leftButton)
        return;
    if (isListed(key))
        unmark(key);
    else
        mark(key);
}

void SelectionMarks::NodeClick(const QString& key)
{
    if (m_shiftHeld) {
        if (!isListed(key))
            mark(key);
        else if (!m_lastToggledKey.isEmpty() && isListed(m_lastToggledKey))
            unmark(m_lastToggledKey);
        m_lastToggledKey = key;
        return;
    }
    if (m_ctrlHeld || m_blankClick)
        return;
    if (!isListed(key))
        unmarkAll();
}

} // namespace vmk
