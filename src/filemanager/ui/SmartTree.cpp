#include "filemanager/ui/SmartTree.h"

#include "filemanager/FileTreeModel.h"
#include "filemanager/SelectionMarks.h"
#include "filemanager/TreeKey.h"
#include "filemanager/ui/TreeItemDelegate.h"

#include <QApplication>
#include <QDrag>
#include <QDragEnterEvent>
#include <QDragLeaveEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMimeData>
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
    m_pressAt = event->position().toPoint();
    if (m_marks) {
        syncModifiers(event->modifiers());
        m_marks->MouseDown(key, event->button() == Qt::LeftButton);
    }
    QTreeView::mousePressEvent(event);
}

void SmartTree::mouseReleaseEvent(QMouseEvent* event)
{
    const QString key = m_model->keyOf(indexAt(event->position().toPoint()));
    QTreeView::mouseReleaseEvent(event);
    emit MouseUp(key, event->button(), event->globalPosition().toPoint());
}

void SmartTree::setNodeDrags(bool on)
{
    m_nodeDrags = on;
    setAcceptDrops(on);
    viewport()->setAcceptDrops(on);
}

void SmartTree::setDropHighlight(const QString& key)
{
    if (key == m_dropHighlight)
        return;
    m_dropHighlight = key;
    viewport()->update();
}

void SmartTree::mouseMoveEvent(QMouseEvent* event)
{
    if (!m_nodeDrags || !(event->buttons() & Qt::LeftButton) || m_dragSourceKey.isEmpty()
        || (event->position().toPoint() - m_pressAt).manhattanLength() < QApplication::startDragDistance()) {
        QTreeView::mouseMoveEvent(event);
        return;
    }
    auto* data = new QMimeData;
    data->setData(nodeMimeType(), (objectName() + u'\n' + m_dragSourceKey).toUtf8());
    auto* drag = new QDrag(this);
    drag->setMimeData(data);
    drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::CopyAction);
    emit OLECompleteDrag();
}

void SmartTree::dragEnterEvent(QDragEnterEvent* event)
{
    if (m_nodeDrags && event->mimeData()->hasFormat(nodeMimeType()))
        event->acceptProposedAction();
    else
        event->ignore();
}

void SmartTree::dragMoveEvent(QDragMoveEvent* event)
{
    if (!m_nodeDrags || !event->mimeData()->hasFormat(nodeMimeType())) {
        event->ignore();
        return;
    }
    const QString key = m_model->keyOf(indexAt(event->position().toPoint()));
    setDropHighlight(key);
    emit OLEDragOver(key);
    event->acceptProposedAction();
}

void SmartTree::dragLeaveEvent(QDragLeaveEvent* event)
{
    setDropHighlight(QString());
    QTreeView::dragLeaveEvent(event);
}

void SmartTree::dropEvent(QDropEvent* event)
{
    if (!m_nodeDrags || !event->mimeData()->hasFormat(nodeMimeType())) {
        event->ignore();
        return;
    }
    const QString payload = QString::fromUtf8(event->mimeData()->data(nodeMimeType()));
    const qsizetype cut = payload.indexOf(u'\n');
    const QString key = m_model->keyOf(indexAt(event->position().toPoint()));
    event->acceptProposedAction();
    // The popup comes up after the drag has ended, outside the platform's drop call.
    const QString sourceTree = payload.left(cut), sourceKey = cut < 0 ? QString() : payload.mid(cut + 1);
    const QPoint at = mapToGlobal(event->position().toPoint());
    QMetaObject::invokeMethod(
        this, [this, key, sourceTree, sourceKey, at] { emit OLEDragDrop(key, sourceTree, sourceKey, at); },
        Qt::QueuedConnection);
}

void SmartTree::drawRow(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    if (m_dropHighlight.isEmpty() || m_model->keyOf(index) != m_dropHighlight) {
        QTreeView::drawRow(painter, option, index);
        return;
    }
    QStyleOptionViewItem lit = option;
    lit.state |= QStyle::State_Selected;
    QTreeView::drawRow(painter, lit, index);
}

} // namespace vmk
