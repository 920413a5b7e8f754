#pragma once

#include "optimise/ProgrammeProbe.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace kilnova {

/// One limit as an explanation shows it.
struct ExplainedLimit {
    /// The limit; a SourceTonnage with index -1 stands for the tonnages of all the sources together.
    UserLimit limit;
    /// "SiO2 maximum", "SiO2 maximum of the material left", "Requested tonnage", "Tonnage of Q0001",
    /// "Tonnages of the sources", "Maximum tonnage of Pile 3"
    QString name;
    double current = 0.0;
    /// The value the limit would need, every other limit kept, for the blend to become possible.
    std::optional<double> needed;
    /// How much the objective changes when the limit moves by `step`, every other limit kept.
    std::optional<double> marginal;
    double step = 0.0;
    /// The sources of the fullest possible blend that it takes whole (the tonnages of the sources).
    QStringList sources;
    /// Why no needed or marginal value is given, when none is.
    QString note;
};

/// Why an optimisation ended as it did: for an infeasible one, a smallest set of the user's limits
/// that cannot hold together and the value each would need; for an optimal one, the limits that
/// hold the answer where it is and what loosening each is worth; otherwise a plain statement.
struct Explanation {
    enum class Status { Optimal, Infeasible, Unbounded, NotExplained };

    Status status = Status::NotExplained;
    QString statement;
    std::vector<ExplainedLimit> conflict;
    std::vector<ExplainedLimit> binding;
    /// The tonnes missing from the sources when their tonnages are part of the conflict.
    std::optional<double> missingTonnes;

    /// The explanation as lines ending in CR LF, ready to follow a report.
    QString text() const;
    /// status, statement, missingTonnes, and per limit: limit, kind, current, needed, marginal, step.
    QJsonObject json() const;
    /// "raise it to 15.12", "lower it to 48213.00 t", or the note.
    static QString change(const ExplainedLimit& limit);
};

} // namespace kilnova
