#include "ui/MissingValueDelegate.h"

#include "tables/RecordListModel.h"

namespace kilnova {

void MissingValueDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (!index.data(RecordListModel::kMissingRole).toBool())
        return;
    const QColor grey = option->palette.color(QPalette::Disabled, QPalette::Text);
    option->palette.setColor(QPalette::Text, grey);
    option->palette.setColor(QPalette::HighlightedText, grey.lighter(150));
}

} // namespace kilnova
