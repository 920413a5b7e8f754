#pragma once

#include <QString>
#include <QStringList>

namespace kilnova {

struct ClinkerBalance;
struct ClinkerRequest;
struct OptimizationOutcome;

/// The report of a clinker optimisation: the common head, the process parameters, one line per
/// source taken (coal as the ash it leaves in the clinker), the tonnage the sources are needed for,
/// the clinker's composition, loss, ratio and costs, then the crude's and the coal mix's
/// compositions. Lines end with "\r\n".
class ClinkerReport final {
public:
    ClinkerReport() = delete;

    static QString build(const ClinkerRequest& request, const OptimizationOutcome& outcome,
                         const QStringList& constraintTexts, const ClinkerBalance& balance);
};

} // namespace kilnova
