#pragma once

#include "chemistry/ChemEquationCoefficients.h"
#include "chemistry/ClinkerProcessParameters.h"
#include "optimise/BlendProblem.h"
#include "optimise/ConstraintEntry.h"
#include "optimise/OptimizationModel.h"
#include "optimise/SOURCE.h"

#include <array>
#include <functional>
#include <optional>
#include <vector>

namespace kilnova {

/// What one clinker optimisation needs: the chosen sources, the objective, the limits and a copy of
/// the process parameters taken when the dialog opened.
struct ClinkerRequest {
    /// Bounds on the tonnes taken from one chosen stockpile.
    struct TonnageLimit {
        std::size_t source = 0; ///< index into sources
        double minimum = 0.0;
        double maximum = 0.0;
    };

    /// "Stockpile + Additives + Coal" rather than "Crude + Coal".
    bool stockpiles = false;
    /// The raw sources (crudes, or stockpiles then additives), then the coals, each in list order.
    std::vector<SOURCE> sources;
    int mode = 1; ///< -1 Minimize, 1 Maximize, 0 Target
    int element = 0;
    double target = 0.0;
    double requestedTonnage = 0.0; ///< of clinker, T
    std::array<ConstraintEntry, kElementCount> constraints{};
    std::vector<TonnageLimit> tonnageLimits;
    ClinkerProcessParameters process;
    double freeLime = 0.0; ///< ClinkerFreeLime
};

/// The clinker optimisation on the shared model. Every bound and the objective refer to the clinker:
/// each source enters through its conversion (ClinkerConversion: yield y, element factors φ), which
/// the shared builder takes as the source's weights. The programmes, in row order:
///   - chemistry rows for each enabled constraint in element order, LOI never (the clinker keeps the
///     fixed LOI λ): a φ − b·y, the ratios on φ-weighted oxides, the phases with the free-lime term
///     C3SCaO·FL or C2SCaO·FL added to the bound, a coal's Cost Factor CF·φ − b;
///   - Target mode, as for blasts: one row with the target τ as the bound, ≥ 0 in the first
///     programme (minimised) and ≤ 0 in the second (maximised), both right-hand sides 0; the
///     objective is that row, the clinker tonnes times the deviation of the clinker from τ, so each
///     programme drives the deviation to the target from its side and the model takes the nearer;
///   - per source x ≥ 0 and x ≤ its Quantity; additives are bought as needed and have no upper row;
///   - the clinker tonnage Σ (1 − λ/100)·Y·x = T;
///   - with coal, the heat Σ (heat/E)·x = T;
///   - per stockpile tonnage limit on a chosen stockpile (Stockpile + Additives + Coal only), in list
///     order: x ≤ maximum, then x ≥ minimum; a limit on a stockpile not chosen binds nothing and is
///     left out.
/// Initialize receives 2·(constraints + sources) + 1, + 2 with coal, + 1 in Target mode, + 2 per
/// tonnage limit; the rows that count holds beyond those built (a constraint on LOI, an additive's
/// upper row, the second coal row) are empty equalities 0 = 0, which bind nothing.
/// Objective outside Target mode: a·y·φ, a coal's Cost Factor by the tonne, the ratios' numerators,
/// the phases a·y·φ plus the free-lime term; sense −1 Minimize, +1 Maximize.
///
/// The report's figures (ClinkerBalance): the crude is the raw sources, coal excluded; the crude
/// cost is Σ tonnes × Cost Factor over the raw sources, the clinker cost the same over every source,
/// coal included; the clinker tonnage C = Σ y·x; the clinker holds Σ a·φ·x / C of each oxide, Cl and
/// the volatiles, λ of LOI, no Titration (-1: a titration means nothing after burning) and the
/// clinker cost per tonne as its Cost Factor; the moduli and phases are computed again from its
/// oxides with the free lime.
class ClinkerModel final {
public:
    explicit ClinkerModel(const ChemEquationCoefficients& coefficients = chemCoefficients());

    /// What stops a run before anything is built, checked in this order: fewer than two sources,
    /// coal alone, a requested tonnage of 0 or below, a fixed LOI of 100 or more, an energy factor
    /// of 0 or below, a coal without Ash or BTU. Nothing when the run may go on.
    static std::optional<QString> refusal(const ClinkerRequest& request);

    /// The request in the shared form (the shared builder gives its programmes).
    BlendProblem problem(const ClinkerRequest& request) const;
    /// The row count given to Initialize.
    static int declaredRows(int constraints, int sources, bool coal, bool target, int tonnageLimits);

    /// Checks, builds, solves and chooses, with the messages of the shared model; a source whose LOI
    /// is missing stops the run with its own message where the value checks first meet it.
    OptimizationOutcome run(const ClinkerRequest& request,
                            const std::function<void(const ClpSolve&)>& beforeSolve = {}) const;

    const OptimizationModel& shared() const { return mModel; }

private:
    ChemEquationCoefficients mCoefficients;
    OptimizationModel mModel;
};

} // namespace kilnova
