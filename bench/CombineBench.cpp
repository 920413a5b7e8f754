// The pair search of the blast combination analysis against a straightforward search that gathers
// the inventory left by each pair from every record of the series again (one pass over the series
// per pair). Both build the same report, byte for byte; the workload checks it before timing.
// Names are "<case>/<implementation>"; scripts/run-bench divides the first implementation's time
// by each peer's.

#include "chemistry/ChemEquationCoefficients.h"
#include "chemistry/ChemistryFunctions.h"
#include "combine/CombinationFunctions.h"
#include "combine/CombinationReport.h"
#include "combine/CombinationSearch.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace kilnova::bench {
namespace {

constexpr int kSizes[] = {200, 1000, 5000};
/// Above this the reference search (cubic in the series) would run for minutes.
constexpr int kLargestReference = 1000;

constexpr float kMissingValue = -1.0f;

std::size_t at(Element e)
{
    return static_cast<std::size_t>(elementIndex(e));
}

/// A small fixed generator, so that every run times the same series.
class Random {
public:
    explicit Random(std::uint64_t seed)
        : mState(seed)
    {
    }
    double uniform(double low, double high)
    {
        mState = mState * 6364136223846793005ULL + 1442695040888963407ULL;
        return low + (high - low) * static_cast<double>(mState >> 11) / 9007199254740992.0;
    }

private:
    std::uint64_t mState;
};

std::vector<BLASTSD> makeSeries(int n)
{
    Random random(static_cast<std::uint64_t>(n) * 7919u + 17u);
    std::vector<BLASTSD> series(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
        BLASTSD& b = series[static_cast<std::size_t>(i)];
        b.Name = QStringLiteral("Blast %1").arg(i + 1, 4, 10, QLatin1Char('0'));
        b.Quantity = std::round(random.uniform(2000, 6000));
        Analysis& v = b.Values;
        v.fill(0.0f);
        const auto set = [&v, &random](Element e, double low, double high) {
            v[at(e)] = static_cast<float>(std::round(random.uniform(low, high) * 100) / 100);
        };
        set(Element::Titration, 70, 90);
        set(Element::SiO2, 10, 20);
        set(Element::Al2O3, 2, 5);
        set(Element::Fe2O3, 1, 4);
        set(Element::CaO, 40, 50);
        set(Element::MgO, 0.5, 3);
        set(Element::LOI, 30, 40);
        set(Element::SO3, 0, 1);
        set(Element::K2O, 0.2, 1);
        set(Element::Na2O, 0.05, 0.4);
        set(Element::CostFactor, 1, 3);
        set(Element::Cl, 0, 0.05);
        computeDerivedQuantities(v);
    }
    return series;
}

/// 4000 t at SiO2 19 (near the top of the range, so that a fifth of the pairs are possible), ranked
/// by the inventory CaO closest to 45; the inventory restriction keeps the pairs whose own CaO
/// exceeds 48.5, a few in a hundred.
CombinationRequest makeRequest(const std::vector<BLASTSD>& series)
{
    CombinationRequest r;
    r.tonnage = 4000;
    r.targetProperty = elementIndex(Element::SiO2);
    r.targetValue = 19;
    r.quantityOn = true;
    r.ranking = CombinationRequest::Ranking::InventoryGrade;
    r.rankingProperty = elementIndex(Element::CaO);
    r.rankingTarget = 45;
    double quantity = 0.0;
    double lime = 0.0;
    for (const BLASTSD& b : series) {
        quantity += b.Quantity;
        lime += b.Quantity * static_cast<double>(b.Values[at(Element::CaO)]);
    }
    r.inventory = {true, elementIndex(Element::CaO), 0.0f,
                   static_cast<float>((lime - r.tonnage * 48.5) / (quantity - r.tonnage))};
    return r;
}

bool isAveraged(int p)
{
    return p <= elementIndex(Element::P2O5) || p == elementIndex(Element::CostFactor);
}

/// The search written out plainly: the same rules and arithmetic, but the inventory of every pair
/// is summed again over the whole series.
CombinationOutcome referenceSearch(const CombinationRequest& r, const std::vector<BLASTSD>& series)
{
    const int n = static_cast<int>(series.size());
    const int p0 = *r.targetProperty;
    const double t = static_cast<float>(r.targetValue);
    CombinationOutcome outcome;
    outcome.seriesSize = n;
    CombinationReport report(r);
    report.addHeader(n);
    double best = 1e39;
    CSuccessfulComb bestPair;
    Analysis bestCombined{};
    for (int i = 0; i + 1 < n; ++i) {
        for (int j = i + 1; j < n; ++j) {
            const BLASTSD* pair[2] = {&series[static_cast<std::size_t>(i)],
                                      &series[static_cast<std::size_t>(j)]};
            if (pair[0]->Quantity <= 0 || pair[1]->Quantity <= 0)
                continue;
            std::array<double, 4> A = {
                static_cast<float>(static_cast<double>(pair[0]->Values[static_cast<std::size_t>(p0)]) - t),
                static_cast<float>(static_cast<double>(pair[1]->Values[static_cast<std::size_t>(p0)]) - t),
                1.0, 1.0};
            std::array<double, 2> x = {0.0, r.tonnage};
            if (!SolveSquareSystem(A, x, 2))
                continue;
            Analysis M{};
            double S = 0.0;
            bool possible = true;
            for (int k = 0; k < 2 && possible; ++k) {
                const double xk = x[static_cast<std::size_t>(k)];
                possible = xk >= 0 && xk <= pair[k]->Quantity;
                S += xk;
                for (std::size_t p = 0; p < kElementCount; ++p) {
                    const float v = pair[k]->Values[p];
                    M[p] = M[p] == kMissingValue || v == kMissingValue
                               ? kMissingValue
                               : static_cast<float>(static_cast<double>(M[p]) + xk * static_cast<double>(v));
                }
            }
            if (!possible)
                continue;
            for (int p = 0; p < kElementCount; ++p) {
                float& m = M[static_cast<std::size_t>(p)];
                if (isAveraged(p) && m != kMissingValue)
                    m = static_cast<float>(static_cast<double>(m) / S);
            }
            computeDerivedQuantities(M);
            if (x[0] / S * 100 < r.quantityMinimumPercent || x[1] / S * 100 < r.quantityMinimumPercent)
                continue;

            double left = 0.0;
            for (const BLASTSD& b : series)
                left += b.Quantity;
            left -= S;
            Analysis I{};
            for (int p = 0; p < kElementCount; ++p) {
                const auto e = static_cast<std::size_t>(p);
                bool missing = false;
                double amount = 0.0;
                for (const BLASTSD& b : series) {
                    if (b.Values[e] == kMissingValue)
                        missing = true;
                    else
                        amount += b.Quantity * static_cast<double>(b.Values[e]);
                }
                double taken = 0.0;
                for (int k = 0; k < 2; ++k) {
                    const float v = pair[k]->Values[e];
                    if (v == kMissingValue)
                        missing = true;
                    else
                        taken += x[static_cast<std::size_t>(k)] * static_cast<double>(v);
                }
                I[e] = missing ? kMissingValue
                               : static_cast<float>(isAveraged(p) ? (amount - taken) / left : amount - taken);
            }
            computeDerivedQuantities(I);
            const float grade = I[static_cast<std::size_t>(r.inventory.property)];
            if (!(r.inventory.lower <= grade && grade < r.inventory.upper && grade != kMissingValue))
                continue;

            const std::size_t q = static_cast<std::size_t>(r.rankingProperty);
            CSuccessfulComb found{{pair[0]->Name, pair[1]->Name}, x};
            if (std::fabs(M[q] - r.rankingTarget) < best) {
                best = std::fabs(I[q] - r.rankingTarget);
                outcome.bestIndex = static_cast<int>(outcome.successes.size());
                bestPair = found;
                bestCombined = M;
            }
            outcome.successes.push_back(found);
            report.addSuccessfulPair(static_cast<long>(outcome.successes.size()), found,
                                     {pair[0]->Quantity, pair[1]->Quantity}, S, best, M);
        }
    }
    report.addBestSolution(outcome.bestIndex + 1, bestPair, 0.0, bestCombined);
    if (!outcome.successes.empty())
        report.addTotal(static_cast<long>(outcome.successes.size()));
    outcome.report = report.take();
    return outcome;
}

struct Workload {
    CombinationRequest request;
    std::vector<BLASTSD> series;
    bool sameReports = true;
};

Workload makeWorkload(int n)
{
    Workload w;
    w.series = makeSeries(n);
    w.request = makeRequest(w.series);
    const CombinationOutcome ours = CombinationSearch(w.request, w.series).run();
    std::fprintf(stderr, "%d blasts: %lld pairs, %zu successful, report %lld bytes\n", n,
                 static_cast<long long>(n) * (n - 1) / 2, ours.successes.size(),
                 static_cast<long long>(ours.report.size()));
    if (n <= kLargestReference) {
        w.sameReports = referenceSearch(w.request, w.series).report == ours.report;
        if (!w.sameReports)
            std::fprintf(stderr, "%d blasts: the two searches built different reports\n", n);
    }
    return w;
}

// Built on first use (outside the timed loop), so a filtered run builds only what it needs.
const Workload& workload(std::size_t size)
{
    static std::vector<std::optional<Workload>> cache(std::size(kSizes));
    if (!cache[size])
        cache[size] = makeWorkload(kSizes[size]);
    return *cache[size];
}

template <typename Call> void registerOne(const std::string& name, std::size_t size, Call call)
{
    benchmark::RegisterBenchmark(name.c_str(), [size, call](benchmark::State& state) {
        const Workload& w = workload(size);
        if (!w.sameReports) {
            state.SkipWithError("the reports differ");
            return;
        }
        for (auto _ : state)
            benchmark::DoNotOptimize(call(w).successes.size());
    })->Unit(benchmark::kMillisecond);
}

} // namespace

void registerBenchmarks()
{
    for (std::size_t size = 0; size < std::size(kSizes); ++size) {
        const std::string name = "combine_" + std::to_string(kSizes[size]);
        registerOne(name + "/CombinationSearch", size,
                    [](const Workload& w) { return CombinationSearch(w.request, w.series).run(); });
        if (kSizes[size] <= kLargestReference)
            registerOne(name + "/reference", size,
                        [](const Workload& w) { return referenceSearch(w.request, w.series); });
        else
            std::printf(
                "%s/reference: not run; gathering the inventory from all %d blasts for each of the %lld "
                "pairs takes minutes\n",
                name.c_str(), kSizes[size], static_cast<long long>(kSizes[size]) * (kSizes[size] - 1) / 2);
    }
    std::fflush(stdout);
}

} // namespace kilnova::bench

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    kilnova::bench::registerBenchmarks();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
