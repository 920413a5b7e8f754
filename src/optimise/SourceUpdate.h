#pragma once

#include "database/Record.h"

#include <array>
#include <vector>

namespace kilnova {

class ProjectDatabase;
class UserPrompt;

/// Stores the blend of an optimisation as a new record and, when asked, takes the tonnes it uses out
/// of its sources after backing each changed source up. One routine for every optimisation: the
/// tables come with the call.
class SourceUpdate final {
public:
    struct Blend {
        Table table; ///< where the new record goes (Stockpile for blasts, Crude, Clinker, Coal)
        QString name;
        double tonnage = 0.0;
        std::array<double, kElementCount> values{};
    };

    /// One source of the optimisation: the tonnes the blend takes from it, and what the optimisation
    /// read of it. Every source is checked against what was read before anything is written.
    struct Take {
        Table table; ///< the source's table
        RecordKey key;
        double tonnes = 0.0;
        double available = 0.0; ///< the Quantity the optimisation read
        Analysis analysis{};    ///< the analysis the optimisation read
    };

    /// Tonnes taken at or below this leave a source untouched.
    static constexpr double kNegligibleTake = 0.0001;
    /// A source left with this much or less is deleted.
    static constexpr double kNegligibleRest = 0.1;

    /// Where a source table's rows are backed up before they change (none for crudes and coals).
    static std::optional<Table> backupOf(Table source);

    /// All of it in one transaction, or nothing. The transaction first checks that every source still
    /// holds the tonnage and analysis the optimisation read (so a second store computed on the same
    /// sources stores nothing); then a source whose row is not there is skipped. Throws DatabaseError,
    /// also when the database file is gone or another program holds it, and with a message naming
    /// the source when one has changed.
    static void store(ProjectDatabase& db, const Blend& blend, const std::vector<Take>& takes, bool subtract);

    /// The whole command: asks for the new record's name (refusing an empty one or one over 50
    /// characters, asking again), asks whether to subtract, stores, and tells the user of a failure.
    /// Returns true when the blend was stored; a cancelled name prompt stores nothing.
    static bool storeAsking(ProjectDatabase& db, UserPrompt& ui, const QString& namePrompt, Blend blend,
                            const std::vector<Take>& takes);
};

} // namespace kilnova
