// One blast optimisation as the user runs it (load the selected blasts, build and solve both
// programmes, build the report) against the two solves alone, for 10, 50 and 200 blasts of a
// generated quarry. scripts/run-bench prints the share of the time spent outside the solver.

#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "database/Transaction.h"
#include "optimise/BlastOptimization.h"
#include "solver/ClpSolve.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <map>
#include <memory>

namespace kilnova {
namespace {

/// A quarry of limestone, marl and clay blasts with believable chemistry, the same on every run.
struct Quarry {
    QTemporaryDir dir;
    std::unique_ptr<ProjectDatabase> db;
    COptimizationParameters parameters;

    explicit Quarry(int blasts)
    {
        db = ProjectDatabase::create(dir.filePath("bench.kndb"));
        unsigned seed = 12345;
        auto uniform = [&seed](double low, double high) {
            seed = seed * 1103515245u + 12345u;
            return low + (high - low) * ((seed >> 8) & 0xFFFF) / 65535.0;
        };
        Transaction transaction(*db);
        RecordTable table(*db, Table::Blast);
        for (int i = 0; i < blasts; ++i) {
            const int kind = i % 3; // limestone, marl, clay
            Record b(Table::Blast);
            b.setValue("Name", QStringLiteral("Q%1").arg(i, 4, 10, QLatin1Char('0')));
            b.setValue("Quantity", uniform(5000, 60000));
            Analysis a = missingAnalysis();
            auto set = [&a](Element e, double v) {
                a[static_cast<std::size_t>(elementIndex(e))] = static_cast<float>(v);
            };
            set(Element::SiO2, kind == 0 ? uniform(2, 8) : kind == 1 ? uniform(12, 22) : uniform(45, 60));
            set(Element::Al2O3, kind == 0 ? uniform(0.5, 2) : kind == 1 ? uniform(3, 6) : uniform(12, 18));
            set(Element::Fe2O3, kind == 0 ? uniform(0.2, 1) : kind == 1 ? uniform(1.5, 3) : uniform(5, 8));
            set(Element::CaO, kind == 0 ? uniform(48, 53) : kind == 1 ? uniform(30, 42) : uniform(2, 8));
            set(Element::MgO, uniform(0.5, 2.5));
            set(Element::CostFactor, uniform(1, 3));
            b.setAnalysis(a);
            table.add(b);
            parameters.selectedSources << b.name();
        }
        transaction.commit();
        parameters.mode = COptimizationParameters::kMaximize;
        parameters.optimizedElement = "CaO";
        parameters.requestedTonnage = 5000.0 * blasts / 2;
        auto constrain = [this](Element e, double low, double high) {
            parameters.constraints[static_cast<std::size_t>(elementIndex(e))] = {
                low, high, ConstraintEntry::format(low, elementName(elementIndex(e)), high), 1};
        };
        constrain(Element::SiO2, 12, 16);
        constrain(Element::Al2O3, 2.5, 5);
        constrain(Element::Fe2O3, 1, 3);
        constrain(Element::MgO, 0, 2.5);
    }
};

std::map<int, std::unique_ptr<Quarry>>& quarries()
{
    static std::map<int, std::unique_ptr<Quarry>> all;
    return all;
}

Quarry& quarry(int blasts)
{
    auto& q = quarries()[blasts];
    if (!q)
        q = std::make_unique<Quarry>(blasts);
    return *q;
}

} // namespace

void optimizeWhole(benchmark::State& state, int blasts)
{
    Quarry& q = quarry(blasts);
    const BlastOptimization optimization(*q.db, q.parameters);
    for (auto _ : state) {
        const BlastOptimization::Result r = optimization.optimize();
        if (!r.outcome.solved)
            state.SkipWithError(r.outcome.message.toStdString().c_str());
        benchmark::DoNotOptimize(r.report.size());
    }
}

void solvesAlone(benchmark::State& state, int blasts)
{
    Quarry& q = quarry(blasts);
    const BlastOptimization::Result whole = BlastOptimization(*q.db, q.parameters).optimize();
    const OptimizationModel model;
    const LinearProgramme lp1 = model.build(whole.request, 1);
    const LinearProgramme lp2 = model.build(whole.request, 2);
    for (auto _ : state) {
        ClpSolve s1, s2;
        lp1.loadInto(s1);
        lp2.loadInto(s2);
        benchmark::DoNotOptimize(s1.Solve());
        benchmark::DoNotOptimize(s2.Solve());
    }
}

} // namespace kilnova

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    // Named "<case>/<implementation>": the whole Optimize first, its two solves as the peer.
    for (int blasts : {10, 50, 200}) {
        const std::string name = "Optimize" + std::to_string(blasts);
        benchmark::RegisterBenchmark((name + "/whole").c_str(), kilnova::optimizeWhole, blasts)
            ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark((name + "/solves").c_str(), kilnova::solvesAlone, blasts)
            ->Unit(benchmark::kMicrosecond);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    kilnova::quarries().clear(); // the databases close while Qt is still there
    return 0;
}
