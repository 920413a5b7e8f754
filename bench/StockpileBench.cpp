// One stockpile optimisation as the user runs it (load the selected stockpiles and additives, build
// and solve both programmes, build the report) against the two solves alone, for 10, 50 and 200
// stockpiles and 5 additives, with limits on 6 elements of the crude and 6 of what stays in the
// piles. scripts/run-bench prints the share of the time spent outside the solver.

#include "FixtureCache.h"

#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "database/Transaction.h"
#include "optimise/StockpileOptimization.h"
#include "solver/ClpSolve.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <memory>

namespace kilnova {
namespace {

void setValue(Analysis& a, Element e, double v)
{
    a[static_cast<std::size_t>(elementIndex(e))] = static_cast<float>(v);
}

/// Beds and quarry piles of limestone, marl and clay, and five corrective additives, the same on
/// every run.
struct Yard {
    QTemporaryDir dir;
    std::unique_ptr<ProjectDatabase> db;
    CSTKOptParameters parameters;

    explicit Yard(int piles)
    {
        db = ProjectDatabase::create(dir.filePath("bench.kndb"));
        unsigned seed = 4242;
        auto uniform = [&seed](double low, double high) {
            seed = seed * 1103515245u + 12345u;
            return low + (high - low) * ((seed >> 8) & 0xFFFF) / 65535.0;
        };
        Transaction transaction(*db);
        double total = 0;
        for (int i = 0; i < piles; ++i) {
            const int kind = i % 3; // limestone, marl, clay
            Record r(Table::Stockpile);
            r.setValue("Name", QStringLiteral("P%1").arg(i, 4, 10, QLatin1Char('0')));
            r.setValue("Source", kind == 0 ? "Limestone" : kind == 1 ? "Marl" : "Clay");
            const double quantity = uniform(2000, 30000);
            total += quantity;
            r.setValue("Quantity", quantity);
            Analysis a = missingAnalysis();
            setValue(a, Element::SiO2,
                     kind == 0   ? uniform(2, 8)
                     : kind == 1 ? uniform(12, 22)
                                 : uniform(45, 60));
            setValue(a, Element::Al2O3,
                     kind == 0   ? uniform(0.5, 2)
                     : kind == 1 ? uniform(3, 6)
                                 : uniform(12, 18));
            setValue(a, Element::Fe2O3,
                     kind == 0   ? uniform(0.2, 1)
                     : kind == 1 ? uniform(1.5, 3)
                                 : uniform(5, 8));
            setValue(a, Element::CaO,
                     kind == 0   ? uniform(48, 53)
                     : kind == 1 ? uniform(30, 42)
                                 : uniform(2, 8));
            setValue(a, Element::MgO, uniform(0.5, 2.5));
            setValue(a, Element::LOI,
                     kind == 0   ? uniform(40, 43)
                     : kind == 1 ? uniform(28, 35)
                                 : uniform(6, 12));
            setValue(a, Element::CostFactor, uniform(1, 3));
            r.setAnalysis(a);
            RecordTable(*db, Table::Stockpile).add(r);
            parameters.sources << r.name() << r.text("Source");
        }
        parameters.stockpileCount = piles;
        //                          SiO2 Al2O3 Fe2O3 CaO  MgO  LOI  cost
        const double additives[5][7] = {{92, 3, 1.3, 0.9, 0.3, 1.2, 14},
                                        {8, 3, 78, 1.5, 0.6, 4.8, 48},
                                        {8, 48, 16, 0.6, 0.3, 24, 62},
                                        {0.9, 0.25, 0.12, 54.6, 0.45, 43.3, 9.5},
                                        {53, 26, 7, 4.5, 1.6, 3.2, 18}};
        const char* names[5] = {"Sand", "Iron ore", "Bauxite", "High-grade limestone", "Fly ash"};
        for (int i = 0; i < 5; ++i) {
            Record r(Table::Additives);
            r.setValue("Name", names[i]);
            Analysis a = missingAnalysis();
            const Element elements[7] = {Element::SiO2, Element::Al2O3, Element::Fe2O3,     Element::CaO,
                                         Element::MgO,  Element::LOI,   Element::CostFactor};
            for (int k = 0; k < 7; ++k)
                setValue(a, elements[k], additives[i][k]);
            r.setAnalysis(a);
            RecordTable(*db, Table::Additives).add(r);
            parameters.sources << names[i];
        }
        transaction.commit();

        parameters.mode = -1;
        parameters.optimizedElement = "Cost Factor";
        parameters.requestedTonnage = total / 16;
        auto limit = [](std::array<CSTKOptParameters::Entry, kElementCount>& list, Element e, double low,
                        double high) {
            list[static_cast<std::size_t>(elementIndex(e))] = {
                low, high, ConstraintEntry::format(low, elementName(elementIndex(e)), high), 1, 0};
        };
        limit(parameters.productConstraints, Element::SiO2, 12, 16);
        limit(parameters.productConstraints, Element::Al2O3, 2.5, 5);
        limit(parameters.productConstraints, Element::Fe2O3, 1, 3);
        limit(parameters.productConstraints, Element::CaO, 40, 46);
        limit(parameters.productConstraints, Element::MgO, 0, 2.5);
        limit(parameters.productConstraints, Element::LOI, 30, 38);
        limit(parameters.remainderConstraints, Element::SiO2, 5, 30);
        limit(parameters.remainderConstraints, Element::Al2O3, 1, 10);
        limit(parameters.remainderConstraints, Element::Fe2O3, 0.5, 5);
        limit(parameters.remainderConstraints, Element::CaO, 20, 50);
        limit(parameters.remainderConstraints, Element::MgO, 0, 3);
        limit(parameters.remainderConstraints, Element::LOI, 15, 42);
    }
};

Yard& yard(int piles)
{
    return fixture<Yard>(piles);
}

} // namespace

void optimizeWhole(benchmark::State& state, int piles)
{
    Yard& y = yard(piles);
    const StockpileOptimization optimization(*y.db, y.parameters);
    for (auto _ : state) {
        const StockpileOptimization::Result r = optimization.optimize();
        if (!r.outcome.solved) {
            state.SkipWithError(r.outcome.message.toStdString().c_str());
            break;
        }
        benchmark::DoNotOptimize(r.report.size());
    }
}

void solvesAlone(benchmark::State& state, int piles)
{
    Yard& y = yard(piles);
    const StockpileOptimization::Result whole = StockpileOptimization(*y.db, y.parameters).optimize();
    const OptimizationModel model;
    const LinearProgramme lp1 = model.build(whole.problem, 1);
    const LinearProgramme lp2 = model.build(whole.problem, 2);
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
    for (int piles : {10, 50, 200}) {
        const std::string name = "Stockpiles" + std::to_string(piles);
        benchmark::RegisterBenchmark((name + "/whole").c_str(), kilnova::optimizeWhole, piles)
            ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark((name + "/solves").c_str(), kilnova::solvesAlone, piles)
            ->Unit(benchmark::kMicrosecond);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    kilnova::fixtures<kilnova::Yard>().clear(); // the databases close while Qt is still there
    return 0;
}
