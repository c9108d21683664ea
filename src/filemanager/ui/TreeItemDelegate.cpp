#include "filemanager/ui/TreeItemDelegate.h"

#include "filemanager/FileTreeModel.h"
#include "filemanager/ui/TreeIcons.h"

#include <QPalette>

namespace vmk
{

void TreeItemDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    const QString imageKey = index.data(FileTreeModel::ImageKeyRole).toString();
    if (!imageKey.isEmpty()) {
        option->icon = TreeIcons::instance().icon(
            imageKey, index.data(FileTreeModel::KindRole).toInt(), index.data(FileTreeModel::PathRole).toString());
        option->features |= QStyleOptionViewItem::HasDecoration;
        option->decorationSize = QSize(16, 16);
    }
    if (index.data(FileTreeModel::MarkedRole).toBool()) {
        option->backgroundBrush = option->palette.brush(QPalette::Highlight);
        option->palette.setColor(QPalette::Text, Qt::white);
        option->palette.setColor(QPalette::HighlightedText, Qt::white);
    }
}

} // namespace vmk
