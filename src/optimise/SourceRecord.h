#pragma once

#include "chemistry/Elements.h"

#include <QString>

namespace kilnova {

/// One selected source of an optimisation: its name, the tonnes available and its 22 element values
/// in element order (-1 for missing).
struct SourceRecord {
    QString name;
    double tonnage = 0.0;
    Analysis values = missingAnalysis();
};

/// A selected blast, as the blast optimisation loads it.
using BLAST = SourceRecord;

} // namespace kilnova
