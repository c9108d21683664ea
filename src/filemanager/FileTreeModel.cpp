#include "filemanager/FileTreeModel.h"

#include "filemanager/TreeKey.h"
#include "foundation/FileServices.h"
#include "foundation/Globals.h"
#include "foundation/Translate.h"
#include "platform/DriveMap.h"
#include "platform/FileSearch.h"
#include "platform/FolderProbe.h"

namespace vmk
{
namespace
{
bool probe(TreeOptions::Test test, const QString& native)
{
    return test == TreeOptions::Test::Entries ? FolderProbe::hasEntries(native) : FolderProbe::hasSubfolders(native);
}

QString nativeOfKey(const QString& key)
{
    return DriveMap::instance().toNative(TreeKey::pathOf(key));
}
} // namespace

FileTreeModel::FileTreeModel(const TreeOptions& options, QObject* parent)
    : QAbstractItemModel(parent)
    , m_options(options)
{
}

FileTreeModel::~FileTreeModel() = default;

void FileTreeModel::FillRoots()
{
    if (m_rootsFilled)
        return;
    m_rootsFilled = true;
    if (m_options.roots == TreeOptions::Roots::Folder)
        return; // the form adds its folder with AddFolderRoot
    if (m_options.roots == TreeOptions::Roots::Device) {
        const QString drive = G().ProgramDrive;
        if (drive.isEmpty())
            return;
        TreeNode* root = addRoot(nullptr, TreeKey::deviceRoot(drive), drive, TreeNode::Kind::DeviceRoot);
        if (root)
            root->placeholder = rootTest(root->key);
        return;
    }
    addRoot(nullptr, TreeKey::host(), Translate(QStringLiteral("Equipo huesped")), TreeNode::Kind::HostRoot);
    FillHostRoots();
}

void FileTreeModel::AddFolderRoot(const QString& folderKey, const QString& text)
{
    if (TreeNode* root = addRoot(nullptr, folderKey, text, TreeNode::Kind::DeviceRoot))
        root->placeholder = rootTest(root->key);
}

void FileTreeModel::FillHostRoots()
{
    TreeNode* host = m_byKey.value(TreeKey::host());
    if (!host)
        return;
    if (m_options.roots == TreeOptions::Roots::HostWithMemory)
        addRoot(host, TreeKey::memory(), Translate(QStringLiteral("Memoria")), TreeNode::Kind::Memory);
    const std::pair<int, const char*> specials[] = { { 0, "Escritorio" }, { 5, "Mis Documentos" } };
    for (const auto& [id, caption] : specials) {
        const QString folder = SpecialFolderPath(id);
        if (folder.isEmpty())
            continue;
        if (TreeNode* root = addRoot(
                host, TreeKey::specialRoot(folder), Translate(QString::fromUtf8(caption)), TreeNode::Kind::SpecialRoot))
            root->placeholder = rootTest(root->key);
    }
    for (const DriveInfo& drive : DriveMap::instance().drives()) {
        if (TreeNode* root = addRoot(host, TreeKey::driveRoot(drive), TreeKey::driveText(drive), TreeNode::Kind::Drive))
            root->placeholder = rootTest(root->key); // a drive without a medium cannot be opened
    }
}

TreeNode* FileTreeModel::addRoot(TreeNode* parent, const QString& key, const QString& text, TreeNode::Kind kind)
{
    // Keys are unique in a tree: a second node with the same key is refused.
    if (m_byKey.contains(key))
        return nullptr;
    auto node = std::make_unique<TreeNode>();
    node->key = key;
    node->text = text;
    node->imageKey = key;
    node->kind = kind;
    node->parent = parent;
    auto& siblings = parent ? parent->children : m_roots;
    node->row = static_cast<int>(siblings.size());
    TreeNode* raw = node.get();
    beginInsertRows(indexOfNode(parent), raw->row, raw->row);
    siblings.push_back(std::move(node));
    m_byKey.insert(key, raw);
    endInsertRows();
    return raw;
}

bool FileTreeModel::rootTest(const QString& key) const
{
    return probe(m_options.rootTest, nativeOfKey(key));
}

bool FileTreeModel::childTest(const QString& native) const
{
    return probe(m_options.childTest, native);
}

void FileTreeModel::FillFolder(const QString& key)
{
    TreeNode* folder = m_byKey.value(key);
    if (!folder || folder->kind == TreeNode::Kind::HostRoot || folder->kind == TreeNode::Kind::Memory
        || folder->kind == TreeNode::Kind::File)
        return;
    if (m_busyHook)
        m_busyHook(true);
    ClearChildren(key);
    const QList<FoundEntry> entries = FileSearch::list(TreeKey::pathOf(key));
    std::vector<std::unique_ptr<TreeNode>> rows;
    rows.reserve(static_cast<size_t>(entries.size()));
    for (const FoundEntry& e : entries) {
        const bool isFolder = e.attributes != AttrInvalid && (e.attributes & AttrDirectory);
        // Exactly the word of a junction: directory links and kernel mounts. Any other
        // hidden or system folder is listed.
        if (isFolder && m_options.junctionFilter && e.attributes == AttrJunction)
            continue;
        if (!isFolder && m_options.foldersOnly)
            continue;
        auto node = std::make_unique<TreeNode>();
        node->key = TreeKey::child(key, e.name, isFolder);
        node->text = e.name;
        node->kind = isFolder ? TreeNode::Kind::Folder : TreeNode::Kind::File;
        node->parent = folder;
        if (isFolder)
            node->placeholder = childTest(e.nativePath);
        if (m_options.checkBoxes)
            node->check = m_childCheckRule ? m_childCheckRule(node->key, folder->check) : Qt::Unchecked;
        rows.push_back(std::move(node));
    }
    addRows(folder, std::move(rows));
    if (m_busyHook)
        m_busyHook(false);
}

void FileTreeModel::addRows(TreeNode* parent, std::vector<std::unique_ptr<TreeNode>> rows)
{
    if (rows.empty())
        return;
    const int first = static_cast<int>(parent->children.size());
    beginInsertRows(indexOfNode(parent), first, first + static_cast<int>(rows.size()) - 1);
    parent->children.reserve(parent->children.size() + rows.size());
    m_byKey.reserve(m_byKey.size() + static_cast<qsizetype>(rows.size()));
    int row = first;
    for (auto& node : rows) {
        node->row = row++;
        // A name listed twice cannot happen in one folder; should it, the first keeps the key.
        m_byKey.insert(node->key, node.get());
        parent->children.push_back(std::move(node));
    }
    endInsertRows();
}

void FileTreeModel::forget(TreeNode* node)
{
    for (auto& child : node->children)
        forget(child.get());
    const auto it = m_byKey.constFind(node->key);
    if (it != m_byKey.constEnd() && it.value() == node)
        m_byKey.erase(it);
}

void FileTreeModel::ClearChildren(const QString& key)
{
    TreeNode* node = m_byKey.value(key);
    if (!node)
        return;
    node->placeholder = false;
    if (node->children.empty())
        return;
    beginRemoveRows(indexOfNode(node), 0, static_cast<int>(node->children.size()) - 1);
    for (auto& child : node->children)
        forget(child.get());
    node->children.clear();
    endRemoveRows();
}

void FileTreeModel::RemoveNodeTree(const QString& key)
{
    TreeNode* node = m_byKey.value(key);
    if (!node)
        return;
    TreeNode* parent = node->parent;
    auto& siblings = parent ? parent->children : m_roots;
    const int row = node->row;
    beginRemoveRows(indexOfNode(parent), row, row);
    forget(node);
    siblings.erase(siblings.begin() + row);
    for (size_t i = static_cast<size_t>(row); i < siblings.size(); ++i)
        siblings[i]->row = static_cast<int>(i);
    endRemoveRows();
}

void FileTreeModel::MarkForReread(const QString& key)
{
    TreeNode* node = m_byKey.value(key);
    if (!node || node->kind == TreeNode::Kind::HostRoot || node->kind == TreeNode::Kind::Memory
        || node->kind == TreeNode::Kind::File)
        return;
    if (!node->children.empty())
        node->placeholder = true;
}

QModelIndex FileTreeModel::indexOf(const QString& key) const
{
    return indexOfNode(m_byKey.value(key));
}

QString FileTreeModel::keyOf(const QModelIndex& index) const
{
    const TreeNode* node = nodeOf(index);
    return node ? node->key : QString();
}

QStringList FileTreeModel::childKeys(const QString& key) const
{
    QStringList keys;
    if (const TreeNode* node = m_byKey.value(key)) {
        for (const auto& child : node->children)
            keys << child->key;
    }
    return keys;
}

void FileTreeModel::setMarked(const QString& key, bool marked)
{
    TreeNode* node = m_byKey.value(key);
    if (!node || node->marked == marked)
        return;
    node->marked = marked;
    const QModelIndex index = indexOfNode(node);
    emit dataChanged(index, index, { MarkedRole, Qt::BackgroundRole, Qt::ForegroundRole });
}

bool FileTreeModel::isMarked(const QString& key) const
{
    const TreeNode* node = m_byKey.value(key);
    return node && node->marked;
}

void FileTreeModel::setChecked(const QString& key, Qt::CheckState state)
{
    TreeNode* node = m_byKey.value(key);
    if (!node || node->check == state)
        return;
    node->check = state;
    const QModelIndex index = indexOfNode(node);
    emit dataChanged(index, index, { Qt::CheckStateRole });
}

Qt::CheckState FileTreeModel::checked(const QString& key) const
{
    const TreeNode* node = m_byKey.value(key);
    return node ? node->check : Qt::Unchecked;
}

TreeNode* FileTreeModel::nodeOf(const QModelIndex& index) const
{
    return index.isValid() ? static_cast<TreeNode*>(index.internalPointer()) : nullptr;
}

QModelIndex FileTreeModel::indexOfNode(const TreeNode* node) const
{
    return node ? createIndex(node->row, 0, const_cast<TreeNode*>(node)) : QModelIndex();
}

QModelIndex FileTreeModel::index(int row, int column, const QModelIndex& parent) const
{
    if (column != 0 || row < 0)
        return {};
    const TreeNode* p = nodeOf(parent);
    const auto& children = p ? p->children : m_roots;
    if (static_cast<size_t>(row) >= children.size())
        return {};
    return createIndex(row, 0, children[static_cast<size_t>(row)].get());
}

QModelIndex FileTreeModel::parent(const QModelIndex& child) const
{
    const TreeNode* node = nodeOf(child);
    return node ? indexOfNode(node->parent) : QModelIndex();
}

int FileTreeModel::rowCount(const QModelIndex& parent) const
{
    if (parent.column() > 0)
        return 0;
    const TreeNode* p = nodeOf(parent);
    return static_cast<int>(p ? p->children.size() : m_roots.size());
}

int FileTreeModel::columnCount(const QModelIndex&) const
{
    return 1;
}

bool FileTreeModel::hasChildren(const QModelIndex& parent) const
{
    const TreeNode* p = nodeOf(parent);
    if (!p)
        return !m_roots.empty();
    return p->placeholder || !p->children.empty();
}

bool FileTreeModel::canFetchMore(const QModelIndex& parent) const
{
    const TreeNode* p = nodeOf(parent);
    return p && p->placeholder;
}

void FileTreeModel::fetchMore(const QModelIndex& parent)
{
    if (const TreeNode* p = nodeOf(parent))
        FillFolder(p->key);
}

QVariant FileTreeModel::data(const QModelIndex& index, int role) const
{
    const TreeNode* node = nodeOf(index);
    if (!node)
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return node->text;
    case KeyRole:
        return node->key;
    case PathRole:
        return TreeKey::pathOf(node->key);
    case ImageKeyRole:
        if (node->kind == TreeNode::Kind::Folder)
            return TreeKey::folderImage();
        if (node->kind == TreeNode::Kind::File)
            return TreeKey::fileImage(node->text);
        return node->imageKey;
    case MarkedRole:
        return node->marked;
    case KindRole:
        return static_cast<int>(node->kind);
    case Qt::CheckStateRole:
        if (m_options.checkBoxes)
            return static_cast<int>(node->check);
        return {};
    default:
        return {};
    }
}

bool FileTreeModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    TreeNode* node = nodeOf(index);
    if (!node || role != Qt::CheckStateRole || !m_options.checkBoxes)
        return false;
    const auto state = static_cast<Qt::CheckState>(value.toInt());
    node->check = state;
    emit dataChanged(index, index, { Qt::CheckStateRole });
    emit NodeCheck(node->key, state != Qt::Unchecked);
    return true;
}

Qt::ItemFlags FileTreeModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags f = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (m_options.checkBoxes)
        f |= Qt::ItemIsUserCheckable;
    return f;
}

} // namespace vmk
