#pragma once

#include "database/Record.h"
#include "optimise/BlendSummary.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace kilnova {

struct BlendProblem;
struct OptimizationOutcome;
struct ChemEquationCoefficients;

/// The report of a stockpile optimisation: the common head with the constraints on the crude, the
/// constraints on the material left, one line per source taken, the crude and what stays in the
/// stockpiles. Lines end with "\r\n".
class StockpileReport final {
public:
    StockpileReport() = delete;

    /// `keys` are the problem's sources as records: stockpiles (the sources with a tonnage) by Name and
    /// Source, additives by Name.
    static QString build(const BlendProblem& problem, const std::vector<RecordKey>& keys,
                         const OptimizationOutcome& outcome, const QStringList& productTexts,
                         const QStringList& leftTexts, const ChemEquationCoefficients& coefficients);

    /// The crude: the tonnes taken of every source.
    static BlendSummary crude(const BlendProblem& problem, const OptimizationOutcome& outcome,
                              const ChemEquationCoefficients& coefficients);
    /// What stays in the chosen stockpiles: Quantity less the tonnes taken, a pile with less than the
    /// smallest tonnage left counting as emptied.
    static BlendSummary left(const BlendProblem& problem, const OptimizationOutcome& outcome,
                             const ChemEquationCoefficients& coefficients);
};

} // namespace kilnova
