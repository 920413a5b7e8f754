#pragma once

#include "tables/RecordForm.h"
#include "tables/RecordListModel.h"

#include <optional>
#include <vector>

namespace kilnova {

class ProjectDatabase;
class UserPrompt;

/// What the View and Modify table dialogs do, without the widgets: it lists the records of one
/// table and adds, rewrites and deletes them. Every writing command runs in one transaction and
/// either completes or leaves the database as it was; every refusal or failure is told to the user
/// and the caller's dialog stays open. A blast is written together with its standard deviations; a
/// duplicate blast, additive or coal name is refused; the four Actual stockpiles are never deleted
/// nor renamed.
class TableEditor final {
public:
    TableEditor(ProjectDatabase& db, Table table, UserPrompt& ui);
    TableEditor(const TableEditor&) = delete;
    TableEditor& operator=(const TableEditor&) = delete;

    Table table() const { return mTable; }
    RecordListModel& model() { return mModel; }
    const RecordListModel& model() const { return mModel; }

    /// Reads the table again (sorting kept); tells the user and returns false when it cannot.
    bool reload();

    /// A form for Add, holding the table's defaults (a blast's deviations 0).
    RecordForm newRecordForm() const;
    /// A form for Modify of a listed row, a blast's current deviations included; nothing (after
    /// telling the user) when they cannot be read.
    std::optional<RecordForm> formForRow(int row);

    /// Stores a form: adds its record, or rewrites the one it was opened on, and lists it (the form's
    /// record then carries its row id). Returns false after telling the user why nothing was written.
    /// The four Actual stockpiles keep their keys, and no other stockpile may take one.
    bool save(RecordForm& form);
    /// The list row of a record that was read or stored, if it is listed.
    std::optional<int> rowOf(const Record& record) const;

    /// Deletes the records of the given rows after asking 28002, every record with the same key
    /// included. An Actual stockpile is kept with message 29200, once per such row. Returns how many
    /// records were deleted.
    int deleteRows(std::vector<int> rows);

    /// One of the four stockpiles every database keeps (compared as the database compares keys).
    static bool isActualStockpile(const RecordKey& key);

private:
    bool databaseFileIsThere();
    /// The name clash that refuses a record of a Name-keyed table, as a message.
    std::optional<QString> nameClash(const Record& record);
    /// True when a stockpile save would take an Actual stockpile's Name or Source away from it, or
    /// give such a key to another stockpile.
    bool movesAnActualKey(const Record& record) const;
    /// Writes a blast's deviations beside it (rewriting its record when it has one); returns its row id.
    qint64 writeDeviations(Record deviations);

    ProjectDatabase& mDb;
    Table mTable;
    UserPrompt& mUi;
    RecordListModel mModel;
};

} // namespace kilnova
