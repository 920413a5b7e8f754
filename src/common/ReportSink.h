#pragma once

#include <string_view>

namespace kilnova {

/// Where a report goes while it is being built, piece by piece: a view's storage, a file, standard
/// output. A report that runs to hundreds of megabytes is never held whole on its way.
class ReportSink {
public:
    virtual ~ReportSink() = default;
    /// UTF-8 text whose lines end as lineEnd() says.
    virtual void write(std::string_view text) = 0;
    /// The line end the sink wants: the reports' own "\r\n" unless it says otherwise.
    virtual std::string_view lineEnd() const { return "\r\n"; }
};

} // namespace kilnova
