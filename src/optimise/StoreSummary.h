#pragma once

#include "database/Schema.h"

#include <QString>

#include <map>
#include <vector>

namespace kilnova {

/// What storing the blends of an optimisation wrote: each new record and the records of the same
/// name it replaced, the tonnes taken from the sources and the backup rows made. describe() is what
/// the user is told, a sentence a record and one for the sources.
struct StoreSummary {
    struct Written {
        Table table = Table::Stockpile;
        QString name;
        double tonnage = 0.0;
        /// Records of the same name deleted to make way for this one.
        int replaced = 0;
    };
    std::vector<Written> records;
    bool subtracted = false;
    double tonnesTaken = 0.0;
    /// Sources whose Quantity went down, and of them those left with too little and deleted.
    int sourcesChanged = 0;
    int sourcesDeleted = 0;
    /// Rows added to each backup table.
    std::map<Table, int> backupRows;

    QString describe() const;
};

} // namespace kilnova
