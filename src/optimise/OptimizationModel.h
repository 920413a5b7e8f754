#pragma once

#include "chemistry/ChemEquationCoefficients.h"
#include "optimise/ConstraintEntry.h"
#include "optimise/LinearProgramme.h"
#include "optimise/SourceRecord.h"

#include <QString>
#include <QStringList>

#include <array>
#include <functional>
#include <optional>
#include <vector>

namespace kilnova {

class ClpSolve;

/// What an optimisation dialog hands to the model.
struct OptimizationRequest {
    std::vector<SourceRecord> sources;
    int mode = 1; ///< -1 Minimize, 1 Maximize, 0 Target, 2 Maximize Tonnage
    int element = 0;
    double target = 0.0;
    double requestedTonnage = 0.0;
    std::array<ConstraintEntry, kElementCount> constraints{};
};

/// What it gets back: either a message, or the value of every basic source.
struct OptimizationOutcome {
    bool solved = false;
    QString message;
    /// Per source in selection order: its value when the solver left it basic.
    std::vector<std::optional<double>> values;
    /// 1 or 2: the programme whose solution was taken.
    int programme = 0;
    /// Which method found the blend. The second one is tried only when the classic one ends
    /// without an optimum; `message` then keeps what the classic one said.
    enum class Method { Classic, Second };
    Method method = Method::Classic;

    /// Tonnes below this are not taken at all.
    static constexpr double kSmallestTonnage = 0.005;
    bool counts(std::size_t source) const;
    double tonnes(std::size_t source) const { return counts(source) ? *values[source] : 0.0; }
    double total() const;
};

/// The shared optimisation model: the two linear programmes of a blend (element rows with the
/// moduli linearised on their oxides, a target row in Target mode, source rows, the tonnage row),
/// their objective, which of the two solutions is taken, and the common head of every report.
class OptimizationModel final {
public:
    explicit OptimizationModel(const ChemEquationCoefficients& coefficients = chemCoefficients());

    /// The first source that lacks a value the run needs (a constrained or optimised element, or
    /// its tonnage), or nothing.
    std::optional<QString> sourceWithMissingValue(const OptimizationRequest& request) const;

    /// Programme 1 or 2 of the request.
    LinearProgramme build(const OptimizationRequest& request, int programme) const;

    /// Checks, builds and solves both programmes and chooses the solution. `beforeSolve` receives
    /// the first programme once it is loaded (the debug dump).
    OptimizationOutcome run(const OptimizationRequest& request,
                            const std::function<void(const ClpSolve&)>& beforeSolve = {}) const;

    /// The coefficient of a source in a row on `element` with bound `bound`: the value minus the
    /// bound, or for MS, MA and LSF the linear form over their oxides; single precision.
    float rowCoefficient(const Analysis& values, int element, double bound) const;
    /// The objective coefficient outside Target mode: the value, or a modulus' numerator.
    float objectiveCoefficient(const Analysis& values, int element) const;

    /// Which programme's solution is taken (1 or 2), or 0 when neither solved: both optimal takes, in
    /// Target mode, the one whose objective lies nearer the target (ties to 2), otherwise the first.
    static int chooseProgramme(int mode, double target, int code1, double objective1, int code2,
                               double objective2);

    /// What a report opens with when the second method found the blend: the classic method's
    /// message, then the note that a blend exists and was found by the second method. Empty
    /// otherwise.
    static QString secondMethodPreface(const OptimizationOutcome& outcome);
    /// Title line, what was done to which element, and the constraints applied.
    static QString reportHead(const QString& title, int mode, const QString& elementName,
                              const QStringList& constraintTexts);
    /// The message for a solver result code other than optimal.
    static QString messageForCode(int code);

private:
    /// Both programmes by the second method, when the classic one ended without an optimum.
    void solveBySecondMethod(const OptimizationRequest& request, const LinearProgramme& programme1,
                             const LinearProgramme& programme2, OptimizationOutcome& outcome) const;

    ChemEquationCoefficients mCoefficients;
};

} // namespace kilnova
