#include "ui/CModifyStockpiles.h"

namespace kilnova {

CModifyStockpiles::CModifyStockpiles(ProjectDatabase& db, UserPrompt& ui, QWidget* parent)
    : TableDialog(db, Table::Stockpile, Mode::Modify, ui, parent)
{
    // The editor keeps the Actual stockpiles (never deleted, never renamed); nothing else differs.
    setObjectName(QStringLiteral("CModifyStockpiles"));
}

} // namespace kilnova
