#include "combine/CombinationReport.h"

#include "combine/CSuccessfulComb.h"
#include "combine/CombinationFunctions.h"
#include "combine/CombinationRequest.h"
#include "common/ReportSink.h"

#include <cstdarg>
#include <cstdio>
#include <vector>

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

// Text leaves for the sink in blocks of about this size.
constexpr std::size_t kBlock = 1 << 16;

} // namespace

CombinationReport::CombinationReport(const CombinationRequest& request, ReportSink& sink)
    : mRequest(request)
    , mSink(sink)
    , mLineEnd(sink.lineEnd())
{
    mText.reserve(2 * kBlock);
}

void CombinationReport::add(const char* format, ...)
{
    char line[512];
    va_list args;
    va_start(args, format);
    va_list copy;
    va_copy(copy, args);
    int size = std::vsnprintf(line, sizeof line, format, args);
    va_end(args);
    std::vector<char> longer;
    const char* text = line;
    if (size >= static_cast<int>(sizeof line)) {
        longer.resize(static_cast<std::size_t>(size) + 1);
        std::vsnprintf(longer.data(), longer.size(), format, copy);
        text = longer.data();
    }
    va_end(copy);
    if (size < 0)
        return;
    if (mLineEnd == "\r\n") {
        mText.append(text, static_cast<std::size_t>(size));
        return;
    }
    for (int i = 0; i < size; ++i) {
        if (text[i] == '\r' && i + 1 < size && text[i + 1] == '\n') {
            mText += mLineEnd;
            ++i;
        } else {
            mText += text[i];
        }
    }
}

void CombinationReport::flushIfLarge()
{
    if (mFlowing && mText.size() >= kBlock) {
        mSink.write(mText);
        mText.clear();
    }
}

void CombinationReport::finish()
{
    mSink.write(mText);
    mText.clear();
}

void CombinationReport::addHeader(int seriesSize)
{
    const CombinationRequest& r = mRequest;
    add("Blast Combination Analysis Results\r\n");
    add("Analyzing combinations of %d blasts from a series of %d blasts\r\n", CSuccessfulComb::kSize,
        seriesSize);
    const std::int32_t count = CombinationCount(CSuccessfulComb::kSize, seriesSize);
    if (count > 0)
        add("Number of combinations to analyse: %ld\r\n", static_cast<long>(count));
    add("Target combined tonnage: %.2lf\r\n", r.tonnage);
    if (r.targetProperty)
        add("Target %s: %.2lf\r\n", name(*r.targetProperty), r.targetValue);
    if (r.quantityOn)
        add("Restriction applied to individual blast quantity, must be greater than %.3lf of "
            "combination total quantity\r\n",
            r.quantityMinimumPercent);
    if (r.costOn)
        add("Restriction applied to individual blast cost, must be greater than %.3lf of "
            "combination total cost\r\n",
            r.costMinimumPercent);
    if (r.combined.on)
        add("Restriction applied to combined blast grade: %.3lf <= %s < %.3lf\r\n",
            static_cast<double>(r.combined.lower), name(r.combined.property),
            static_cast<double>(r.combined.upper));
    if (r.inventory.on)
        add("Restriction applied to blast inventory grade: %.3lf <= %s < %.3lf\r\n",
            static_cast<double>(r.inventory.lower), name(r.inventory.property),
            static_cast<double>(r.inventory.upper));
    switch (r.ranking) {
    case CombinationRequest::Ranking::CombinedGrade:
        add("Successful combinations are ranked by combined %s grade closest to %.3lf\r\n",
            name(r.rankingProperty), static_cast<double>(r.rankingTarget));
        break;
    case CombinationRequest::Ranking::InventoryGrade:
        add("Successful combinations are ranked by blast inventory %s grade closest to %.3lf\r\n",
            name(r.rankingProperty), static_cast<double>(r.rankingTarget));
        break;
    case CombinationRequest::Ranking::SmallestDeviation:
        add("Successful combinations are ranked by smallest combined %s grade standard "
            "deviation\r\n",
            name(r.rankingProperty));
        break;
    }
    add("\r\n\r\nResults for Period #%d\r\n", r.period);
}

void CombinationReport::addSuccessfulPair(long number, const std::array<std::string_view, 2>& names,
                                          const std::array<double, 2>& taken,
                                          const std::array<double, 2>& available, double total,
                                          double rankingValue, const Analysis& combined)
{
    mFlowing = true;
    add("\r\n\r\nSuccessful combination #%ld\r\n", number);
    for (std::size_t b = 0; b < CSuccessfulComb::kSize; ++b) {
        // The share of the combination is of the target tonnage, not of the total actually taken.
        add("     %10.2lf tonnes of Blast %.*s (%.2lf%% of blast, %.2lf%% of combination)\r\n", taken[b],
            static_cast<int>(names[b].size()), names[b].data(), taken[b] / available[b] * 100,
            taken[b] / mRequest.tonnage * 100);
    }
    add("     %10.2lf total tonnes\r\n", total);
    // The value follows the line break on purpose: that is where the report has always printed it.
    if (mRequest.ranking == CombinationRequest::Ranking::InventoryGrade)
        add("Classification ranking value\r\n: %.4lf", rankingValue);
    addPropertyLines(combined);
    flushIfLarge();
}

void CombinationReport::addBestSolution(long number, const std::array<std::string_view, 2>& names,
                                        const std::array<double, 2>& taken, double deviation,
                                        const Analysis& combined)
{
    add("\r\n\r\nBest Solution found: Combination #%ld\r\n", number);
    double total = 0.0;
    for (std::size_t b = 0; b < CSuccessfulComb::kSize; ++b) {
        add("     %10.2lf tonnes of Blast %.*s\r\n", taken[b], static_cast<int>(names[b].size()),
            names[b].data());
        total += taken[b];
    }
    add("     %10.2lf total tonnes\r\n", total);
    if (mRequest.ranking == CombinationRequest::Ranking::SmallestDeviation)
        add("     %10.2lf Standard Deviation of %s in combination\r\n", deviation,
            name(mRequest.rankingProperty));
    addPropertyLines(combined);
    const int c4af = elementIndex(Element::C4AF);
    add("%11.11s %10.2lf\r\n", name(c4af), value(combined, c4af));
}

void CombinationReport::addTotal(long count)
{
    add("\r\nTotal number of successful combinations: %ld", count);
}

void CombinationReport::addPropertyLines(const Analysis& v)
{
    for (int p = 0; p < 20; p += 4) {
        add("%11.11s %10.2lf %11.11s %10.2lf %11.11s %10.2lf %11.11s %10.2lf\r\n", name(p), value(v, p),
            name(p + 1), value(v, p + 1), name(p + 2), value(v, p + 2), name(p + 3), value(v, p + 3));
    }
}

} // namespace kilnova
