#pragma once

#include "database/Schema.h"

#include <QString>

#include <map>

namespace kilnova {

/// What storing a blend wrote: the new record, the records of the same name it replaced, the tonnes
/// taken from the sources and the backup rows made. describe() is the one line the user is told.
struct StoreSummary {
    Table table = Table::Stockpile;
    QString name;
    double tonnage = 0.0;
    /// Records of the same name deleted to make way for the blend.
    int replaced = 0;
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
