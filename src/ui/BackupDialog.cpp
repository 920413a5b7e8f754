#include "ui/BackupDialog.h"

#include "common/MessageTable.h"
#include "common/UserPrompt.h"
#include "database/DatabaseError.h"
#include "project/BackupCommands.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace kilnova {

BackupDialog::BackupDialog(ProjectDatabase& db, BackupRestore::Kind kind, UserPrompt& ui, QWidget* parent)
    : QDialog(parent)
    , mDb(db)
    , mKind(kind)
    , mRestore(db, kind)
    , mUi(ui)
    , mList(new QTableWidget)
{
    const bool blasts = kind == BackupRestore::Kind::Blasts;
    setWindowTitle(blasts ? QStringLiteral("Backup Blasts") : QStringLiteral("Backup Stockpiles"));
    mList->setObjectName(QStringLiteral("backups"));
    mList->setSelectionBehavior(QAbstractItemView::SelectRows);
    mList->setSelectionMode(QAbstractItemView::ExtendedSelection);
    mList->setEditTriggers(QAbstractItemView::NoEditTriggers);
    mList->verticalHeader()->hide();

    auto* restore = new QPushButton(QStringLiteral("Restore"));
    auto* done = new QPushButton(QStringLiteral("Done"));
    restore->setObjectName(QStringLiteral("restore"));
    connect(restore, &QPushButton::clicked, this, &BackupDialog::restoreSelected);
    connect(done, &QPushButton::clicked, this, &QDialog::accept);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(restore);
    buttons->addWidget(done);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(mList);
    layout->addLayout(buttons);
    resize(900, 420);
    fill();
}

int BackupDialog::rowCount() const
{
    return mList->rowCount();
}

void BackupDialog::fill()
{
    try {
        mRows = mRestore.rows();
    } catch (const DatabaseError& e) {
        mRows.clear();
        mUi.showMessage(message(Msg::DatabaseOperationFailed), UserPrompt::Icon::Error, e.message());
    }
    const TableDef& def = Schema::table(mRestore.backupTable());
    mList->clear();
    mList->setColumnCount(static_cast<int>(def.columns.size()));
    mList->setHorizontalHeaderLabels(def.columnNames());
    mList->setRowCount(static_cast<int>(mRows.size()));
    for (int r = 0; r < static_cast<int>(mRows.size()); ++r) {
        const Record& record = mRows[static_cast<std::size_t>(r)];
        for (int c = 0; c < record.columnCount(); ++c) {
            const bool text = def.columns[static_cast<std::size_t>(c)].type == ColumnType::Text;
            auto* item = new QTableWidgetItem(text ? record.value(c).toString()
                                                   : QString::number(record.value(c).toDouble(), 'f', 2));
            item->setTextAlignment(text ? Qt::AlignLeft | Qt::AlignVCenter
                                        : Qt::AlignRight | Qt::AlignVCenter);
            mList->setItem(r, c, item);
        }
    }
    mList->resizeColumnsToContents();
}

void BackupDialog::restoreSelected()
{
    std::vector<Record> chosen;
    for (int r = 0; r < mList->rowCount(); ++r) {
        if (mList->item(r, 0) && mList->item(r, 0)->isSelected())
            chosen.push_back(mRows[static_cast<std::size_t>(r)]);
    }
    if (chosen.empty())
        return;
    if (!BackupCommands::restore(mDb, mKind, chosen, mUi).empty())
        fill();
}

} // namespace kilnova
