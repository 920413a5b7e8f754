#pragma once

#include <QStyledItemDelegate>

namespace kilnova {

/// Draws the cells that a record list flags as missing (-1) in the greyed text colour, so that a
/// reader tells "not measured" from a value at a glance.
class MissingValueDelegate final : public QStyledItemDelegate {
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};

} // namespace kilnova
