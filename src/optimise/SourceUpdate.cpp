#include "optimise/SourceUpdate.h"

#include "common/MessageTable.h"
#include "common/UserPrompt.h"
#include "database/DatabaseError.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "database/Schema.h"
#include "database/Transaction.h"

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

void SourceUpdate::store(ProjectDatabase& db, const std::vector<Blend>& blends,
                         const std::vector<Take>& takes, bool subtract)
{
    if (const std::optional<QString> gone = db.missingFileMessage())
        throw DatabaseError(*gone);
    Transaction transaction(db);

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
        if (const std::optional<Table> backup = backupOf(take.table))
            RecordTable(db, *backup).add(source->copiedTo(*backup));
        // A blast's deviations are backed up with it; the relation removes them if the blast goes.
        if (take.table == Table::Blast) {
            if (const std::optional<Record> deviations = RecordTable(db, Table::StdBlast).find(take.key))
                RecordTable(db, Table::BackupStdBlast).add(deviations->copiedTo(Table::BackupStdBlast));
        }
        const double rest = source->number(QStringLiteral("Quantity")) - take.tonnes;
        if (rest <= kNegligibleRest) {
            sources.removeRecord(*source);
        } else {
            source->setValue(QStringLiteral("Quantity"), rest);
            sources.update(*source);
        }
    }
    transaction.commit();
}

std::optional<QString> SourceUpdate::nameRefusal(ProjectDatabase& db, Table table, const QString& name)
{
    if (name.isEmpty() || name.size() > Schema::kTextLength)
        return message(Msg::InvalidRecordName, {QString::number(Schema::kTextLength)});
    if (!RecordTable(db, table).findNames({name}).empty())
        return message(Msg::DuplicateRecordName, {Schema::table(table).name, name});
    return std::nullopt;
}

bool SourceUpdate::storeAsking(ProjectDatabase& db, UserPrompt& ui, std::vector<Named> records,
                               const std::vector<Take>& takes, const std::optional<QString>& subtractQuestion)
{
    try {
        for (Named& record : records) {
            QString name;
            for (;;) {
                const std::optional<QString> answer = ui.askText(record.prompt, name);
                if (!answer)
                    return false;
                name = *answer;
                const std::optional<QString> refusal = nameRefusal(db, record.blend.table, name);
                if (!refusal)
                    break;
                ui.showMessage(*refusal, UserPrompt::Icon::Warning);
            }
            record.blend.name = name;
        }
    } catch (const DatabaseError& e) {
        ui.showMessage(message(Msg::DatabaseOperationFailed), UserPrompt::Icon::Error, e.message());
        return false;
    }
    const bool subtract = ui.askYesNo(subtractQuestion.value_or(message(Msg::SubtractQuantities)));
    if (const std::optional<QString> gone = db.missingFileMessage()) {
        ui.showMessage(*gone, UserPrompt::Icon::Error);
        return false;
    }
    std::vector<Blend> blends;
    for (const Named& record : records)
        blends.push_back(record.blend);
    try {
        store(db, blends, takes, subtract);
    } catch (const DatabaseError& e) {
        ui.showMessage(message(Msg::DatabaseOperationFailed), UserPrompt::Icon::Error, e.message());
        return false;
    }
    return true;
}

} // namespace kilnova
