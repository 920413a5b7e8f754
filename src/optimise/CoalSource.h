#pragma once

#include "chemistry/Elements.h"
#include "optimise/CoalProperties.h"

#include <QString>

#include <array>

namespace kilnova {

class Record;

/// One selected coal, as the coal optimisation loads it: its name, the tonnes available, its 25
/// properties in property order (-1 missing; BTU in double precision, as the Coal table keeps it)
/// and its Cl.
struct CoalSource {
    QString name;
    double tonnage = 0.0;
    std::array<double, kCoalPropertyCount> properties{};
    double Cl = kMissing;
    /// The record's analysis as read, for the store to check that the coal has not changed since.
    Analysis read = missingAnalysis();

    static CoalSource fromRecord(const Record& coal);

    double value(CoalProperty p) const { return properties[static_cast<std::size_t>(coalPropertyIndex(p))]; }
    /// The analysis of its ash as the 22 elements (Titration and Cost Factor missing, Cl the coal's).
    Analysis ashAnalysis() const;
};

using COAL = CoalSource;

} // namespace kilnova
