#include "optimise/BlastReport.h"

#include "chemistry/Elements.h"
#include "common/PrintfFormat.h"
#include "optimise/BlendSummary.h"
#include "optimise/OptimizationModel.h"

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
    QString text;
    const auto& v = blend.values;
    for (int line = 0; line < 5; ++line) {
        const int k = line * 4;
        text += formatPrintf("%11.11s %10.2lf %11.11s %10.2lf %11.11s %10.2lf %11.11s %10.2lf\r\n",
                             name(k).constData(), v[static_cast<std::size_t>(k)], name(k + 1).constData(),
                             v[static_cast<std::size_t>(k + 1)], name(k + 2).constData(),
                             v[static_cast<std::size_t>(k + 2)], name(k + 3).constData(),
                             v[static_cast<std::size_t>(k + 3)]);
    }
    const int c4af = elementIndex(Element::C4AF);
    text += formatPrintf("%11.11s %10.2lf\r\n", name(c4af).constData(), v[static_cast<std::size_t>(c4af)]);
    return text;
}

QString BlastReport::build(const OptimizationRequest& request, const OptimizationOutcome& outcome,
                           const QStringList& constraintTexts, const BlendSummary& blend)
{
    const QString elementName = QString::fromLatin1(name(request.element));
    QString text = OptimizationModel::secondMethodPreface(outcome) +
                   OptimizationModel::reportHead(QStringLiteral("Blast Optimization Results"), request.mode,
                                                 elementName, constraintTexts);
    text += QStringLiteral("Optimized blast results\r\n\r\n");
    const double total = outcome.total();
    for (std::size_t j = 0; j < request.sources.size(); ++j) {
        if (!outcome.counts(j))
            continue;
        const double x = outcome.tonnes(j);
        const SourceRecord& s = request.sources[j];
        text += formatPrintf("%15.6lf tonnes of %s %s (%.2lf%% of blast, %.2lf%% of mix)\r\n", x, "Blast",
                             s.name.toUtf8().constData(), 100.0 * x / s.tonnage, 100.0 * x / total);
    }
    if (total != 0.0)
        text += formatPrintf("Optimized tonnage: %10.2lf\r\n", total);
    text += mixCharacteristics(blend);
    return text;
}

} // namespace kilnova
