#pragma once

#include "database/Record.h"

#include <array>
#include <optional>
#include <utility>
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
        /// The analysis columns the table has take these; the others are ignored.
        std::array<double, kElementCount> values{};
        /// Further columns by name, set after the analysis (a coal's BTU, Ash, Humidity, ...).
        std::vector<std::pair<QString, double>> columns = {};
    };

    struct Take {
        Table table; ///< the source's table
        RecordKey key;
        double tonnes = 0.0;
    };

    /// Tonnes taken at or below this leave a source untouched.
    static constexpr double kNegligibleTake = 0.0001;
    /// A source left with this much or less is deleted.
    static constexpr double kNegligibleRest = 0.1;

    /// Where a source table's rows are backed up before they change (none for crudes and coals).
    static std::optional<Table> backupOf(Table source);

    /// A new record and the question that asks for its name.
    struct Named {
        QString prompt;
        Blend blend;
    };

    /// Every new record, then the subtraction, all in one transaction, or nothing. A source that is
    /// no longer there is skipped. Throws DatabaseError, also when the database file is gone.
    static void store(ProjectDatabase& db, const std::vector<Blend>& blends, const std::vector<Take>& takes,
                      bool subtract);
    static void store(ProjectDatabase& db, const Blend& blend, const std::vector<Take>& takes, bool subtract)
    {
        store(db, std::vector<Blend>{blend}, takes, subtract);
    }

    /// Why a name cannot be given to a new record (empty, too long, or already in its table), or
    /// nothing. Throws DatabaseError.
    static std::optional<QString> nameRefusal(ProjectDatabase& db, Table table, const QString& name);

    /// The whole command: asks for each new record's name in turn (a refused name is explained and
    /// asked again), asks whether to subtract (`subtractQuestion`, or the usual question), stores,
    /// and tells the user of a failure. Returns true when everything was stored; a cancelled name
    /// prompt stores nothing.
    static bool storeAsking(ProjectDatabase& db, UserPrompt& ui, std::vector<Named> records,
                            const std::vector<Take>& takes,
                            const std::optional<QString>& subtractQuestion = std::nullopt);
    static bool storeAsking(ProjectDatabase& db, UserPrompt& ui, const QString& namePrompt, Blend blend,
                            const std::vector<Take>& takes,
                            const std::optional<QString>& subtractQuestion = std::nullopt)
    {
        return storeAsking(db, ui, {Named{namePrompt, std::move(blend)}}, takes, subtractQuestion);
    }
};

} // namespace kilnova
