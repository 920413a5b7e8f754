#include "combine/CombinationSearch.h"

#include "chemistry/ChemEquationCoefficients.h"
#include "chemistry/ChemistryFunctions.h"
#include "combine/CombinationFunctions.h"
#include "combine/CombinationReport.h"

#include <cmath>

namespace kilnova {

namespace {

constexpr float kMissingValue = -1.0f;

constexpr std::size_t at(Element e)
{
    return static_cast<std::size_t>(elementIndex(e));
}

/// The analysed components and the cost factor are averaged over the tonnes; the moduli and phases
/// are recomputed from the averages; chloride is left as summed.
bool isAveraged(int property)
{
    return property <= elementIndex(Element::P2O5) || property == elementIndex(Element::CostFactor);
}

/// The blast's coefficient in "mixture grade = target", made linear for the moduli. Evaluated in
/// double and rounded once to single precision, the precision the coefficients always had.
double gradeCoefficient(const Analysis& v, int property, double targetValue,
                        const ChemEquationCoefficients& c)
{
    const auto value = [&v](Element e) {
        return static_cast<double>(v[at(e)]);
    };
    const auto coefficient = [](float f) {
        return static_cast<double>(f);
    };
    const double t = static_cast<float>(targetValue);
    double result = 0.0;
    switch (static_cast<Element>(property)) {
    case Element::MS:
        result = value(Element::SiO2) - (value(Element::Al2O3) + value(Element::Fe2O3)) * t;
        break;
    case Element::MA:
        result = value(Element::Al2O3) - value(Element::Fe2O3) * t;
        break;
    case Element::LSF:
        result =
            coefficient(c.LSFCaO) * value(Element::CaO) -
            (coefficient(c.LSFFe2O3) * value(Element::Fe2O3) + coefficient(c.LSFSiO2) * value(Element::SiO2) +
             coefficient(c.LSFAl2O3) * value(Element::Al2O3)) *
                t;
        break;
    default:
        result = static_cast<double>(v[static_cast<std::size_t>(property)]) - t;
        break;
    }
    return static_cast<float>(result);
}

float distance(float grade, float target)
{
    return std::fabs(grade - target);
}

} // namespace

CombinationSearch::CombinationSearch(CombinationRequest request, std::vector<BLASTSD> series)
    : mRequest(std::move(request))
    , mSeries(std::move(series))
    , mEquations(mRequest.targetProperty ? 2 : 1)
{
    if (mRequest.targetProperty) {
        const ChemEquationCoefficients& c = chemCoefficients();
        mCoefficient.reserve(mSeries.size());
        for (const BLASTSD& b : mSeries)
            mCoefficient.push_back(
                gradeCoefficient(b.Values, *mRequest.targetProperty, mRequest.targetValue, c));
    }
    for (const BLASTSD& b : mSeries)
        mNames.push_back(b.Name.toUtf8());
    // The series totals do not depend on the pair: gather them once instead of once per pair.
    for (const BLASTSD& b : mSeries) {
        mSeriesQuantity += b.Quantity;
        for (std::size_t p = 0; p < kElementCount; ++p) {
            if (b.Values[p] == kMissingValue)
                mSeriesMissing[p] = true;
            else
                mSeriesAmount[p] += b.Quantity * static_cast<double>(b.Values[p]);
        }
    }
}

CombinationOutcome CombinationSearch::run(ReportSink& sink, const CombinationProgress& progress) const
{
    const int n = static_cast<int>(mSeries.size());
    CombinationOutcome outcome;
    outcome.seriesSize = n;
    CombinationReport report(mRequest, sink);
    report.addHeader(n);
    const auto nameOf = [this](int index) {
        const QByteArray& name = mNames[static_cast<std::size_t>(index)];
        return std::string_view(name.constData(), static_cast<std::size_t>(name.size()));
    };

    const long long pairCount = static_cast<long long>(n) * (n - 1) / 2;
    long long done = 0;
    double best = 1e39;
    SuccessfulPair bestPair{{0, 0}, {0.0, 0.0}};
    bool anyBest = false;
    Analysis bestCombined{};
    double bestDeviation = 0.0;
    const int rankedOn = mRequest.rankingProperty;
    Pair pair;
    for (int i = 0; i + 1 < n; ++i) {
        if (progress && !progress(done, pairCount))
            return CombinationOutcome{true, {}, {}, -1, n};
        for (int j = i + 1; j < n; ++j) {
            if (!evaluate(i, j, pair))
                continue;
            // Strict comparisons: of equal values the pair found first stays best.
            bool isBest = false;
            switch (mRequest.ranking) {
            case CombinationRequest::Ranking::CombinedGrade: {
                const float d = distance(pair.combined[rankedOn], mRequest.rankingTarget);
                if (d < best) {
                    best = d;
                    isBest = true;
                }
                break;
            }
            case CombinationRequest::Ranking::InventoryGrade:
                // Compared on the combined grade, stored as the inventory grade: the ranking has
                // always worked so, and its results are kept comparable.
                if (distance(pair.combined[rankedOn], mRequest.rankingTarget) < best) {
                    best = distance(pair.inventory[rankedOn], mRequest.rankingTarget);
                    isBest = true;
                }
                break;
            case CombinationRequest::Ranking::SmallestDeviation:
                if (std::fabs(pair.deviation) < best) {
                    best = std::fabs(pair.deviation);
                    isBest = true;
                }
                break;
            }
            const SuccessfulPair found{{i, j}, pair.taken};
            if (isBest) {
                outcome.bestIndex = static_cast<int>(outcome.pairs.size());
                bestPair = found;
                anyBest = true;
                bestCombined = pair.combined;
                bestDeviation = pair.deviation;
            }
            outcome.pairs.push_back(found);
            report.addSuccessfulPair(static_cast<long>(outcome.pairs.size()), {nameOf(i), nameOf(j)},
                                     pair.taken, {blast(i).Quantity, blast(j).Quantity}, pair.total, best,
                                     pair.combined);
        }
        done += n - 1 - i;
    }
    // With no best pair the block names nobody and takes nothing.
    const std::array<std::string_view, 2> bestNames =
        anyBest ? std::array{nameOf(bestPair.blasts[0]), nameOf(bestPair.blasts[1])}
                : std::array<std::string_view, 2>{};
    report.addBestSolution(outcome.bestIndex + 1, bestNames, bestPair.tonnes, bestDeviation, bestCombined);
    if (!outcome.pairs.empty()) {
        report.addTotal(static_cast<long>(outcome.pairs.size()));
        report.finish();
    }
    outcome.names.reserve(mSeries.size());
    for (const BLASTSD& b : mSeries)
        outcome.names.push_back(b.Name);
    return outcome;
}

bool CombinationSearch::evaluate(int i, int j, Pair& pair) const
{
    // A blast without tonnes (one whose deviations are missing is loaded so) never takes part.
    if (blast(i).Quantity <= 0 || blast(j).Quantity <= 0)
        return false;
    // Grade equation (when a target is set) then tonnage equation.
    std::array<double, 4> A{};
    std::array<double, 2> b{};
    if (mEquations == 2) {
        A = {mCoefficient[static_cast<std::size_t>(i)], mCoefficient[static_cast<std::size_t>(j)], 1.0, 1.0};
        b = {0.0, mRequest.tonnage};
    } else {
        A[0] = 1.0;
        b[0] = mRequest.tonnage;
    }
    if (!SolveSquareSystem(A, b, mEquations))
        return false;
    pair.taken = {b[0], mEquations == 2 ? b[1] : 0.0};
    return mix(i, j, pair) && meetsRestrictions(i, j, pair);
}

bool CombinationSearch::mix(int i, int j, Pair& pair) const
{
    const int members[2] = {i, j};
    // Most pairs fail here; they are turned away before anything is summed for them.
    for (int k = 0; k < mEquations; ++k) {
        const double x = pair.taken[static_cast<std::size_t>(k)];
        if (x < 0 || x > blast(members[k]).Quantity)
            return false;
    }
    pair.combined.fill(0.0f);
    pair.total = 0.0;
    for (int k = 0; k < mEquations; ++k) {
        const BLASTSD& b = blast(members[k]);
        const double x = pair.taken[static_cast<std::size_t>(k)];
        pair.total += x;
        for (std::size_t p = 0; p < kElementCount; ++p) {
            float& m = pair.combined[p];
            const float v = b.Values[p];
            m = m == kMissingValue || v == kMissingValue
                    ? kMissingValue
                    : static_cast<float>(static_cast<double>(m) + x * static_cast<double>(v));
        }
    }
    const double S = pair.total;

    if (mRequest.deviationProperty) {
        const auto s = static_cast<std::size_t>(*mRequest.deviationProperty);
        // The property's own value stands for the blast's spread.
        const double s0 = blast(i).Values[s];
        const double s1 = blast(j).Values[s];
        const double x0 = pair.taken[0];
        const double x1 = pair.taken[1];
        const double own0 = x0 * s0 / S;
        const double own1 = x1 * s1 / S;
        // The pair term differences the second value with itself and so always adds zero; it is kept
        // as the deviation has always been computed.
        const double cross = (s0 - s1) * 2.0 * (s1 - s1) * x0 * x0 * x1 * x1 / (S * S * S * S);
        pair.deviation = std::sqrt(own0 * own0 + own1 * own1 + cross);
    } else {
        pair.deviation = 0.0;
    }

    for (int p = 0; p < kElementCount; ++p) {
        float& m = pair.combined[static_cast<std::size_t>(p)];
        if (isAveraged(p) && m != kMissingValue)
            m = static_cast<float>(static_cast<double>(m) / S);
    }
    computeDerivedQuantities(pair.combined);
    return true;
}

bool CombinationSearch::meetsRestrictions(int i, int j, Pair& pair) const
{
    const CombinationRequest& r = mRequest;
    const double S = pair.total;
    const BLASTSD* members[2] = {&blast(i), &blast(j)};
    if (r.quantityOn) {
        for (std::size_t k = 0; k < 2; ++k) {
            if (pair.taken[k] / S * 100 < r.quantityMinimumPercent)
                return false;
        }
    }
    if (r.costOn) {
        const std::size_t cost = at(Element::CostFactor);
        for (std::size_t k = 0; k < 2; ++k) {
            const double share = static_cast<double>(members[k]->Values[cost]) * pair.taken[k] /
                                 (static_cast<double>(pair.combined[cost]) * S) * 100;
            if (share < r.costMinimumPercent)
                return false;
        }
    }
    const auto within = [](const CombinationRequest::GradeBounds& bounds, float grade) {
        return bounds.lower <= grade && grade < bounds.upper && grade != kMissingValue;
    };
    if (r.combined.on) {
        // Chloride is summed, not averaged, so it is never a combined grade.
        if (r.combined.property > elementIndex(Element::C4AF) ||
            !within(r.combined, pair.combined[static_cast<std::size_t>(r.combined.property)]))
            return false;
    }
    if (r.needsInventory())
        computeInventory(i, j, pair);
    if (r.inventory.on &&
        !within(r.inventory, pair.inventory[static_cast<std::size_t>(r.inventory.property)]))
        return false;
    return true;
}

void CombinationSearch::computeInventory(int i, int j, Pair& pair) const
{
    const int members[2] = {i, j};
    const double left = mSeriesQuantity - pair.total;
    for (int p = 0; p < kElementCount; ++p) {
        const auto e = static_cast<std::size_t>(p);
        bool missing = mSeriesMissing[e];
        double taken = 0.0;
        for (int k = 0; k < mEquations; ++k) {
            const float v = blast(members[k]).Values[e];
            if (v == kMissingValue)
                missing = true;
            else
                taken += pair.taken[static_cast<std::size_t>(k)] * static_cast<double>(v);
        }
        if (missing) {
            pair.inventory[e] = kMissingValue;
            continue;
        }
        const double amount = mSeriesAmount[e] - taken;
        pair.inventory[e] = static_cast<float>(isAveraged(p) ? amount / left : amount);
    }
    computeDerivedQuantities(pair.inventory);
}

} // namespace kilnova
