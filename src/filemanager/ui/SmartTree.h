#pragma once

#include "filemanager/TreeOptions.h"

#include <QString>
#include <QTreeView>

#include <memory>

namespace vmk
{

class FileTreeModel;
class SelectionMarks;

// The one file tree widget of the program: frmDataTree's two trees, scanTree's and
// BackTree's trees and the pickers are this view over a FileTreeModel, set up by
// their row of TreeOptions (roots, folders only, junction filter, expand-mark tests,
// check boxes, marks). Folders are read when they open, and read again at each
// opening; a collapse keeps the children until then.
class SmartTree : public QTreeView
{
    Q_OBJECT
public:
    explicit SmartTree(const TreeOptions& options, QWidget* parent = nullptr);
    ~SmartTree() override;

    FileTreeModel* treeModel() const { return m_model; }
    // The marks, when the options ask for them; null otherwise.
    SelectionMarks* marks() const { return m_marks.get(); }

    // Adds the roots and opens the top one ("|HOST|" or the device root).
    void FillRoots();

    QString SelectedKey() const;
    // Selects (and scrolls to) a node; false when the key is not in the tree.
    bool SelectKey(const QString& key);
    void Expand(const QString& key);
    void Collapse(const QString& key);
    bool IsExpanded(const QString& key) const;
    // Collapse and expand again, so that the children are read anew (with new ticks).
    void Reexpand(const QString& key);
    // The node the last button press hit ("" for none): where a drag begins.
    QString DragSourceKey() const { return m_dragSourceKey; }

    // Dragging nodes between and within trees (the file manager's): a drag carries
    // the tree's object name and the node key; a drop raises OLEDragDrop.
    void setNodeDrags(bool on);
    // The node drawn as the drop target while a drag passes over it ("" for none).
    QString DropHighlight() const { return m_dropHighlight; }
    void setDropHighlight(const QString& key);
    // The mime type of a dragged node: "<tree object name>\n<key>" in UTF-8.
    static QString nodeMimeType() { return QStringLiteral("application/x-vormak-tree-node"); }

signals:
    void NodeClick(const QString& key);
    void NodeCheck(const QString& key, bool checked);
    // A button was released over `key` ("" for no node).
    void MouseUp(const QString& key, Qt::MouseButton button, const QPoint& globalPos);
    // A dragged node passes over `key` of this tree.
    void OLEDragOver(const QString& key);
    // A node of `sourceTree` (its object name) was dropped on `key` of this tree.
    void OLEDragDrop(const QString& key, const QString& sourceTree, const QString& sourceKey, const QPoint& globalPos);
    // A drag that began on this tree ended, dropped or not.
    void OLECompleteDrag();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void drawRow(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    void syncModifiers(Qt::KeyboardModifiers modifiers);

    FileTreeModel* m_model;
    std::unique_ptr<SelectionMarks> m_marks;
    QString m_dragSourceKey;
    QString m_dropHighlight;
    QPoint m_pressAt;
    bool m_nodeDrags = false;
};

} // namespace vmk
