#include "ui/CModifyStockpiles.h"

#include "ui/CUpdateActualStockpiles.h"

#include <QHBoxLayout>
#include <QPushButton>

namespace kilnova {

CModifyStockpiles::CModifyStockpiles(ProjectDatabase& db, UserPrompt& ui, QWidget* parent)
    : TableDialog(db, Table::Stockpile, Mode::Modify, ui, parent)
    , mDb(db)
    , mUi(ui)
{
    // The editor keeps the Actual stockpiles (never deleted, never renamed).
    setObjectName(QStringLiteral("CModifyStockpiles"));
    auto* update = new QPushButton(QStringLiteral("Update Actual Stockpiles…"));
    update->setObjectName(QStringLiteral("updateActual"));
    update->setAutoDefault(false);
    buttonRow()->insertWidget(1, update);
    connect(update, &QPushButton::clicked, this, &CModifyStockpiles::updateActualStockpiles);
}

void CModifyStockpiles::updateActualStockpiles()
{
    const RecordListModel& model = editor().model();
    std::vector<RecordKey> keys;
    for (int row = 0; row < model.rowCount(); ++row) {
        const RecordKey key = model.record(row).key();
        if (std::find(keys.begin(), keys.end(), key) == keys.end())
            keys.push_back(key);
    }
    std::vector<RecordKey> chosen;
    for (int row : selectedRows())
        chosen.push_back(model.record(row).key());
    CUpdateActualStockpiles dialog(mDb, mUi, keys, chosen, this);
    if (dialog.exec() == QDialog::Accepted)
        editor().reload();
}

} // namespace kilnova
