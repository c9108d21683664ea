#pragma once

#include <QFileIconProvider>
#include <QHash>
#include <QIcon>
#include <QMimeDatabase>
#include <QString>

namespace vmk
{

// The pictures of the file trees, cached by image key: "Folder" once, each file type
// ("|txt") the first time a file of that type is shown, each root by its own key.
// Pictures come from the desktop's icon theme through Qt's file-icon provider; a
// folder of a thousand files of one type asks the provider once.
class TreeIcons
{
public:
    static TreeIcons& instance();

    // `kind` is TreeNode::Kind as an int; `logicalPath` names a file of the type, for
    // the provider's first look.
    QIcon icon(const QString& imageKey, int kind, const QString& logicalPath);
    bool ImageKeyExists(const QString& imageKey) const { return m_cache.contains(imageKey); }
    // How many times the provider was asked (each a miss of the cache).
    int lookups() const { return m_lookups; }
    void clear();

private:
    TreeIcons();
    QIcon lookUp(const QString& imageKey, int kind, const QString& logicalPath);

    QFileIconProvider m_provider;
    QMimeDatabase m_types;
    QHash<QString, QIcon> m_cache;
    int m_lookups = 0;
};

} // namespace vmk
