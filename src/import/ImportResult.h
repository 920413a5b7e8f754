#pragma once

#include <QString>

namespace kilnova {

/// How an import into the project database ended.
struct ImportResult {
    /// Records saved and kept (for blasts: blasts whose stdBlast companion was saved too).
    long count = 0;
    /// Where the import stopped ("line 7", "row 5 of Data"); empty when it read everything.
    QString stoppedAt;
    /// Why it stopped, in words for the user.
    QString reason;
    /// The records saved before the failure could not be kept either.
    bool nothingKept = false;

    bool stopped() const { return !stoppedAt.isEmpty(); }
};

} // namespace kilnova
