#pragma once

#include "database/ExternalStockpiles.h"

#include <optional>
#include <vector>

namespace kilnova {

class ProjectDatabase;
class UserPrompt;

/// "Refresh Actual": the four Actual stockpiles replaced by those of the plant's own database, read
/// through an external data source.
///
/// Only Actual stockpiles that exist here are edited; a row of stkpiles whose Source is not "Actual"
/// is another pile that carries an Actual name and is left aside. Name, Source, Quantity and Titration
/// to C4AF are taken from the row (each analysis value as a single-precision number), MS to C4AF are
/// then derived again from the oxides, and Cl keeps its value here.
class ActualRefresh final {
public:
    ActualRefresh() = delete;

    /// Writes the rows over the local Actual stockpiles in one transaction; returns how many records
    /// were replaced. Throws DatabaseError (also when the database file is gone).
    static int write(ProjectDatabase& db, const std::vector<ExternalStockpiles::Row>& rows);

    /// The whole command: opens the source (`connection` as ExternalStockpiles takes it), asks 29113
    /// with its database and connect string, reads the Actual rows and writes them. Every failure is
    /// told to the user and changes nothing. Returns the number replaced, or nothing when the user
    /// said No or something failed.
    static std::optional<int> run(ProjectDatabase& db, UserPrompt& ui, const QString& connection);
};

} // namespace kilnova
