#include "tables/TableEditor.h"

#include "common/MessageTable.h"
#include "common/UserPrompt.h"
#include "database/DatabaseError.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "database/Transaction.h"

#include <algorithm>

namespace kilnova {

TableEditor::TableEditor(ProjectDatabase& db, Table table, UserPrompt& ui)
    : mDb(db)
    , mTable(table)
    , mUi(ui)
    , mModel(table)
{
}

bool TableEditor::reload()
{
    try {
        mModel.setRecords(RecordTable(mDb, mTable).all());
        return true;
    } catch (const DatabaseError& e) {
        mUi.showMessage(message(Msg::CannotReadTable, {Schema::table(mTable).name, e.message()}),
                        UserPrompt::Icon::Error);
        return false;
    }
}

RecordForm TableEditor::newRecordForm() const
{
    if (mTable == Table::Blast)
        return RecordForm(Record(Table::Blast), Record(Table::StdBlast));
    return RecordForm(Record(mTable));
}

std::optional<RecordForm> TableEditor::formForRow(int row)
{
    if (row < 0 || row >= mModel.rowCount())
        return std::nullopt;
    const Record& record = mModel.record(row);
    if (mTable != Table::Blast)
        return RecordForm(record);
    try {
        std::optional<Record> deviations = RecordTable(mDb, Table::StdBlast).find({record.name(), {}});
        if (!deviations) {
            // A blast imported without deviations gets them when it is saved.
            deviations = Record(Table::StdBlast);
            deviations->setValue(0, record.name());
        }
        return RecordForm(record, std::move(deviations));
    } catch (const DatabaseError& e) {
        mUi.showMessage(message(Msg::CannotReadTable, {Schema::table(Table::StdBlast).name, e.message()}),
                        UserPrompt::Icon::Error);
        return std::nullopt;
    }
}

bool TableEditor::databaseFileIsThere()
{
    const auto gone = mDb.missingFileMessage();
    if (gone)
        mUi.showMessage(*gone, UserPrompt::Icon::Error);
    return !gone;
}

std::optional<QString> TableEditor::nameClash(const Record& record)
{
    // Blasts are also guarded by their unique index; additives and coals only here.
    if (Schema::table(mTable).key != KeyKind::Name)
        return std::nullopt;
    for (const Record& other : RecordTable(mDb, mTable).findAll({record.name(), {}})) {
        if (other.rowId() != record.rowId())
            return message(Msg::DuplicateRecordName, {Schema::table(mTable).name, record.name()});
    }
    return std::nullopt;
}

bool TableEditor::movesAnActualKey(const Record& record) const
{
    if (mTable != Table::Stockpile)
        return false;
    // The key as stored, not as the form last held it: a refused rename must stay refused when
    // the same form is saved again.
    std::optional<RecordKey> stored;
    if (record.rowId()) {
        if (const std::optional<int> row = mModel.rowOf(*record.rowId()))
            stored = mModel.record(*row).key();
    }
    const RecordKey key = record.key();
    if (stored == key)
        return false;
    // Renaming an Actual stockpile would delete it in all but name, and a second record under its
    // key could never be deleted again (deleting goes by key).
    return (stored && isActualStockpile(*stored)) || isActualStockpile(key);
}

qint64 TableEditor::writeDeviations(Record deviations)
{
    RecordTable table(mDb, Table::StdBlast);
    if (!deviations.rowId()) {
        if (const std::optional<Record> existing = table.find({deviations.name(), {}}))
            deviations.setRowId(existing->rowId());
    }
    if (!deviations.rowId())
        return *table.add(deviations).rowId();
    // A renamed blast's deviations were renamed with it by the database; this writes their values.
    table.update(deviations);
    return *deviations.rowId();
}

bool TableEditor::save(RecordForm& form)
{
    if (const std::optional<RecordForm::Problem> problem = form.apply()) {
        mUi.showMessage(problem->message, UserPrompt::Icon::Warning);
        return false;
    }
    if (movesAnActualKey(form.record())) {
        mUi.showMessage(message(Msg::ActualStockpileKeyKept), UserPrompt::Icon::Warning);
        return false;
    }
    if (!databaseFileIsThere())
        return false;
    const Record& record = form.record();
    qint64 rowId = 0;
    try {
        if (const std::optional<QString> clash = nameClash(record)) {
            mUi.showMessage(*clash, UserPrompt::Icon::Warning);
            return false;
        }
        Transaction transaction(mDb);
        RecordTable table(mDb, mTable);
        if (form.isNew()) {
            rowId = *table.add(record).rowId();
        } else {
            table.update(record);
            rowId = *record.rowId();
        }
        std::optional<qint64> deviationsRowId;
        if (form.deviations())
            deviationsRowId = writeDeviations(*form.deviations());
        transaction.commit();
        form.markStored(rowId, deviationsRowId);
    } catch (const DatabaseError& e) {
        mUi.showMessage(message(Msg::RecordNotSaved, {record.name(), e.message()}), UserPrompt::Icon::Error);
        return false;
    }
    reload();
    return true;
}

std::optional<int> TableEditor::rowOf(const Record& record) const
{
    if (!record.rowId())
        return std::nullopt;
    return mModel.rowOf(*record.rowId());
}

bool TableEditor::isActualStockpile(const RecordKey& key)
{
    return key.source.compare(Schema::actualStockpileSource(), Qt::CaseInsensitive) == 0 &&
           Schema::actualStockpileNames().contains(key.name, Qt::CaseInsensitive);
}

int TableEditor::deleteRows(std::vector<int> rows)
{
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    std::erase_if(rows, [this](int row) { return row < 0 || row >= mModel.rowCount(); });
    if (rows.empty())
        return 0;
    if (!mUi.askYesNo(message(Msg::ConfirmDeleteRecords)))
        return 0;

    // Deleting by key would take an Actual stockpile with any row of the same key (the database
    // compares keys without regard to case), so such rows are kept whole.
    std::vector<RecordKey> keys;
    for (int row : rows) {
        const RecordKey key = mModel.record(row).key();
        if (mTable == Table::Stockpile && isActualStockpile(key)) {
            mUi.showMessage(message(Msg::CannotDeleteActual), UserPrompt::Icon::Warning);
            continue;
        }
        keys.push_back(key);
    }
    if (keys.empty() || !databaseFileIsThere())
        return 0;

    int deleted = 0;
    try {
        Transaction transaction(mDb);
        RecordTable table(mDb, mTable);
        for (const RecordKey& key : keys)
            deleted += table.remove(key);
        transaction.commit();
    } catch (const DatabaseError& e) {
        mUi.showMessage(message(Msg::RecordsNotDeleted, {e.message()}), UserPrompt::Icon::Error);
        return 0;
    }
    reload();
    return deleted;
}

} // namespace kilnova
