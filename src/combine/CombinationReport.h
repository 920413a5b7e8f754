#pragma once

#include "chemistry/Elements.h"
#include "combine/CSuccessfulComb.h"

#include <QString>

namespace kilnova {

struct CombinationRequest;

/// Builds the text of a combination run, line by line in the order of the run, with "\r\n" line
/// ends. The results window, the command line and the tests all show what this builds.
class CombinationReport final {
public:
    explicit CombinationReport(const CombinationRequest& request);

    /// Title, series, count of combinations, targets, active restrictions, ranking and period.
    void addHeader(int seriesSize);
    /// The block of successful pair number `number`; rankingValue is printed in mode 1 only.
    void addSuccessfulPair(long number, const CSuccessfulComb& pair, const std::array<double, 2>& available,
                           double total, double rankingValue, const Analysis& combined);
    /// The best pair again (number 0 when there is none), with its deviation in mode 2.
    void addBestSolution(long number, const CSuccessfulComb& pair, double deviation,
                         const Analysis& combined);
    void addTotal(long count);

    const QString& text() const { return mText; }
    QString take() { return std::move(mText); }

private:
    /// Properties 0-19 in five lines of four "name value" pairs.
    void addPropertyLines(const Analysis& values);

    const CombinationRequest& mRequest;
    QString mText;
};

} // namespace kilnova
