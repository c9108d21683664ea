#include "filemanager/ui/SmartTree.h"

#include "filemanager/FileTreeModel.h"
#include "filemanager/SelectionMarks.h"
#include "filemanager/TreeKey.h"
#include "filemanager/ui/TreeItemDelegate.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>

namespace vmk
{
namespace
{
constexpr int kShift = 16;
constexpr int kCtrl = 17;
} // namespace

SmartTree::SmartTree(const TreeOptions& options, QWidget* parent)
    : QTreeView(parent)
    , m_model(new FileTreeModel(options, this))
{
    setHeaderHidden(true);
    // One row height for all: a folder of 100,000 entries lays out without measuring each.
    setUniformRowHeights(true);
    setAnimated(false);
    setIconSize(QSize(16, 16));
    setSelectionMode(QAbstractItemView::SingleSelection);
    setItemDelegate(new TreeItemDelegate(this));
    setModel(m_model);
    m_model->setBusyHook([](bool busy) {
        if (busy)
            QGuiApplication::setOverrideCursor(Qt::WaitCursor);
        else
            QGuiApplication::restoreOverrideCursor();
    });
    connect(this, &QTreeView::collapsed, this,
        [this](const QModelIndex& index) { m_model->MarkForReread(m_model->keyOf(index)); });
    connect(this, &QTreeView::clicked, this, [this](const QModelIndex& index) {
        const QString key = m_model->keyOf(index);
        if (m_marks)
            m_marks->NodeClick(key);
        emit NodeClick(key);
    });
    connect(m_model, &FileTreeModel::NodeCheck, this, &SmartTree::NodeCheck);
    if (options.marks) {
        SelectionMarks::Hooks hooks;
        hooks.collapse = [this](const QString& key) { Collapse(key); };
        hooks.deselect = [this](const QString& key) {
            const QModelIndex index = m_model->indexOf(key);
            if (index.isValid() && selectionModel())
                selectionModel()->select(index, QItemSelectionModel::Deselect);
        };
        m_marks = std::make_unique<SelectionMarks>(*m_model, std::move(hooks));
    }
}

SmartTree::~SmartTree() = default;

void SmartTree::FillRoots()
{
    m_model->FillRoots();
    const QModelIndex top = m_model->index(0, 0);
    if (top.isValid())
        Expand(m_model->keyOf(top));
}

QString SmartTree::SelectedKey() const
{
    return m_model->keyOf(currentIndex());
}

bool SmartTree::SelectKey(const QString& key)
{
    const QModelIndex index = m_model->indexOf(key);
    if (!index.isValid())
        return false;
    setCurrentIndex(index);
    scrollTo(index);
    return true;
}

void SmartTree::Expand(const QString& key)
{
    const QModelIndex index = m_model->indexOf(key);
    if (!index.isValid())
        return;
    // Read before opening: rows inserted while the view lays out the node it is
    // opening corrupt its list of items (AddressSanitizer caught a negative-size
    // move with 100,000 rows), and a view not laid out yet (a form not shown)
    // would only note the expansion.
    if (m_model->canFetchMore(index))
        m_model->fetchMore(index);
    expand(index);
}

void SmartTree::Collapse(const QString& key)
{
    const QModelIndex index = m_model->indexOf(key);
    if (index.isValid())
        collapse(index);
}

bool SmartTree::IsExpanded(const QString& key) const
{
    const QModelIndex index = m_model->indexOf(key);
    return index.isValid() && isExpanded(index);
}

void SmartTree::Reexpand(const QString& key)
{
    // Read while the node is closed (Expand reads first): replacing the rows of a
    // node that the view is opening at that moment sends its layout round in circles.
    Collapse(key);
    Expand(key);
}

void SmartTree::syncModifiers(Qt::KeyboardModifiers modifiers)
{
    // A key pressed while another window had the focus still counts, as Windows
    // reports it to the tree with the next click.
    if (!m_marks)
        return;
    const bool shift = modifiers & Qt::ShiftModifier;
    const bool ctrl = modifiers & Qt::ControlModifier;
    if (shift && !m_marks->shiftHeld())
        m_marks->KeyDown(kShift, SelectedKey());
    else if (!shift && m_marks->shiftHeld())
        m_marks->KeyUp(kShift);
    if (ctrl && !m_marks->ctrlHeld())
        m_marks->KeyDown(kCtrl, SelectedKey());
    else if (!ctrl && m_marks->ctrlHeld())
        m_marks->KeyUp(kCtrl);
}

void SmartTree::keyPressEvent(QKeyEvent* event)
{
    if (m_marks && !event->isAutoRepeat()) {
        if (event->key() == Qt::Key_Shift)
            m_marks->KeyDown(kShift, SelectedKey());
        else if (event->key() == Qt::Key_Control)
            m_marks->KeyDown(kCtrl, SelectedKey());
    }
    QTreeView::keyPressEvent(event);
}

void SmartTree::keyReleaseEvent(QKeyEvent* event)
{
    if (m_marks && !event->isAutoRepeat()) {
        if (event->key() == Qt::Key_Shift)
            m_marks->KeyUp(kShift);
        else if (event->key() == Qt::Key_Control)
            m_marks->KeyUp(kCtrl);
    }
    QTreeView::keyReleaseEvent(event);
}

void SmartTree::focusOutEvent(QFocusEvent* event)
{
    if (m_marks)
        m_marks->LostFocus();
    QTreeView::focusOutEvent(event);
}

void SmartTree::mousePressEvent(QMouseEvent* event)
{
    const QString key = m_model->keyOf(indexAt(event->position().toPoint()));
    m_dragSourceKey = key;
    if (m_marks) {
        syncModifiers(event->modifiers());
        m_marks->MouseDown(key, event->button() == Qt::LeftButton);
    }
    QTreeView::mousePressEvent(event);
}

} // namespace vmk
