#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace kilnova {

struct CoalSource;
struct CoalSummary;
struct OptimizationOutcome;

/// The report of a coal optimisation: the common head, one line per coal taken, the optimised
/// tonnage, the fuel values of the mix and the analysis of its ash. Lines end with "\r\n".
class CoalReport final {
public:
    CoalReport() = delete;

    static QString build(const std::vector<CoalSource>& coals, const OptimizationOutcome& outcome, int mode,
                         int property, const QStringList& constraintTexts, const CoalSummary& mix);

    /// The mix as name/value pairs, four a line: BTU, Ash, Humidity, Volatiles, Sulfur and Cost
    /// Factor, then under "Chemical composition of the ash" its oxides, moduli and phases.
    static QString mixCharacteristics(const CoalSummary& mix);
};

} // namespace kilnova
