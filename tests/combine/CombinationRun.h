#pragma once

#include "combine/CombinationOutcome.h"
#include "common/ReportText.h"

#include <QString>

#include <optional>
#include <vector>

namespace kilnova::test {

/// A combination run as the tests look at it: the outcome, the report its sink received and every
/// successful pair with its names.
struct CombinationRun : CombinationOutcome {
    QString report;
    std::vector<CSuccessfulComb> successes;

    CombinationRun(CombinationOutcome outcome, const ReportText& text)
        : CombinationOutcome(std::move(outcome))
        , report(text.toString())
    {
        for (int i = 0; i < count(); ++i)
            successes.push_back(combination(i));
    }
};

/// Runs `combine(sink)` of anything that combines into a sink, collecting what it gave.
template <typename Combine> std::optional<CombinationRun> collect(Combine&& combine)
{
    ReportText text;
    std::optional<CombinationOutcome> outcome = combine(text);
    if (!outcome)
        return std::nullopt;
    return CombinationRun(std::move(*outcome), text);
}

} // namespace kilnova::test
