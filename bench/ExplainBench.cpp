// The explanation of an infeasible blast problem (10 limits: five elements, each with a minimum and a
// maximum, SiO2 and LSF fighting) against one ordinary optimisation of the same problem, for 20, 50
// and 200 blasts of a generated quarry.

#include "GeneratedQuarry.h"
#include "optimise/Explainer.h"

#include <benchmark/benchmark.h>

namespace kilnova {
namespace {

void optimize(benchmark::State& state)
{
    const BlendProblem p = GeneratedQuarry::conflicting(static_cast<int>(state.range(0)));
    const OptimizationModel model;
    for (auto _ : state)
        benchmark::DoNotOptimize(model.run(p));
}

void explain(benchmark::State& state)
{
    const BlendProblem p = GeneratedQuarry::conflicting(static_cast<int>(state.range(0)));
    const OptimizationModel model;
    const OptimizationOutcome outcome = model.run(p);
    if (outcome.solved) {
        state.SkipWithError("the generated problem is not infeasible");
        return;
    }
    int conflicting = 0;
    for (auto _ : state) {
        const Explanation e = Explainer(model).explain(outcome, elementNames());
        conflicting = static_cast<int>(e.conflict.size());
        benchmark::DoNotOptimize(e);
    }
    state.counters["conflicting"] = conflicting;
}

} // namespace
} // namespace kilnova

// Ours first in each case: the diagnosis, then one optimisation as the peer.
BENCHMARK(kilnova::explain)
    ->Name("Explain/diagnosis")
    ->Arg(20)
    ->Arg(50)
    ->Arg(200)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(kilnova::optimize)
    ->Name("Explain/optimize")
    ->Arg(20)
    ->Arg(50)
    ->Arg(200)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
