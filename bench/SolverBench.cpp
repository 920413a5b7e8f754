// Load and solve the same blend programmes with Kilnova (ClpSolve, and its second method where
// ClpSolve ends without an optimum), CLP and GLPK, size by size. Every generated problem is in the
// workload, whichever solver fails on it; the failures are counted, GLPK being the judge. The
// second method is also timed alone on every blend ("second"), for comparison.
// Names are "<case>/<implementation>"; scripts/run-bench divides the first implementation's time
// by each peer's. After the benchmarks, a ladder of larger blends is solved once each, until a
// solver needs more than 10 s: the size at which it stops being usable (left out when a
// --benchmark_filter without "ladder" is given).

#include "PeerSolvers.h"
#include "ProblemGenerator.h"

#include "solver/ClpSolve.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kilnova::bench {
namespace {

struct Size {
    int sources;
    int elements;
};

constexpr Size kSizes[] = {{5, 3}, {20, 5}, {50, 8}, {200, 10}};
constexpr int kProblemsPerSize = 12;
/// A solver taking longer than this on one blend is no longer usable at that size.
constexpr double kUsable = 10.0;
constexpr int kLadder[] = {500, 1000, 2000, 5000, 10000, 20000};

/// The classic method alone: its objective (NaN without an optimum) and the iterations it took.
std::pair<double, int> classicAlone(const PreparedProblem& p)
{
    ClpSolve solver;
    const auto count = [&p](int kind) {
        int c = 0;
        for (const int k : p.kinds)
            c += k == kind;
        return c;
    };
    solver.Initialize(p.rows, p.columns, p.sense, count(-1), count(0), count(1));
    for (std::size_t t = 1; t < p.tripletValue.size(); ++t)
        solver.SetCoefficient(p.tripletRow[t], p.tripletColumn[t], p.tripletValue[t]);
    for (int i = 0; i < p.rows; ++i)
        solver.SetConstraint(i + 1, p.rhs[static_cast<std::size_t>(i)], p.kinds[static_cast<std::size_t>(i)]);
    for (int j = 0; j < p.columns; ++j)
        solver.SetObjectiveCoefficient(j + 1, p.objective[static_cast<std::size_t>(j)]);
    solver.setStopOnRay(true);
    const bool optimal = solver.Solve() == ClpSolve::kOptimal;
    return {optimal ? solver.GetObjectiveValue() : std::nan(""), solver.iterations()};
}

bool sameObjective(double ours, double glpk)
{
    // Kilnova's classic objective is single precision.
    return std::abs(ours - glpk) <= 1e-5 * std::max(1.0, std::abs(glpk));
}

struct Workload {
    std::vector<PreparedProblem> problems;
};

// Minimised and maximised blends drawn around a blend the sources can make (GLPK solves nearly all).
Workload makeWorkload(Size size)
{
    ProblemGenerator generator(static_cast<std::uint32_t>(1000 * size.sources + size.elements));
    Workload w;
    int glpkOptimal = 0, oursFailed = 0, classicFailed = 0, clpFailed = 0, oursDiffer = 0, clpDiffer = 0;
    int secondFailed = 0, secondDiffer = 0;
    // Iterations over the blends both the classic method and GLPK solve.
    long classicIterations = 0, glpkIterations = 0;
    for (int k = 0; k < kProblemsPerSize; ++k) {
        const auto mode = k % 2 == 0 ? BlendCase::Minimize : BlendCase::Maximize;
        w.problems.push_back(
            prepare(generator.blend(size.sources, size.elements, mode, true).sparseProgramme(1)));
        const PreparedProblem& p = w.problems.back();
        int glpkTook = 0;
        const double glpk = solveWithGlpk(p, 0.0, &glpkTook);
        if (std::isnan(glpk))
            continue;
        ++glpkOptimal;
        const double ours = solveWithKilnova(p);
        const double clp = solveWithClp(p);
        const auto [classic, classicTook] = classicAlone(p);
        const double second = solveWithSecondMethod(p);
        secondFailed += std::isnan(second);
        secondDiffer += !std::isnan(second) && !sameObjective(second, glpk);
        oursFailed += std::isnan(ours);
        classicFailed += std::isnan(classic);
        if (!std::isnan(classic)) {
            classicIterations += classicTook;
            glpkIterations += glpkTook;
        }
        clpFailed += std::isnan(clp);
        oursDiffer += !std::isnan(ours) && !sameObjective(ours, glpk);
        clpDiffer += !std::isnan(clp) && !sameObjective(clp, glpk);
    }
    std::fprintf(stderr,
                 "blend_%dx%d: %d problems, GLPK optimal on %d; of those without an optimum: Kilnova %d "
                 "(ClpSolve alone %d), CLP %d; objective off GLPK's: Kilnova %d, CLP %d; iterations where "
                 "both solve: ClpSolve %ld, GLPK %ld; the second method alone: without an optimum %d, "
                 "objective off GLPK's %d\n",
                 size.sources, size.elements, kProblemsPerSize, glpkOptimal, oursFailed, classicFailed,
                 clpFailed, oursDiffer, clpDiffer, classicIterations, glpkIterations, secondFailed, secondDiffer);
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
        std::size_t k = 0;
        for (auto _ : state) {
            benchmark::DoNotOptimize(call(w.problems[k]));
            k = (k + 1) % w.problems.size();
        }
    })->Unit(benchmark::kMicrosecond);
}

