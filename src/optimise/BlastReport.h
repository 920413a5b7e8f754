#pragma once

#include <QString>
#include <QStringList>

namespace kilnova {

struct BlendSummary;
struct OptimizationOutcome;
struct OptimizationRequest;

/// The report of a blast optimisation: the common head, one line per blast taken, the optimised
/// tonnage and the mix characteristics. Lines end with "\r\n".
class BlastReport final {
public:
    static QString build(const OptimizationRequest& request, const OptimizationOutcome& outcome,
                         const QStringList& constraintTexts, const BlendSummary& blend);

    /// The 21 mix values (all but Cl): five lines of four name/value pairs, then C4AF. Shared by the
    /// reports that print a mix.
    static QString mixCharacteristics(const BlendSummary& blend);
};

} // namespace kilnova
