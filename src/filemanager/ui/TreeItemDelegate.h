#pragma once

#include <QStyledItemDelegate>

namespace vmk
{

// Paints a file tree's node: its picture from the icon cache by image key, and the
// highlight colours of a marked node (system highlight behind white text).
class TreeItemDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};

} // namespace vmk