double cpuSeconds()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

/// One blend per size, solved once by each solver still usable.
void ladder()
{
    std::printf("\nBlends solved once each, CPU seconds (-: no longer run; *: no optimum):\n");
    std::printf("%8s %12s %12s %12s %12s\n", "sources", "Kilnova", "CLP", "GLPK", "second");
    bool usable[4] = {true, true, true, true};
    for (const int sources : kLadder) {
        ProblemGenerator generator(static_cast<std::uint32_t>(sources));
        const PreparedProblem p =
            prepare(generator.blend(sources, 10, BlendCase::Maximize, true).sparseProgramme(1));
        std::string line;
        char cell[32];
        for (int s = 0; s < 4; ++s) {
            if (!usable[s]) {
                std::snprintf(cell, sizeof cell, " %12s", "-");
                line += cell;
                continue;
            }
            const double start = cpuSeconds();
            const double z = s == 0   ? solveWithKilnova(p)
                             : s == 1 ? solveWithClp(p, 2 * kUsable)
                             : s == 2 ? solveWithGlpk(p, 2 * kUsable)
                                      : solveWithSecondMethod(p);
            const double seconds = cpuSeconds() - start;
            usable[s] = seconds <= kUsable;
            std::snprintf(cell, sizeof cell, " %11.2f%s", seconds, std::isnan(z) ? "*" : " ");
            line += cell;
        }
        std::printf("%8d%s\n", sources, line.c_str());
        std::fflush(stdout);
    }
}

} // namespace

void registerBenchmarks()
{
    for (std::size_t size = 0; size < std::size(kSizes); ++size) {
        const std::string name =
            "blend_" + std::to_string(kSizes[size].sources) + "x" + std::to_string(kSizes[size].elements);
        registerOne(name + "/Kilnova", size, [](const PreparedProblem& p) { return solveWithKilnova(p); });
        registerOne(name + "/CLP", size, [](const PreparedProblem& p) { return solveWithClp(p); });
        registerOne(name + "/GLPK", size, [](const PreparedProblem& p) { return solveWithGlpk(p); });
        // Not what answers the user where the classic method finds an optimum: shown for comparison.
        registerOne(name + "/second", size, [](const PreparedProblem& p) { return solveWithSecondMethod(p); });
    }
}

} // namespace kilnova::bench

int main(int argc, char** argv)
{
    // The ladder of larger blends (a minute or two) runs unless a filter leaves it out.
    bool ladder = true;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        if (a.rfind("--benchmark_filter=", 0) == 0)
            ladder = a.find("ladder") != std::string::npos;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    kilnova::bench::registerBenchmarks();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    if (ladder)
        kilnova::bench::ladder();
    return 0;
}
