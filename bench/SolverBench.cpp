// Load and solve the same blend programmes with ClpSolve, CLP and GLPK, size by size.
// Names are "<case>/<implementation>"; scripts/run-bench divides the first implementation's time
// by each peer's.

#include "PeerSolvers.h"
#include "ProblemGenerator.h"

#include "solver/ClpSolve.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace kilnova::bench {
namespace {

struct Size {
    int sources;
    int elements;
};

constexpr Size kSizes[] = {{5, 3}, {20, 5}, {50, 8}, {200, 10}};
constexpr int kProblemsPerSize = 8;

double solveWithClpSolve(const LpProblem& problem)
{
    ClpSolve solver;
    problem.loadInto(solver);
    if (solver.Solve() != ClpSolve::kOptimal)
        return std::nan("");
    for (int j = 1; j <= problem.columns; ++j) {
        double value = 0.0;
        benchmark::DoNotOptimize(solver.GetVariableValue(j, value));
        benchmark::DoNotOptimize(value);
    }
    return solver.GetObjectiveValue();
}

struct Workload {
    std::vector<LpProblem> problems;
    std::vector<PreparedProblem> prepared;
};

// Minimised and maximised blends that all three solve to the same optimum, so that every
// implementation does the same work.
Workload makeWorkload(Size size)
{
    ProblemGenerator generator(static_cast<std::uint32_t>(1000 * size.sources + size.elements));
    Workload w;
    int attempts = 0;
    int oursNotOptimal = 0;
    for (; attempts < 2000 && static_cast<int>(w.problems.size()) < kProblemsPerSize; ++attempts) {
        const auto mode = attempts % 2 == 0 ? BlendCase::Minimize : BlendCase::Maximize;
        LpProblem p = generator.blend(size.sources, size.elements, mode, true).programmes().first;
        const double ours = solveWithClpSolve(p);
        const PreparedProblem prepared = prepare(p);
        const double clp = solveWithClp(prepared);
        const double glpk = solveWithGlpk(prepared);
        const double tolerance = 1e-6 * std::max(1.0, std::abs(glpk));
        oursNotOptimal += std::isnan(ours) && !std::isnan(glpk);
        // ClpSolve's objective is single precision.
        if (std::isnan(ours) || std::abs(ours - glpk) > 100 * tolerance || std::abs(clp - glpk) > tolerance)
            continue;
        w.problems.push_back(std::move(p));
        w.prepared.push_back(prepared);
    }
    std::fprintf(
        stderr,
        "blend_%dx%d: %zu problems solved alike by all three, out of %d generated (%d optimal for GLPK "
        "but not for ClpSolve)\n",
        size.sources, size.elements, w.problems.size(), attempts, oursNotOptimal);
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
        if (w.problems.empty()) {
            state.SkipWithError("no common problems");
            return;
        }
        std::size_t k = 0;
        for (auto _ : state) {
            benchmark::DoNotOptimize(call(w, k));
            k = (k + 1) % w.problems.size();
        }
    })->Unit(benchmark::kMicrosecond);
}

} // namespace

void registerBenchmarks()
{
    for (std::size_t size = 0; size < std::size(kSizes); ++size) {
        const std::string name =
            "blend_" + std::to_string(kSizes[size].sources) + "x" + std::to_string(kSizes[size].elements);
        registerOne(name + "/ClpSolve", size,
                    [](const Workload& w, std::size_t k) { return solveWithClpSolve(w.problems[k]); });
        registerOne(name + "/CLP", size,
                    [](const Workload& w, std::size_t k) { return solveWithClp(w.prepared[k]); });
        registerOne(name + "/GLPK", size,
                    [](const Workload& w, std::size_t k) { return solveWithGlpk(w.prepared[k]); });
    }
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
