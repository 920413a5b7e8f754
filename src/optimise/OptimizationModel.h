#pragma once

#include "chemistry/ChemEquationCoefficients.h"
#include "optimise/BlendProblem.h"
#include "optimise/ConstraintEntry.h"
#include "optimise/LinearProgramme.h"
#include "optimise/SourceRecord.h"

#include <QString>
#include <QStringList>

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace kilnova {

class ClpSolve;

/// What the blast optimisation hands to the model: sources counted tonne for tonne.
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
    /// The problem as it was solved, and the solver's result for each programme: what an
    /// explanation of the outcome starts from. No problem when the run stopped before solving.
    std::shared_ptr<const BlendProblem> problem;
    std::array<int, 2> codes{};
    /// Neither programme has a blend by either method: the classic one ended infeasible on both and
    /// the second one, tried after it, found each infeasible too.
    bool infeasibleByBoth = false;

    /// Tonnes below this are not taken at all.
    static constexpr double kSmallestTonnage = 0.005;
    bool counts(std::size_t source) const;
    double tonnes(std::size_t source) const { return counts(source) ? *values[source] : 0.0; }
    double total() const;
};

/// The shared optimisation model: builds the two linear programmes of a BlendProblem (BlendProblem.h
/// gives their rows), checks the values they need, solves both, chooses the solution, and writes the
/// common head of every report. Every optimisation kind goes through it.
class OptimizationModel final {
public:
    explicit OptimizationModel(const ChemEquationCoefficients& coefficients = chemCoefficients());

    /// The blast request as a problem of the shared form: unit weights, the active constraints in
    /// element order, the tonnage row over every source, and 2K + 2, 2K + 1 or 2K rows declared
    /// (Target, Minimize or Maximize, Maximize Tonnage; K = constraints + sources).
    static BlendProblem problemOf(const OptimizationRequest& request);
    /// The rows a blend counted tonne for tonne declares (blasts, coals): 2K + 2 in Target mode,
    /// 2K in Maximize Tonnage mode (which leaves the tonnage row out so), otherwise 2K + 1, where
    /// K = bounds + sources.
    static int blendRowCount(int mode, std::size_t bounds, std::size_t sources);

    /// The message that stops a run before anything is built, or nothing: walking the rows that need
    /// values (each bound in turn, then the optimised element) and within each the sources in order,
    /// the first source lacking the element gives "...Problem first found in source NAME", the first
    /// refusing that property, or carrying a refusal, gives that; then a source whose tonnage is
    /// missing; then each remainder bound over the sources with a tonnage.
    std::optional<QString> refusal(const BlendProblem& problem) const;

    /// Programme 1 or 2.
    LinearProgramme build(const BlendProblem& problem, int programme) const;
    LinearProgramme build(const OptimizationRequest& request, int programme) const
    {
        return build(problemOf(request), programme);
    }

    /// Checks, builds and solves both programmes and chooses the solution. `beforeSolve` receives
    /// the first programme once it is loaded (the debug dump), on a thread of its own while the
    /// second programme is solved, and returns before the first is solved.
    OptimizationOutcome run(const BlendProblem& problem,
                            const std::function<void(const ClpSolve&)>& beforeSolve = {}) const;
    OptimizationOutcome run(const OptimizationRequest& request,
                            const std::function<void(const ClpSolve&)>& beforeSolve = {}) const
    {
        return run(problemOf(request), beforeSolve);
    }

    /// The coefficient of a source in a row on property `element` with bound `bound` (BlendProblem.h
    /// gives the form), single precision. A property beyond the source's weights counts tonne for
    /// tonne.
    float rowCoefficient(const ModelSource& source, int element, double bound, double offset = 0.0,
                         const PropertyLayout& layout = {}) const;
    /// The same for a source counted tonne for tonne.
    float rowCoefficient(const PropertyValues& values, int element, double bound,
                         const PropertyLayout& layout = {}) const;
    /// The objective coefficient outside Target mode: the weighted value plus the offset, or a
    /// modulus' numerator.
    float objectiveCoefficient(const ModelSource& source, int element, double offset = 0.0,
                               const PropertyLayout& layout = {}) const;
    float objectiveCoefficient(const Analysis& values, int element) const;

    /// Which programme's solution is taken (1 or 2), or 0 when neither solved: both optimal takes, in
    /// Target mode, the one whose objective lies nearer the target (ties to 2), otherwise the first.
    static int chooseProgramme(int mode, double target, int code1, double objective1, int code2,
                               double objective2);

    /// What a report opens with when the second method found the blend: the classic method's
    /// message, then the note that a blend exists and was found by the second method. Empty
    /// otherwise.
    static QString secondMethodPreface(const OptimizationOutcome& outcome);
    /// Title line, what was done to which element, and the constraints applied; above them the
    /// second method's preface when that method found the blend. Every kind's report opens with it.
    static QString reportHead(const OptimizationOutcome& outcome, const QString& title, int mode,
                              const QString& elementName, const QStringList& constraintTexts);
    static QString reportHead(const QString& title, int mode, const QString& elementName,
                              const QStringList& constraintTexts);
    /// The debug dump to give run(): writes the first programme to `path` (nothing for an empty path;
    /// a file that cannot be written is skipped silently).
    static std::function<void(const ClpSolve&)> debugDump(const QString& path);
    /// The message for a solver result code other than optimal.
    static QString messageForCode(int code);

private:
    /// Both programmes by the second method, when the classic one ended without an optimum.
    void solveBySecondMethod(const BlendProblem& problem, const LinearProgramme& programme1,
                             const LinearProgramme& programme2, OptimizationOutcome& outcome) const;

    ChemEquationCoefficients mCoefficients;
};

} // namespace kilnova
