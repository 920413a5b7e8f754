#include "combine/CombinationReport.h"

#include "combine/CombinationFunctions.h"
#include "combine/CombinationRequest.h"
#include "common/PrintfFormat.h"

namespace kilnova {

namespace {

const char* name(int property)
{
    // Display names are literals, so their data is nul-terminated.
    return elementDisplayName(property).data();
}

double value(const Analysis& values, int property)
{
    return static_cast<double>(values[static_cast<std::size_t>(property)]);
}

} // namespace

CombinationReport::CombinationReport(const CombinationRequest& request)
    : mRequest(request)
{
}

void CombinationReport::addHeader(int seriesSize)
{
    const CombinationRequest& r = mRequest;
    mText += formatPrintf("Blast Combination Analysis Results\r\n");
    mText += formatPrintf("Analyzing combinations of %d blasts from a series of %d blasts\r\n",
                          CSuccessfulComb::kSize, seriesSize);
    const std::int32_t count = CombinationCount(CSuccessfulComb::kSize, seriesSize);
    if (count > 0)
        mText += formatPrintf("Number of combinations to analyse: %ld\r\n", static_cast<long>(count));
    mText += formatPrintf("Target combined tonnage: %.2lf\r\n", r.tonnage);
    if (r.targetProperty)
        mText += formatPrintf("Target %s: %.2lf\r\n", name(*r.targetProperty), r.targetValue);
    if (r.quantityOn)
        mText +=
            formatPrintf("Restriction applied to individual blast quantity, must be greater than %.3lf of "
                         "combination total quantity\r\n",
                         r.quantityMinimumPercent);
    if (r.costOn)
        mText += formatPrintf("Restriction applied to individual blast cost, must be greater than %.3lf of "
                              "combination total cost\r\n",
                              r.costMinimumPercent);
    if (r.combined.on)
        mText += formatPrintf("Restriction applied to combined blast grade: %.3lf <= %s < %.3lf\r\n",
                              static_cast<double>(r.combined.lower), name(r.combined.property),
                              static_cast<double>(r.combined.upper));
    if (r.inventory.on)
        mText += formatPrintf("Restriction applied to blast inventory grade: %.3lf <= %s < %.3lf\r\n",
                              static_cast<double>(r.inventory.lower), name(r.inventory.property),
                              static_cast<double>(r.inventory.upper));
    switch (r.ranking) {
    case CombinationRequest::Ranking::CombinedGrade:
        mText += formatPrintf("Successful combinations are ranked by combined %s grade closest to %.3lf\r\n",
                              name(r.rankingProperty), static_cast<double>(r.rankingTarget));
        break;
    case CombinationRequest::Ranking::InventoryGrade:
        mText += formatPrintf(
            "Successful combinations are ranked by blast inventory %s grade closest to %.3lf\r\n",
            name(r.rankingProperty), static_cast<double>(r.rankingTarget));
        break;
    case CombinationRequest::Ranking::SmallestDeviation:
        mText += formatPrintf("Successful combinations are ranked by smallest combined %s grade standard "
                              "deviation\r\n",
                              name(r.rankingProperty));
        break;
    }
    mText += formatPrintf("\r\n\r\nResults for Period #%d\r\n", r.period);
}

void CombinationReport::addSuccessfulPair(long number, const CSuccessfulComb& pair,
                                          const std::array<double, 2>& available, double total,
                                          double rankingValue, const Analysis& combined)
{
    mText += formatPrintf("\r\n\r\nSuccessful combination #%ld\r\n", number);
    for (int b = 0; b < CSuccessfulComb::kSize; ++b) {
        const auto i = static_cast<std::size_t>(b);
        const double taken = pair.Quantities[i];
        // The share of the combination is of the target tonnage, not of the total actually taken.
        mText += formatPrintf(
            "     %10.2lf tonnes of Blast %s (%.2lf%% of blast, %.2lf%% of combination)\r\n", taken,
            pair.Names[i].toUtf8().constData(), taken / available[i] * 100, taken / mRequest.tonnage * 100);
    }
    mText += formatPrintf("     %10.2lf total tonnes\r\n", total);
    // The value follows the line break on purpose: that is where the report has always printed it.
    if (mRequest.ranking == CombinationRequest::Ranking::InventoryGrade)
        mText += formatPrintf("Classification ranking value\r\n: %.4lf", rankingValue);
    addPropertyLines(combined);
}

void CombinationReport::addBestSolution(long number, const CSuccessfulComb& pair, double deviation,
                                        const Analysis& combined)
{
    mText += formatPrintf("\r\n\r\nBest Solution found: Combination #%ld\r\n", number);
    double total = 0.0;
    for (int b = 0; b < CSuccessfulComb::kSize; ++b) {
        const auto i = static_cast<std::size_t>(b);
        mText += formatPrintf("     %10.2lf tonnes of Blast %s\r\n", pair.Quantities[i],
                              pair.Names[i].toUtf8().constData());
        total += pair.Quantities[i];
    }
    mText += formatPrintf("     %10.2lf total tonnes\r\n", total);
    if (mRequest.ranking == CombinationRequest::Ranking::SmallestDeviation)
        mText += formatPrintf("     %10.2lf Standard Deviation of %s in combination\r\n", deviation,
                              name(mRequest.rankingProperty));
    addPropertyLines(combined);
    const int c4af = elementIndex(Element::C4AF);
    mText += formatPrintf("%11.11s %10.2lf\r\n", name(c4af), value(combined, c4af));
}

void CombinationReport::addTotal(long count)
{
    mText += formatPrintf("\r\nTotal number of successful combinations: %ld", count);
}

void CombinationReport::addPropertyLines(const Analysis& v)
{
    for (int p = 0; p < 20; p += 4) {
        mText += formatPrintf("%11.11s %10.2lf %11.11s %10.2lf %11.11s %10.2lf %11.11s %10.2lf\r\n", name(p),
                              value(v, p), name(p + 1), value(v, p + 1), name(p + 2), value(v, p + 2),
                              name(p + 3), value(v, p + 3));
    }
}

} // namespace kilnova
