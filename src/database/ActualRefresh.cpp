#include "database/ActualRefresh.h"

#include "chemistry/ChemistryFunctions.h"
#include "common/MessageTable.h"
#include "common/UserPrompt.h"
#include "database/DatabaseError.h"
#include "database/ExternalSourceError.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "database/Transaction.h"

#include <algorithm>

namespace kilnova {

int ActualRefresh::write(ProjectDatabase& db, const std::vector<ExternalStockpiles::Row>& rows)
{
    if (const std::optional<QString> gone = db.missingFileMessage())
        throw DatabaseError(*gone);
    Transaction transaction(db);
    RecordTable stockpiles(db, Table::Stockpile);
    int replaced = 0;
    for (const ExternalStockpiles::Row& row : rows) {
        if (row.source.compare(Schema::actualStockpileSource(), Qt::CaseInsensitive) != 0)
            continue;
        std::optional<Record> local = stockpiles.find({row.name, Schema::actualStockpileSource()});
        if (!local)
            continue;
        local->setValue(QStringLiteral("Name"), row.name);
        local->setValue(QStringLiteral("Source"), row.source);
        local->setValue(QStringLiteral("Quantity"), row.quantity);
        Analysis analysis = local->analysis();
        // Titration to C4AF sit at element indices 0 to 20 in the same order as the columns read.
        for (std::size_t k = 0; k < row.values.size(); ++k)
            analysis[k] = static_cast<float>(row.values[k]);
        computeDerivedQuantities(analysis, 0.0);
        local->setAnalysis(analysis);
        stockpiles.update(*local);
        ++replaced;
    }
    transaction.commit();
    return replaced;
}

std::optional<int> ActualRefresh::run(ProjectDatabase& db, UserPrompt& ui, const QString& connection)
{
    try {
        const ExternalStockpiles source(connection);
        if (!ui.askYesNo(
                message(Msg::ReplaceActualStockpiles, {source.databaseName(), source.connectString()})))
            return std::nullopt;
        const std::vector<ExternalStockpiles::Row> rows = source.readActual();
        const bool anyActual = std::any_of(rows.begin(), rows.end(), [](const ExternalStockpiles::Row& r) {
            return r.source.compare(Schema::actualStockpileSource(), Qt::CaseInsensitive) == 0;
        });
        if (!anyActual) {
            ui.showMessage(message(Msg::ExternalNoActual, {source.databaseName()}),
                           UserPrompt::Icon::Warning);
            return std::nullopt;
        }
        return write(db, rows);
    } catch (const ExternalSourceError& e) {
        ui.showMessage(e.message(), UserPrompt::Icon::Warning);
    } catch (const DatabaseError& e) {
        ui.showMessage(message(Msg::DatabaseOperationFailed), UserPrompt::Icon::Error, e.message());
    }
    return std::nullopt;
}

} // namespace kilnova
