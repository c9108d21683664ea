#pragma once

#include "filemanager/TreeNode.h"
#include "filemanager/TreeOptions.h"

#include <QAbstractItemModel>
#include <QHash>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

namespace vmk
{

// The lazy file tree that every tree of the program shows. Nodes carry their whole
// location in their key (TreeKey); folders are read only when opened, each opening
// reads the disk again, and a folder's entries arrive as one batch of rows, so a
// folder of 100,000 files costs one insert. The model is UI-free: icons and mark
// colours are the view's business (it reads ImageKeyRole and MarkedRole).
class FileTreeModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    enum Role {
        KeyRole = Qt::UserRole + 1, // the node key
        PathRole, // the key without bars
        ImageKeyRole, // "Folder", "|<type>" or a root's own key
        MarkedRole, // bool: in the multi-selection marks
        KindRole, // int of TreeNode::Kind
    };

    explicit FileTreeModel(const TreeOptions& options, QObject* parent = nullptr);
    ~FileTreeModel() override;

    const TreeOptions& options() const { return m_options; }

    // The roots the options name: "|HOST|" and FillHostRoots (with "*Memory*" first
    // for the scanner), or the device root. Runs once; later calls do nothing.
    void FillRoots();
    // The root of a Folder tree: the folder key (ending in "\") captioned `text`.
    // A second call with the same key does nothing.
    void AddFolderRoot(const QString& folderKey, const QString& text);
    // Adds the desktop, the documents and every drive under "|HOST|", each with an
    // expand mark when the root test says it holds something.
    void FillHostRoots();
    // Replaces the children of `key` by what the folder holds, in the listing's order.
    // The host root is no path: its fill does nothing. An unreadable folder ends empty.
    void FillFolder(const QString& key);
    // Removes every child of a node (and its expand mark); a missing key does nothing.
    void ClearChildren(const QString& key);
    // Removes a node with everything below it; a missing key does nothing.
    void RemoveNodeTree(const QString& key);
    bool NodeExists(const QString& key) const { return m_byKey.contains(key); }
    // Forgets that a folder was read, keeping its children: the next opening reads it
    // again. The view calls it when a node collapses.
    void MarkForReread(const QString& key);

    QModelIndex indexOf(const QString& key) const;
    QString keyOf(const QModelIndex& index) const;
    const TreeNode* node(const QString& key) const { return m_byKey.value(key); }
    // Keys of a node's children in tree order.
    QStringList childKeys(const QString& key) const;

    // The multi-selection colours of a node.
    void setMarked(const QString& key, bool marked);
    bool isMarked(const QString& key) const;

    // Check boxes. Set from code this fires no NodeCheck, as in the tree control.
    void setChecked(const QString& key, Qt::CheckState state);
    Qt::CheckState checked(const QString& key) const;
    // The tick a new child takes from its folder's tick (the forms' lists decide);
    // without a rule children are unticked.
    using ChildCheckRule = std::function<Qt::CheckState(const QString& childKey, Qt::CheckState parentState)>;
    void setChildCheckRule(ChildCheckRule rule) { m_childCheckRule = std::move(rule); }
    // Called around each folder read (the hourglass pointer).
    void setBusyHook(std::function<void(bool busy)> hook) { m_busyHook = std::move(hook); }

    // QAbstractItemModel
    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    bool hasChildren(const QModelIndex& parent = QModelIndex()) const override;
    bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

signals:
    // A user ticked or unticked a node's check box.
    void NodeCheck(const QString& key, bool checked);

private:
    TreeNode* nodeOf(const QModelIndex& index) const;
    QModelIndex indexOfNode(const TreeNode* node) const;
    TreeNode* addRoot(TreeNode* parent, const QString& key, const QString& text, TreeNode::Kind kind);
    bool rootTest(const QString& key) const;
    bool childTest(const QString& key) const;
    void forget(TreeNode* node);
    void addRows(TreeNode* parent, std::vector<std::unique_ptr<TreeNode>> rows);

    TreeOptions m_options;
    std::vector<std::unique_ptr<TreeNode>> m_roots;
    QHash<QString, TreeNode*> m_byKey;
    ChildCheckRule m_childCheckRule;
    std::function<void(bool)> m_busyHook;
    bool m_rootsFilled = false;
};

} // namespace vmk
