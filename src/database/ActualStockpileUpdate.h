#pragma once

#include "database/Record.h"
#include "database/SourceSnapshot.h"

#include <optional>
#include <vector>

namespace kilnova {

class ProjectDatabase;
class UserPrompt;

/// "Update Actual Stockpiles": other stockpiles blended into one (as a rule one of the four Actual
/// ones), in one transaction.
///
/// The blended components are Titration to P2O5 and CostFactor. The destination's Quantity Q and
/// components count first (each component of 0 or more times Q); each source then adds value times
/// its Quantity, and a component that the destination or any source lacks (-1) stays -1: a mixture
/// is never filled in from partial data. The sums are divided by the total Quantity when it is above
/// 0, MS to C4AF are derived again from the new oxides, and Cl keeps the destination's value.
class ActualStockpileUpdate final {
public:
    struct Request {
        RecordKey destination;
        std::vector<RecordKey> sources;
        bool deleteSources = false;
        /// The stockpiles as they were when the user chose them, checked again in the write
        /// transaction: a blend never adds tonnes the user did not see. Empty when they were named
        /// alone (the command line), where what the transaction reads is what counts.
        SourceSnapshot seen = {};
    };

    /// The records a blend works on, as they are in the database when it runs.
    struct Records {
        Record destination{Table::Stockpile};
        std::vector<Record> sources;
    };

    /// Why the request cannot be blended as it stands (no source, no destination, a source that is
    /// the destination), or nothing.
    static std::optional<QString> refusal(const Request& request);

    /// Reads the destination and the sources, every record the blend depends on, in one place; the
    /// message when one is gone or has no Quantity (-1). Throws DatabaseError.
    static std::optional<QString> read(ProjectDatabase& db, const Request& request, Records& records);

    /// The destination as the blend leaves it (the arithmetic alone).
    static Record blended(const Records& records);

    /// Refuses, checks `seen`, reads, blends, writes the destination and deletes the sources if
    /// asked, all in one immediate transaction or nothing. Returns the message when nothing was done for a
    /// reason the user can mend; throws DatabaseError when the database fails (the file gone included).
    static std::optional<QString> apply(ProjectDatabase& db, const Request& request);

    /// apply(), telling the user of a refusal or a failure; true when the blend was stored.
    static bool applyAsking(ProjectDatabase& db, UserPrompt& ui, const Request& request);
};

} // namespace kilnova
