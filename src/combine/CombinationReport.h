#pragma once

#include "chemistry/Elements.h"

#include <array>
#include <string>
#include <string_view>

namespace kilnova {

class ReportSink;
struct CombinationRequest;

/// Builds the text of a combination run, line by line in the order of the run, and hands it to a
/// sink as it goes, in the sink's line ends (chosen once here). The header is held back until the
/// first successful pair, so that a run in which no pair succeeds sends nothing at all; from then
/// on the text leaves in blocks and is never held whole. The results window, the command line and
/// the tests all get what this builds.
class CombinationReport final {
public:
    CombinationReport(const CombinationRequest& request, ReportSink& sink);

    /// Title, series, count of combinations, targets, active restrictions, ranking and period.
    void addHeader(int seriesSize);
    /// The block of successful pair number `number`; rankingValue is printed in mode 1 only. Names
    /// are UTF-8.
    void addSuccessfulPair(long number, const std::array<std::string_view, 2>& names,
                           const std::array<double, 2>& taken, const std::array<double, 2>& available,
                           double total, double rankingValue, const Analysis& combined);
    /// The best pair again (number 0 when there is none), with its deviation in mode 2.
    void addBestSolution(long number, const std::array<std::string_view, 2>& names,
                         const std::array<double, 2>& taken, double deviation, const Analysis& combined);
    void addTotal(long count);
    /// Sends what is still held.
    void finish();

private:
    /// printf into the text, "\r\n" turned into the sink's line end.
    void add(const char* format, ...) __attribute__((format(printf, 2, 3)));
    /// Properties 0-19 in five lines of four "name value" pairs.
    void addPropertyLines(const Analysis& values);
    void flushIfLarge();

    const CombinationRequest& mRequest;
    ReportSink& mSink;
    std::string mLineEnd;
    std::string mText;
    bool mFlowing = false; // a pair was reported: the text may leave
};

} // namespace kilnova
