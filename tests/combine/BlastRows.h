#pragma once

#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"

#include <initializer_list>
#include <utility>

namespace kilnova::test {

/// A Blast row for a combination test: the given values, 0 for every other analysis value.
struct BlastRow {
    QString name;
    double quantity = 0.0;
    std::initializer_list<std::pair<const char*, double>> values = {};
    double east = 0.0;
    double north = 0.0;
    double elevation = 0.0;
    bool withDeviations = true;
};

/// Adds the rows to Blast and, where asked, a stdBlast row of zeros for each.
inline void addBlasts(ProjectDatabase& db, std::initializer_list<BlastRow> rows, Table blasts = Table::Blast,
                      Table deviations = Table::StdBlast)
{
    RecordTable blastTable(db, blasts);
    RecordTable deviationTable(db, deviations);
    for (const BlastRow& row : rows) {
        Record r(blasts);
        r.setValue("Name", row.name);
        r.setValue("Quantity", row.quantity);
        r.setValue("East", row.east);
        r.setValue("North", row.north);
        r.setValue("Elevation", row.elevation);
        Analysis zeros{};
        r.setAnalysis(zeros);
        for (const auto& [column, value] : row.values)
            r.setValue(QString::fromLatin1(column), value);
        blastTable.add(r);
        if (row.withDeviations) {
            Record d(deviations);
            d.setValue("Name", row.name);
            deviationTable.add(d);
        }
    }
}

} // namespace kilnova::test
