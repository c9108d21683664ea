#pragma once

#include <QString>
#include <Qt>

#include <memory>
#include <vector>

namespace vmk
{

// One node of a file tree. Entries keep their name as the caption; the key holds the
// whole location (see TreeKey). A folder that was seen to hold something but is not
// read yet carries the placeholder flag instead of a child: that is what gives it an
// expand mark, and the next expansion reads the disk.
struct TreeNode {
    enum class Kind { HostRoot, SpecialRoot, Drive, DeviceRoot, Memory, Folder, File };

    QString key;
    QString text;
    QString imageKey; // roots only; folders and files derive theirs
    Kind kind = Kind::File;
    TreeNode* parent = nullptr;
    int row = 0;
    bool placeholder = false;
    bool marked = false;
    Qt::CheckState check = Qt::Unchecked;
    std::vector<std::unique_ptr<TreeNode>> children;

    bool isRoot() const { return kind != Kind::Folder && kind != Kind::File; }
};

} // namespace vmk
