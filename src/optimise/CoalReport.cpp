#include "optimise/CoalReport.h"

#include "common/PrintfFormat.h"
#include "optimise/CoalSummary.h"
#include "optimise/OptimizationModel.h"
#include "optimise/ReportLines.h"

namespace kilnova {

QString CoalReport::mixCharacteristics(const CoalSummary& mix)
{
    QStringList fuelNames, ashNames;
    std::vector<double> fuel, ash;
    for (int k = 0; k < kCoalPropertyCount; ++k) {
        const bool inAsh = CoalProperties::inAshAnalysis(k);
        (inAsh ? ashNames : fuelNames) << CoalProperties::names()[k];
        (inAsh ? ash : fuel).push_back(mix.properties[static_cast<std::size_t>(k)]);
    }
    return ReportLines::pairs(fuelNames, fuel) + QStringLiteral("\r\nChemical composition of the ash\r\n") +
           ReportLines::pairs(ashNames, ash);
}

QString CoalReport::build(const std::vector<CoalSource>& coals, const OptimizationOutcome& outcome, int mode,
                          int property, const QStringList& constraintTexts, const CoalSummary& mix)
{
    QString text = OptimizationModel::reportHead(outcome, QStringLiteral("Coal Optimization Results"), mode,
                                                 CoalProperties::names().value(property), constraintTexts);
    text += QStringLiteral("Optimized coal results\r\n\r\n");
    const double total = outcome.total();
    for (std::size_t j = 0; j < coals.size(); ++j) {
        if (!outcome.counts(j))
            continue;
        const double x = outcome.tonnes(j);
        text +=
            formatPrintf("%15.6lf tonnes of %s %s (%.2lf%% of coal, %.2lf%% of mix)\r\n", x, "Coal",
                         coals[j].name.toUtf8().constData(), 100.0 * x / coals[j].tonnage, 100.0 * x / total);
    }
    if (total != 0.0)
        text += formatPrintf("Optimized tonnage: %10.2lf\r\n", total);
    text += mixCharacteristics(mix);
    return text;
}

} // namespace kilnova
