#include "optimise/SourceUpdate.h"

#include "common/MessageTable.h"
#include "common/UserPrompt.h"
#include "database/DatabaseError.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "database/Schema.h"
#include "database/SourceSnapshot.h"
#include "database/Transaction.h"
#include "optimise/StoreRefused.h"

namespace kilnova {

std::optional<Table> SourceUpdate::backupOf(Table source)
{
    switch (source) {
    case Table::Blast:
        return Table::BackupBlast;
    case Table::StdBlast:
        return Table::BackupStdBlast;
    case Table::Stockpile:
        return Table::BackupStockpile;
    default:
        return std::nullopt;
    }
}

StoreSummary SourceUpdate::store(ProjectDatabase& db, const std::vector<Blend>& blends,
                                 const std::vector<Take>& takes, bool subtract)
{
    if (const std::optional<QString> gone = db.missingFileMessage())
        throw DatabaseError(*gone);
    Transaction transaction(db);
    StoreSummary summary;
    summary.subtracted = subtract;
    for (const Blend& blend : blends) {
        const int replaced =
            DuplicateNamePolicy::apply(db, blend.table, blend.name, blend.onDuplicate, summary.backupRows);
        summary.records.push_back({blend.table, blend.name, blend.tonnage, replaced});
    }

    // Under the write lock, so that what is checked cannot change before it is written.
    SourceSnapshot read;
    for (const Take& take : takes)
        read.add(take.table, take.key, take.available, take.analysis);
    try {
        read.verify(db);
    } catch (const SourceSnapshot::Changed& changed) {
        throw DatabaseError(message(changed.gone() ? Msg::SourceGone : Msg::SourceChanged, {changed.row()}));
    }

    for (const Blend& blend : blends) {
        Record record(blend.table);
        record.setValue(QStringLiteral("Name"), blend.name);
        if (record.definition().hasColumn(QStringLiteral("Source")))
            record.setValue(QStringLiteral("Source"), QStringLiteral(" "));
        record.setValue(QStringLiteral("Quantity"), blend.tonnage);
        Analysis analysis;
        for (std::size_t k = 0; k < kElementCount; ++k)
            analysis[k] = static_cast<float>(blend.values[k]);
        record.setAnalysis(analysis);
        for (const auto& [column, value] : blend.columns)
            record.setValue(column, value);
        RecordTable(db, blend.table).add(record);
    }

    for (const Take& take : takes) {
        if (!subtract || take.tonnes <= kNegligibleTake)
            continue;
        RecordTable sources(db, take.table);
        std::optional<Record> source = sources.find(take.key);
        if (!source)
            continue;
        if (const std::optional<Table> backup = backupOf(take.table)) {
            RecordTable(db, *backup).add(source->copiedTo(*backup));
            ++summary.backupRows[*backup];
        }
        // A blast's deviations are backed up with it; the relation removes them if the blast goes.
        if (take.table == Table::Blast) {
            if (const std::optional<Record> deviations = RecordTable(db, Table::StdBlast).find(take.key)) {
                RecordTable(db, Table::BackupStdBlast).add(deviations->copiedTo(Table::BackupStdBlast));
                ++summary.backupRows[Table::BackupStdBlast];
            }
        }
        const double rest = source->number(QStringLiteral("Quantity")) - take.tonnes;
        if (rest <= kNegligibleRest) {
            sources.removeRecord(*source);
            ++summary.sourcesDeleted;
        } else {
            source->setValue(QStringLiteral("Quantity"), rest);
            sources.update(*source);
        }
        ++summary.sourcesChanged;
        summary.tonnesTaken += take.tonnes;
    }
    transaction.commit();
    return summary;
}

bool SourceUpdate::askName(ProjectDatabase& db, UserPrompt& ui, const QString& prompt, Blend& blend)
{
    QString name;
    for (;;) {
        const std::optional<QString> answer = ui.askText(prompt, name);
        if (!answer)
            return false;
        name = *answer;
        if (name.isEmpty() || name.size() > Schema::kTextLength) {
            ui.showMessage(message(Msg::InvalidRecordName, {QString::number(Schema::kTextLength)}),
                           UserPrompt::Icon::Warning);
            continue;
        }
        std::vector<Record> holders;
        try {
            holders = DuplicateNamePolicy::holders(db, blend.table, name);
        } catch (const DatabaseError& e) {
            ui.showMessage(message(Msg::DatabaseOperationFailed), UserPrompt::Icon::Error, e.message());
            return false;
        }
        blend.name = name;
        blend.onDuplicate = DuplicateNamePolicy::Choice::Refuse;
        if (holders.empty())
            return true;
        const std::optional<DuplicateNamePolicy::Choice> choice =
            DuplicateNamePolicy::ask(ui, blend.table, name, holders.size());
        if (!choice)
            continue;
        if (*choice == DuplicateNamePolicy::Choice::Replace && !DuplicateNamePolicy::replaceable(holders)) {
            ui.showMessage(message(Msg::ActualNotReplaced), UserPrompt::Icon::Warning);
            continue;
        }
        blend.onDuplicate = *choice;
        return true;
    }
}

bool SourceUpdate::storeAsking(ProjectDatabase& db, UserPrompt& ui, std::vector<Named> records,
                               const std::vector<Take>& takes, const std::optional<QString>& subtractQuestion)
{
    std::vector<Blend> blends;
    for (Named& record : records) {
        if (!askName(db, ui, record.prompt, record.blend))
            return false;
        blends.push_back(record.blend);
    }
    const bool subtract = ui.askYesNo(subtractQuestion.value_or(message(Msg::SubtractQuantities)));
    if (const std::optional<QString> gone = db.missingFileMessage()) {
        ui.showMessage(*gone, UserPrompt::Icon::Error);
        return false;
    }
    try {
        ui.showMessage(store(db, blends, takes, subtract).describe());
    } catch (const StoreRefused& e) {
        // The name was taken while the questions were open.
        ui.showMessage(e.message(), UserPrompt::Icon::Warning);
        return false;
    } catch (const DatabaseError& e) {
        ui.showMessage(message(Msg::DatabaseOperationFailed), UserPrompt::Icon::Error, e.message());
        return false;
    }
    return true;
}

} // namespace kilnova
