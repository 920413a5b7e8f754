#pragma once

#include "chemistry/Elements.h"

#include <QString>
#include <QStringList>

#include <array>
#include <vector>

namespace kilnova {

/// The blocks of text that several reports print alike.
class ReportLines final {
public:
    ReportLines() = delete;

    /// Name/value pairs, "%11.11s %10.2lf" each, four a line separated by one space; the last line
    /// holds what is left. Lines end with "\r\n".
    static QString pairs(const QStringList& names, const std::vector<double>& values);
    /// The first `count` of the 22 element values under their names, in element order.
    static QString elements(const std::array<double, kElementCount>& values, int count = kElementCount);
};

} // namespace kilnova
