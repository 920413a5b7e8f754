// The explanation of an infeasible blast problem (10 limits: five elements, each with a minimum and a
// maximum, SiO2 and LSF fighting) against one ordinary optimisation of the same problem, for 20, 50
// and 200 blasts of a generated quarry.

#include "optimise/Explainer.h"

#include <benchmark/benchmark.h>

namespace kilnova {
namespace {

BlendProblem infeasibleQuarry(int blasts)
{
    unsigned seed = 4242;
    auto uniform = [&seed](double low, double high) {
        seed = seed * 1103515245u + 12345u;
        return low + (high - low) * ((seed >> 8) & 0xFFFF) / 65535.0;
    };
    OptimizationRequest r;
    for (int i = 0; i < blasts; ++i) {
        const int kind = i % 3; // limestone, marl, clay
        Analysis a = missingAnalysis();
        auto set = [&a](Element e, double v) {
            a[static_cast<std::size_t>(elementIndex(e))] = static_cast<float>(v);
        };
        set(Element::SiO2, kind == 0 ? uniform(2, 8) : kind == 1 ? uniform(12, 22) : uniform(45, 60));
        set(Element::Al2O3, kind == 0 ? uniform(0.5, 2) : kind == 1 ? uniform(3, 6) : uniform(12, 18));
        set(Element::Fe2O3, kind == 0 ? uniform(0.2, 1) : kind == 1 ? uniform(1.5, 3) : uniform(5, 8));
        set(Element::CaO, kind == 0 ? uniform(48, 53) : kind == 1 ? uniform(30, 42) : uniform(2, 8));
        set(Element::MgO, uniform(0.5, 2.5));
        set(Element::LSF, 1.0);
        r.sources.push_back({QStringLiteral("Q%1").arg(i), uniform(5000, 60000), a});
    }
    r.mode = 1;
    r.element = elementIndex(Element::CaO);
    r.requestedTonnage = 5000.0 * blasts / 2;
    auto limit = [&r](Element e, double minimum, double maximum) {
        r.constraints[static_cast<std::size_t>(elementIndex(e))] = {minimum, maximum, QString(), 1};
    };
    // Low silica wants limestone, a low lime saturation wants clay: they cannot both hold.
    limit(Element::SiO2, 0, 12);
    limit(Element::LSF, 0, 0.7);
    limit(Element::Al2O3, 0, 10);
    limit(Element::Fe2O3, 0, 5);
    limit(Element::MgO, 0, 3);
    return OptimizationModel::problemOf(r);
}

void optimize(benchmark::State& state)
{
    const BlendProblem p = infeasibleQuarry(static_cast<int>(state.range(0)));
    const OptimizationModel model;
    for (auto _ : state)
        benchmark::DoNotOptimize(model.run(p));
}

void explain(benchmark::State& state)
{
    const BlendProblem p = infeasibleQuarry(static_cast<int>(state.range(0)));
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
