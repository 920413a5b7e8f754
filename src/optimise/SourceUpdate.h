#pragma once

#include "database/Record.h"
#include "optimise/DuplicateNamePolicy.h"
#include "optimise/StoreSummary.h"

#include <array>
#include <optional>
#include <utility>
#include <vector>

namespace kilnova {

class ProjectDatabase;
class UserPrompt;

/// Stores the blends of an optimisation as new records and, when asked, takes the tonnes they use
/// out of their sources after backing each changed source up. One routine for every optimisation:
/// the tables come with the call.
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
        /// What to do when the table holds the name already.
        DuplicateNamePolicy::Choice onDuplicate = DuplicateNamePolicy::Choice::Refuse;
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

    /// A new record and the question that asks for its name.
    struct Named {
        QString prompt;
        Blend blend;
    };

    /// Every new record, then the subtraction, all in one transaction, or nothing. The transaction
    /// first checks that every source still holds the tonnage and analysis the optimisation read (so
    /// a second store computed on the same sources stores nothing); then a source whose row is not
    /// there is skipped. A name a blend's table holds already is dealt with as the blend's
    /// onDuplicate says. Throws DatabaseError, also when the database file is gone or another
    /// program holds it, and with a message naming the source when one has changed; and StoreRefused.
    static StoreSummary store(ProjectDatabase& db, const std::vector<Blend>& blends,
                              const std::vector<Take>& takes, bool subtract);
    static StoreSummary store(ProjectDatabase& db, Blend blend, const std::vector<Take>& takes, bool subtract,
                              DuplicateNamePolicy::Choice onDuplicate = DuplicateNamePolicy::Choice::Refuse)
    {
        blend.onDuplicate = onDuplicate;
        return store(db, std::vector<Blend>{std::move(blend)}, takes, subtract);
    }

    /// Asks for the name of a new record of `table` until one fits: an empty one or one over 50
    /// characters is refused, a taken one asks "replace, keep both, or choose another name". Sets the
    /// blend's name and onDuplicate; false when the prompt was cancelled or the database failed (said).
    static bool askName(ProjectDatabase& db, UserPrompt& ui, const QString& prompt, Blend& blend);

    /// The whole command: asks for each new record's name in turn, asks whether to subtract
    /// (`subtractQuestion`, or the usual question), stores, and tells the user what was written or
    /// why not. Returns true when everything was stored; a cancelled name prompt stores nothing.
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
