#pragma once

#include "chemistry/Elements.h"
#include "optimise/LinearProgramme.h"

#include <QString>

#include <array>
#include <optional>
#include <vector>

namespace kilnova {

/// How a tonne of one source enters the product, per element: the weight of its value (the share of
/// the element that reaches the product, φ), the weight of a bound in the element's rows (the
/// product tonnes the source makes, y) and the weight of its value in the objective. A blast, a
/// stockpile or a coal counted by the tonne has every weight 1; clinker supplies its conversion.
struct SourceWeights {
    std::array<double, kElementCount> value;
    std::array<double, kElementCount> bound;
    std::array<double, kElementCount> objective;

    /// Every weight 1: the source is the product, tonne for tonne.
    static SourceWeights unit();
    /// value φ_k, bound y, objective y·φ_k.
    static SourceWeights conversion(double yield, const std::array<double, kElementCount>& factor);
};

/// One source as the shared model sees it.
struct ModelSource {
    QString name;
    /// The upper row x ≤ available; none for a source bought as needed. -1 is a missing tonnage.
    std::optional<double> available;
    Analysis values = missingAnalysis();
    SourceWeights weights = SourceWeights::unit();
    /// A kind's reason why this source cannot be used, given when the value checks first meet the
    /// source with its values present (the clinker's missing LOI).
    std::optional<QString> refusal;
};

/// Limits on one element of the product: a pair of rows.
struct ElementBound {
    int element = 0;
    double minimum = 0.0;
    double maximum = 0.0;
};

/// Everything the shared builder needs for the two programmes of one optimisation. Each kind fills
/// it: the sources with their weights, the objective, the element bounds, the product tonnage row and
/// its own rows.
///
/// The programmes, rows in this order (all right-hand sides 0 unless said):
///   - for each bound, in the order given: Σ row(k, maximum)·x ≤ 0, then Σ row(k, minimum)·x ≥ 0,
///     where row(k, b) = v_k·value_k − (offset_k + b)·bound_k, and for MS, MA and LSF the ratio
///     linearised on its oxides, each oxide times its value weight:
///     MS  SiO2 − b·Al2O3 − b·Fe2O3,   MA  Al2O3 − b·Fe2O3,
///     LSF LSFCaO·CaO − (LSFFe2O3·Fe2O3 + LSFAl2O3·Al2O3 + LSFSiO2·SiO2)·b;
///     each coefficient is worked out in double and rounded once to single precision;
///   - Target mode: Σ row(element, target)·x ≥ 0 in programme 1 (at or above the target), ≤ 0 in
///     programme 2 (at or below);
///   - per source: x ≥ 0, then x ≤ available when the source has a tonnage;
///   - the product tonnage row Σ w·x = tonnage (w = 1 unless tonnageWeights says otherwise), unless
///     tonnageRow is false;
///   - for each remainder bound, in the order given, over the sources with a tonnage (what a source
///     bought as needed leaves behind is nothing): the remainder Σ (available − x) within the limits,
///     written on x as Σ r(k, maximum)·x ≥ Σ r(k, maximum)·available, then
///     Σ r(k, minimum)·x ≤ Σ r(k, minimum)·available, where r is row() of the source as it is, every
///     weight 1 and no offset (the remainder is the raw material, not the product);
///   - the kind's rows, in its order;
///   - empty equalities (0 = 0) up to declaredRows, when the kind declares more rows than it builds.
/// Objective: in Target mode row(element, target); otherwise v·objective + offset, or for MS, MA and
/// LSF the ratio's numerator (SiO2, Al2O3, LSFCaO·CaO) as it stands.
/// Sense: programme 1 minimises and programme 2 maximises in Target mode; otherwise the mode (2,
/// Maximize Tonnage, solves as a maximisation).
/// Initialize receives declaredRows (or the number of rows built) and the kinds of those rows: a
/// row built beyond declaredRows is not stored (blast Maximize Tonnage drops its tonnage row so).
struct BlendProblem {
    std::vector<ModelSource> sources;
    int mode = 1; ///< -1 Minimize, 1 Maximize, 0 Target, 2 Maximize Tonnage
    int element = 0;
    double target = 0.0;
    std::vector<ElementBound> bounds;
    /// Added to a bound on the product side of an element's rows (the free-lime term of the phases).
    std::array<double, kElementCount> boundOffset{};
    /// Weights of the product tonnage row, one per source; empty for 1 each.
    std::vector<double> tonnageWeights;
    double tonnage = 0.0;
    /// False leaves the product tonnage row out (Maximize Tonnage of a kind that declares no row count).
    bool tonnageRow = true;
    /// Limits on the material the sources with a tonnage leave behind (the stockpiles of a crude).
    std::vector<ElementBound> remainderBounds;
    /// The kind's own rows, after the tonnage row; their role is KindRow.
    std::vector<LinearProgramme::Row> kindRows;
    std::optional<int> declaredRows;
};

} // namespace kilnova
