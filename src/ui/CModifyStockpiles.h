#pragma once

#include "ui/TableDialog.h"

namespace kilnova {

/// Database > Modify Table > Stockpiles: the Stockpile list, whose first rows are the four Actual
/// stockpiles; deleting one of those is refused, once per such row, while the other rows go.
/// "Update Actual Stockpiles…" blends the chosen rows into one stockpile (CUpdateActualStockpiles).
class CModifyStockpiles final : public TableDialog {
    Q_OBJECT
public:
    CModifyStockpiles(ProjectDatabase& db, UserPrompt& ui, QWidget* parent = nullptr);

    /// The update dialog over the list, the chosen rows as its sources; the list is read again after
    /// a blend.
    void updateActualStockpiles();

private:
    ProjectDatabase& mDb;
    UserPrompt& mUi;
};

} // namespace kilnova
