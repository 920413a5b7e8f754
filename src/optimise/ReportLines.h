#pragma once

#include "chemistry/Elements.h"

#include <QString>
#include <QStringList>

#include <array>
#include <optional>
#include <vector>

namespace kilnova {

/// The blocks of text that several reports print alike.
class ReportLines final {
public:
    ReportLines() = delete;

    /// The decimals of every value pairs() prints ("%10.2lf"); the blend chart writes values alike.
    static constexpr int kDecimals = 2;

    /// Name/value pairs, "%11.11s %10.2lf" each, four a line separated by one space; the last line
    /// holds what is left. Lines end with "\r\n".
    static QString pairs(const QStringList& names, const std::vector<double>& values);
    /// The first `count` of the 22 element values under their names, in element order.
    static QString elements(const std::array<double, kElementCount>& values, int count = kElementCount);
    /// The heading line, then each text on its own line and, after the last, two empty lines; or
    /// "none" and one empty line when there are none.
    static QString constraints(const QString& heading, const QStringList& texts);
    /// "%15.6lf tonnes of WHAT (%.2lf%% of SOURCEWORD, %.2lf%% of mix)": the tonnes taken, the share
    /// of the source's own tonnage and of the mix. A source without a tonnage (bought as needed) gives
    /// only the share of the mix.
    static QString sourceTaken(double tonnes, const QString& what, const QString& sourceWord,
                               std::optional<double> available, double mixTotal);
};

} // namespace kilnova
