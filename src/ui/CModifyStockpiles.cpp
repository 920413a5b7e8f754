#include "ui/CModifyStockpiles.h"

namespace kilnova {

CModifyStockpiles::CModifyStockpiles(ProjectDatabase& db, UserPrompt& ui, QWidget* parent)
    : TableDialog(db, Table::Stockpile, Mode::Modify, ui, parent)
{
    // The Actual stockpiles are protected by the editor's delete rule; nothing else differs.
    setObjectName(QStringLiteral("CModifyStockpiles"));
}

} // namespace kilnova
