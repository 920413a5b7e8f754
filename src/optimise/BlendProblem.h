#pragma once

#include "chemistry/Elements.h"
#include "optimise/LinearProgramme.h"

#include <QString>

#include <optional>
#include <span>
#include <vector>

namespace kilnova {

/// Which properties the values of a problem hold: how many, and where the three ratios and the
/// oxides they are built on lie. The 22 elements unless a kind has its own list (a coal's 25
/// properties: heat, ash and the other fuel values before the analysis of its ash).
struct PropertyLayout {
    int count = kElementCount;
    int SiO2 = elementIndex(Element::SiO2);
    int Al2O3 = elementIndex(Element::Al2O3);
    int Fe2O3 = elementIndex(Element::Fe2O3);
    int CaO = elementIndex(Element::CaO);
    int MS = elementIndex(Element::MS);
    int MA = elementIndex(Element::MA);
    int LSF = elementIndex(Element::LSF);
    /// Outside Target mode the objective on a ratio is its numerator oxide. Off: the oxide as it
    /// stands (the clinker's ratio objectives are not weighted by yield). On: times the oxide's value
    /// weight, as every other objective is (a coal's ash analysis counts by tonnes of ash).
    bool weightedRatioObjective = false;
};

/// The values of one source, one per property of its problem, in property order; -1 is missing.
class PropertyValues final {
public:
    PropertyValues() = default;
    /// The 22 elements of an analysis (implicit: most kinds hold their sources' analyses).
    PropertyValues(const Analysis& analysis)
        : mValues(analysis.begin(), analysis.end())
    {
    }
    explicit PropertyValues(std::vector<float> values)
        : mValues(std::move(values))
    {
    }

    std::size_t size() const { return mValues.size(); }
    float operator[](std::size_t property) const { return mValues[property]; }
    float& operator[](std::size_t property) { return mValues[property]; }
    /// The first 22 values as an analysis (-1 beyond the values held): what a source's record held.
    Analysis analysis() const
    {
        Analysis a = missingAnalysis();
        for (std::size_t k = 0; k < a.size() && k < mValues.size(); ++k)
            a[k] = mValues[k];
        return a;
    }
    /// The value, or -1 for a property beyond the values held.
    float at(int property) const
    {
        return property >= 0 && static_cast<std::size_t>(property) < mValues.size()
                   ? mValues[static_cast<std::size_t>(property)]
                   : static_cast<float>(kMissing);
    }

private:
    std::vector<float> mValues;
};

/// How a tonne of one source enters the product, per property: the weight of its value (the share of
/// the property that reaches the product, φ), the weight of a bound in the property's rows (the
/// product tonnes the source makes, y) and the weight of its value in the objective. A blast or a
/// stockpile has every weight 1; clinker supplies its conversion, a coal the ash behind its ash
/// analysis.
struct SourceWeights {
    std::vector<double> value;
    std::vector<double> bound;
    std::vector<double> objective;

    /// Every weight 1: the source is the product, tonne for tonne.
    static SourceWeights unit(int count = kElementCount);
    /// value φ_k, bound y, objective y·φ_k, for as many properties as there are factors.
    static SourceWeights conversion(double yield, std::span<const double> factor);
};

/// One source as the shared model sees it.
struct ModelSource {
    QString name;
    /// The upper row x ≤ available; none for a source bought as needed. -1 is a missing tonnage.
    std::optional<double> available;
    PropertyValues values = missingAnalysis();
    SourceWeights weights = SourceWeights::unit();
    /// A kind's reason why this source cannot be used, given when the value checks first meet the
    /// source with its values present (the clinker's missing LOI).
    std::optional<QString> refusal;
    /// A kind's reasons why this source cannot be used in the rows of particular properties, by
    /// property, given right after that property's value check (a coal without ash in the rows of
    /// its ash analysis); shorter than the property list, or empty, where there are none.
    std::vector<std::optional<QString>> propertyRefusals = {};
};

/// Limits on one property of the product: a pair of rows.
struct ElementBound {
    int element = 0;
    double minimum = 0.0;
    double maximum = 0.0;
};

/// Everything the shared builder needs for the two programmes of one optimisation. Each kind fills
/// it: the sources with their weights, the objective, the property bounds, the product tonnage row
/// and its own rows.
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
/// LSF the ratio's numerator (SiO2, Al2O3, LSFCaO·CaO), weighted as layout says.
/// Sense: programme 1 minimises and programme 2 maximises in Target mode; otherwise the mode (2,
/// Maximize Tonnage, solves as a maximisation).
/// Initialize receives declaredRows (or the number of rows built) and the kinds of those rows: a
/// row built beyond declaredRows is not stored (blast Maximize Tonnage drops its tonnage row so).
struct BlendProblem {
    PropertyLayout layout;
    std::vector<ModelSource> sources;
    int mode = 1; ///< -1 Minimize, 1 Maximize, 0 Target, 2 Maximize Tonnage
    int element = 0;
    double target = 0.0;
    std::vector<ElementBound> bounds;
    /// Added to a bound on the product side of a property's rows (the free-lime term of the phases);
    /// a property beyond its length has none.
    std::vector<double> boundOffset = std::vector<double>(kElementCount, 0.0);
    /// Weights of the product tonnage row, one per source; empty for 1 each.
    std::vector<double> tonnageWeights;
    double tonnage = 0.0;
    /// False leaves the product tonnage row out (Maximize Tonnage of a kind that declares no row count).
    bool tonnageRow = true;
    /// Limits on the material the sources with a tonnage leave behind (the stockpiles of a crude).
    std::vector<ElementBound> remainderBounds;
    /// The kind's own rows, after the tonnage row; their role is KindRow (index: their number here)
    /// unless the kind gives a user's limit its own role (TakenMaximum, TakenMinimum).
    std::vector<LinearProgramme::Row> kindRows;
    /// The kind rows whose right-hand side is the requested tonnage (a clinker's coal heat): they
    /// move with it when a change of the tonnage is weighed.
    std::vector<std::size_t> tonnageKindRows;
    std::optional<int> declaredRows;

    double offsetOf(int property) const
    {
        return property >= 0 && static_cast<std::size_t>(property) < boundOffset.size()
                   ? boundOffset[static_cast<std::size_t>(property)]
                   : 0.0;
    }
};

} // namespace kilnova
