#include "optimise/BlastReport.h"

#include "chemistry/Elements.h"
#include "common/PrintfFormat.h"
#include "optimise/BlendSummary.h"
#include "optimise/OptimizationModel.h"
#include "optimise/ReportLines.h"

namespace kilnova {

namespace {
QByteArray name(int element)
{
    return QByteArray(elementDisplayName(element).data(),
                      static_cast<qsizetype>(elementDisplayName(element).size()));
}
} // namespace

QString BlastReport::mixCharacteristics(const BlendSummary& blend)
{
    return ReportLines::elements(blend.values, elementIndex(Element::Cl));
}

QString BlastReport::build(const OptimizationRequest& request, const OptimizationOutcome& outcome,
                           const QStringList& constraintTexts, const BlendSummary& blend)
{
    const QString elementName = QString::fromLatin1(name(request.element));
    QString text = OptimizationModel::reportHead(outcome, QStringLiteral("Blast Optimization Results"),
                                                 request.mode, elementName, constraintTexts);
    text += QStringLiteral("Optimized blast results\r\n\r\n");
    const double total = outcome.total();
    for (std::size_t j = 0; j < request.sources.size(); ++j) {
        if (!outcome.counts(j))
            continue;
        const double x = outcome.tonnes(j);
        const SourceRecord& s = request.sources[j];
        text += ReportLines::sourceTaken(x, QStringLiteral("Blast ") + s.name, QStringLiteral("blast"),
                                         s.tonnage, total);
    }
    if (total != 0.0)
        text += formatPrintf("Optimized tonnage: %10.2lf\r\n", total);
    text += mixCharacteristics(blend);
    return text;
}

} // namespace kilnova
