#include "optimise/ClinkerReport.h"

#include "common/PrintfFormat.h"
#include "optimise/ClinkerBalance.h"
#include "optimise/ClinkerModel.h"
#include "optimise/ReportLines.h"

namespace kilnova {

namespace {

QByteArray utf8(const QString& text)
{
    return text.toUtf8();
}

double percent(double part, double whole)
{
    return whole != 0.0 ? 100.0 * part / whole : 0.0;
}

} // namespace

QString ClinkerReport::build(const ClinkerRequest& r, const OptimizationOutcome& outcome,
                             const QStringList& constraintTexts, const ClinkerBalance& b)
{
    QString text = OptimizationModel::reportHead(outcome, QStringLiteral("Clinker Optimization Results"),
                                                 r.mode, elementName(r.element), constraintTexts);
    text += QString::fromStdString(r.process.reportBlock());

    for (std::size_t j = 0; j < r.sources.size(); ++j) {
        if (!outcome.counts(j))
            continue;
        const SOURCE& s = r.sources[j];
        const double x = outcome.tonnes(j);
        const QByteArray kind = utf8(SOURCE::kindWord(s.kind)), name = utf8(s.name), source = utf8(s.source);
        const double ofClinker = percent(b.clinkerOf[j], b.clinkerTonnage);
        if (s.isCoal()) {
            text += formatPrintf("%10.3lf tonnes of %s %s; %s  (%.2lf%% (Ashes) of clinker)\r\n", x,
                                 kind.constData(), name.constData(), source.constData(), ofClinker);
        } else if (r.stockpiles && s.quantity) {
            text += formatPrintf(
                "%10.3lf tonnes of %s %s; %s  (%.2lf%% of stockpile, %.2lf%% of crude, %.2lf%% of "
                "clinker)\r\n",
                x, kind.constData(), name.constData(), source.constData(), percent(x, *s.quantity),
                percent(x, b.crudeTonnage), ofClinker);
        } else {
            // Crudes, and additives, which are bought as needed and have no quantity to take a share of.
            text += formatPrintf("%10.3lf tonnes of %s %s; %s  (%.2lf%% of crude, %.2lf%% of clinker)\r\n", x,
                                 kind.constData(), name.constData(), source.constData(),
                                 percent(x, b.crudeTonnage), ofClinker);
        }
    }

    text +=
        formatPrintf("\r\nAre needed to produce the requested %.2lf tonnes of clinker\r\n", b.areNeeded());
    text += QStringLiteral("\r\nChemical composition of Clinker\r\n") + ReportLines::elements(b.clinker);
    text += formatPrintf("\r\nTotal loss: %10.2lf%%\r\n",
                         percent(b.crudeTonnage - b.clinkerTonnage, b.crudeTonnage));
    text += formatPrintf("\r\nRatio Crude/Clinker: %10.2lf:1\r\n",
                         b.clinkerTonnage != 0.0 ? b.crudeTonnage / b.clinkerTonnage : 0.0);
    text += formatPrintf("\r\nCrude cost: %10.2lf, Clinker cost: %10.2lf\r\n", b.crudeCost, b.clinkerCost);
    text += formatPrintf("\r\nChemical composition of Crude\r\nTonnage of Crude: %.2lf\r\n", b.crudeTonnage) +
            ReportLines::elements(b.crude);
    if (b.coalUsed)
        text += QStringLiteral("\r\nChemical composition of Coal\r\n") + ReportLines::elements(b.coal);
    return text;
}

} // namespace kilnova
