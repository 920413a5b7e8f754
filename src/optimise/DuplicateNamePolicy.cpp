#include "optimise/DuplicateNamePolicy.h"

#include "common/MessageTable.h"
#include "common/UserPrompt.h"
#include "database/RecordTable.h"
#include "optimise/SourceUpdate.h"
#include "optimise/StoreRefused.h"
#include "tables/TableEditor.h"

namespace kilnova {

namespace {

QString records(std::size_t count)
{
    return count == 1 ? message(Msg::OneRecord) : message(Msg::SomeRecords, {QString::number(count)});
}

} // namespace

std::vector<Record> DuplicateNamePolicy::holders(ProjectDatabase& db, Table table, const QString& name)
{
    return RecordTable(db, table).findNamed(name);
}

std::optional<DuplicateNamePolicy::Choice> DuplicateNamePolicy::ask(UserPrompt& ui, Table table,
                                                                    const QString& name, std::size_t count)
{
    const QStringList answers{message(Msg::ReplaceAnswer), message(Msg::KeepBothAnswer),
                              message(Msg::AnotherNameAnswer)};
    const int answer = ui.askChoice(
        message(Msg::NameTakenQuestion, {Schema::table(table).name, records(count), name}), answers, 2);
    switch (answer) {
    case 0:
        return Choice::Replace;
    case 1:
        return Choice::KeepBoth;
    default:
        return std::nullopt;
    }
}

bool DuplicateNamePolicy::replaceable(const std::vector<Record>& holders)
{
    for (const Record& r : holders) {
        if (r.table() == Table::Stockpile && TableEditor::isActualStockpile(r.key()))
            return false;
    }
    return true;
}

QString DuplicateNamePolicy::refusal(Table table, const QString& name, std::size_t count)
{
    return message(Msg::NameTakenRefused, {Schema::table(table).name, records(count), name});
}

int DuplicateNamePolicy::apply(ProjectDatabase& db, Table table, const QString& name, Choice choice,
                               std::map<Table, int>& backupRows)
{
    if (choice == Choice::KeepBoth)
        return 0;
    RecordTable target(db, table);
    const std::vector<Record> taken = target.findNamed(name);
    if (taken.empty())
        return 0;
    if (choice == Choice::Refuse)
        throw StoreRefused(refusal(table, name, taken.size()));
    if (!replaceable(taken))
        throw StoreRefused(message(Msg::ActualNotReplaced));
    const std::optional<Table> backup = SourceUpdate::backupOf(table);
    for (const Record& r : taken) {
        if (backup) {
            RecordTable(db, *backup).add(r.copiedTo(*backup));
            ++backupRows[*backup];
        }
        target.removeRecord(r);
    }
    return static_cast<int>(taken.size());
}

} // namespace kilnova
