#include "optimise/StockpileReport.h"

#include "common/PrintfFormat.h"
#include "optimise/BlastReport.h"
#include "optimise/BlendProblem.h"
#include "optimise/OptimizationModel.h"
#include "optimise/ReportLines.h"

namespace kilnova {

namespace {

BlendSummary summaryOf(const BlendProblem& problem, const std::vector<double>& tonnes,
                       const ChemEquationCoefficients& coefficients)
{
    std::vector<Analysis> values;
    for (const ModelSource& s : problem.sources)
        values.push_back(s.values.analysis());
    std::vector<const Analysis*> analyses;
    for (const Analysis& a : values)
        analyses.push_back(&a);
    return BlendSummary::of(analyses, tonnes, coefficients);
}

} // namespace

BlendSummary StockpileReport::crude(const BlendProblem& problem, const OptimizationOutcome& outcome,
                                    const ChemEquationCoefficients& coefficients)
{
    std::vector<double> tonnes;
    for (std::size_t j = 0; j < problem.sources.size(); ++j)
        tonnes.push_back(outcome.tonnes(j));
    return summaryOf(problem, tonnes, coefficients);
}

BlendSummary StockpileReport::left(const BlendProblem& problem, const OptimizationOutcome& outcome,
                                   const ChemEquationCoefficients& coefficients)
{
    std::vector<double> tonnes;
    for (std::size_t j = 0; j < problem.sources.size(); ++j) {
        const std::optional<double>& available = problem.sources[j].available;
        const double rest = available ? *available - outcome.tonnes(j) : 0.0;
        tonnes.push_back(rest < OptimizationOutcome::kSmallestTonnage ? 0.0 : rest);
    }
    return summaryOf(problem, tonnes, coefficients);
}

QString StockpileReport::build(const BlendProblem& problem, const std::vector<RecordKey>& keys,
                               const OptimizationOutcome& outcome, const QStringList& productTexts,
                               const QStringList& leftTexts, const ChemEquationCoefficients& coefficients)
{
    QString text = OptimizationModel::reportHead(outcome, QStringLiteral("Stockpile Optimization Results"),
                                                 problem.mode, elementName(problem.element), productTexts);
    text += ReportLines::constraints(
        QStringLiteral("List of Constraints on material left in the stockpiles:"), leftTexts);
    text += QStringLiteral("Optimized crude results\r\n\r\n");
    const double total = outcome.total();
    for (std::size_t j = 0; j < problem.sources.size() && j < keys.size(); ++j) {
        if (!outcome.counts(j))
            continue;
        const ModelSource& s = problem.sources[j];
        const QString what = s.available
                                 ? QStringLiteral("Stockpile %1 (%2)").arg(keys[j].name, keys[j].source)
                                 : QStringLiteral("Additive %1").arg(keys[j].name);
        text += ReportLines::sourceTaken(outcome.tonnes(j), what, QStringLiteral("stockpile"), s.available,
                                         total);
    }
    if (total != 0.0)
        text += formatPrintf("Optimized tonnage: %10.2lf\r\n", total);
    text += BlastReport::mixCharacteristics(crude(problem, outcome, coefficients));

    text += QStringLiteral("\r\nMaterial left in the stockpiles\r\n\r\n");
    const BlendSummary rest = left(problem, outcome, coefficients);
    if (rest.tonnage < OptimizationOutcome::kSmallestTonnage) {
        text += leftTexts.isEmpty()
                    ? QStringLiteral("Nothing is left in the stockpiles.\r\n")
                    : QStringLiteral("Nothing is left in the stockpiles: the limits on the material left "
                                     "hold trivially.\r\n");
        return text;
    }
    text += formatPrintf("Left tonnage: %10.2lf\r\n", rest.tonnage);
    text += BlastReport::mixCharacteristics(rest);
    return text;
}

} // namespace kilnova
