#pragma once

#include "ui/TableDialog.h"

namespace kilnova {

/// Database > Modify Table > Stockpiles: the Stockpile list, whose first rows are the four Actual
/// stockpiles; deleting one of those is refused, once per such row, while the other rows go.
class CModifyStockpiles final : public TableDialog {
    Q_OBJECT
public:
    CModifyStockpiles(ProjectDatabase& db, UserPrompt& ui, QWidget* parent = nullptr);
};

} // namespace kilnova
