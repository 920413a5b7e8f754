// One blast optimisation as the user runs it (load the selected blasts, build and solve both
// programmes, build the report) against the two solves alone, for 10, 50 and 200 blasts of a
// generated quarry; the same for one clinker optimisation from 5, 20 and 60 sources (crudes and two
// coals); at 2,000 blasts with its debug dump against the same run without it; and
// kilnova-cli optimize blasts over whole quarries of 1,000, 5,000 and 20,000 blasts as whole
// processes (load, build, solve, report, dump), with their peak memory; at 2,000 blasts the same
// command with its dump against the command without it. scripts/run-bench prints
// the share of the time spent outside the solver and the dump's share of its run.
//
// The dump is written on a thread of its own while the second programme is solved, so its share is
// measured twice: in CPU time of every thread (what the machine spends) and in wall time (what the
// user waits for).

#include "ChildProcess.h"
#include "FixtureCache.h"
#include "GeneratedQuarry.h"

#include "chemistry/ChemistryFunctions.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "database/Transaction.h"
#include "optimise/BlastOptimization.h"
#include "optimise/ClinkerOptimization.h"
#include "project/ProjectFile.h"
#include "project/ProjectSettings.h"
#include "solver/ClpSolve.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <map>
#include <memory>
#include <tuple>

namespace kilnova {
namespace {

/// A generated quarry in a project of its own, with settings that select every blast.
struct Quarry {
    QTemporaryDir dir;
    std::unique_ptr<ProjectDatabase> db;
    QStringList names;
    std::string project;

    explicit Quarry(int blasts)
    {
        db = ProjectDatabase::create(dir.filePath("bench.kndb"));
        names = GeneratedQuarry::fill(*db, blasts);
    }

    /// A pre-blending bed of `tonnage` tonnes.
    COptimizationParameters parameters(double tonnage) const
    {
        return GeneratedQuarry::parameters(names, tonnage, COptimizationParameters::kMaximize);
    }

    /// The project kilnova-cli opens: this database and these settings.
    const std::string& projectFor(double tonnage)
    {
        ProjectSettings settings;
        settings.databasePath = dir.filePath("bench.kndb");
        settings.blastOptimization = parameters(tonnage);
        ProjectFile::save(settings, dir.filePath("bench.knv"));
        project = dir.filePath("bench.knv").toStdString();
        return project;
    }
};

/// Raw meals around a plant's usual one and two coals, the same on every run; least cost of 3000 t of
/// clinker with the moduli and alkalis where plants keep them.
struct Kiln {
    QTemporaryDir dir;
    std::unique_ptr<ProjectDatabase> db;
    CClinkerOptParameters parameters;
    ClinkerProcessParameters process{0.5f, 80, 70, 85, 780, 100, 1.2f};

    explicit Kiln(int sources)
    {
        db = ProjectDatabase::create(dir.filePath("bench.kndb"));
        unsigned seed = 54321;
        auto uniform = [&seed](double low, double high) {
            seed = seed * 1103515245u + 12345u;
            return low + (high - low) * ((seed >> 8) & 0xFFFF) / 65535.0;
        };
        Transaction transaction(*db);
        RecordTable crudes(*db, Table::Crude);
        for (int i = 0; i + 2 < sources; ++i) {
            Record r(Table::Crude);
            r.setValue("Name", QStringLiteral("M%1").arg(i, 3, 10, QLatin1Char('0')));
            r.setValue("Source", QStringLiteral("Mill %1").arg(i % 2 + 1));
            r.setValue("Quantity", uniform(3000, 9000));
            Analysis a = missingAnalysis();
            auto set = [&a](Element e, double v) {
                a[static_cast<std::size_t>(elementIndex(e))] = static_cast<float>(v);
            };
            // Limier and leaner meals in turn, so that any two of them can be blended to the LSF.
            const bool limier = i % 2 == 0;
            set(Element::SiO2, limier ? uniform(12.5, 13.5) : uniform(14, 15));
            set(Element::Al2O3, limier ? uniform(2.9, 3.2) : uniform(3.3, 3.6));
            set(Element::Fe2O3, limier ? uniform(1.9, 2.1) : uniform(2.1, 2.4));
            set(Element::CaO, limier ? uniform(44, 45) : uniform(42, 43));
            set(Element::MgO, uniform(0.8, 1.4));
            set(Element::LOI, uniform(34.8, 35.8));
            set(Element::SO3, uniform(0.1, 0.3));
            set(Element::K2O, uniform(0.4, 0.7));
            set(Element::Na2O, uniform(0.08, 0.15));
            set(Element::CostFactor, uniform(3.8, 4.4));
            computeDerivedQuantities(a, 0.0);
            r.setAnalysis(a);
            crudes.add(r);
            parameters.crudeSources << SOURCE::listText(r.name(), r.text("Source"));
        }
        for (auto [name, ash, btu, cost] :
             {std::tuple{"Coal A", 11.8, 12400.0, 96.0}, {"Coal B", 14.6, 11650.0, 84.0}}) {
            Record c(Table::Coal);
            c.setValue("Name", name);
            c.setValue("Quantity", 20000.0);
            c.setValue("Ash", ash);
            c.setValue("BTU", btu);
            Analysis a = missingAnalysis();
            for (auto [e, v] : {std::pair{Element::SiO2, 53.0},
                                {Element::Al2O3, 26.0},
                                {Element::Fe2O3, 8.0},
                                {Element::CaO, 4.5},
                                {Element::MgO, 1.5},
                                {Element::LOI, 2.0},
                                {Element::SO3, 1.5},
                                {Element::K2O, 1.7},
                                {Element::Na2O, 0.5},
                                {Element::CostFactor, cost}})
                a[static_cast<std::size_t>(elementIndex(e))] = static_cast<float>(v);
            computeDerivedQuantities(a, 0.0);
            c.setAnalysis(a);
            RecordTable(*db, Table::Coal).add(c);
            parameters.coalSources << name;
        }
        transaction.commit();
        parameters.mode = CClinkerOptParameters::kMinimize;
        parameters.optimizedElement = "Cost Factor";
        parameters.requestedTonnage = 3000;
        auto constrain = [this](Element e, double low, double high) {
            parameters.constraints[static_cast<std::size_t>(elementIndex(e))] = {
                low, high, ConstraintEntry::format(low, elementName(elementIndex(e)), high), 1};
        };
        constrain(Element::MS, 2.2, 2.8);
        constrain(Element::MA, 1.3, 2.0);
        constrain(Element::LSF, 0.92, 0.98);
        constrain(Element::NaEq, 0, 1.2);
    }
};

Kiln& kiln(int sources)
{
    return fixture<Kiln>(sources);
}

Quarry& quarry(int blasts)
{
    return fixture<Quarry>(blasts);
}

/// A bed of 10,000 t per ten blasts, up to 250,000 t: what a plant stacks, and a tonnage the classic
/// method's single-precision phase-1 objective still resolves.
double bedTonnes(int blasts)
{
    return std::min(250000.0, 1000.0 * blasts);
}

} // namespace

void optimizeWhole(benchmark::State& state, int blasts, bool dump)
{
    Quarry& q = quarry(blasts);
    const BlastOptimization optimization(*q.db, q.parameters(bedTonnes(blasts)));
    const QString debugFile = dump ? q.dir.filePath("debug.txt") : QString();
    for (auto _ : state) {
        const BlastOptimization::Result r = optimization.optimize(debugFile);
        if (!r.outcome.solved)
            state.SkipWithError(r.outcome.message.toStdString().c_str());
        benchmark::DoNotOptimize(r.report.size());
    }
}

void solvesAlone(benchmark::State& state, int blasts)
{
    Quarry& q = quarry(blasts);
    const BlastOptimization::Result whole =
        BlastOptimization(*q.db, q.parameters(bedTonnes(blasts))).optimize();
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

void clinkerWhole(benchmark::State& state, int sources)
{
    Kiln& k = kiln(sources);
    const ClinkerOptimization optimization(*k.db, k.parameters, k.process,
                                           static_cast<double>(k.process.FreeLime));
    for (auto _ : state) {
        const ClinkerOptimization::Result r = optimization.optimize();
        if (!r.outcome.solved)
            state.SkipWithError(r.outcome.message.toStdString().c_str());
        benchmark::DoNotOptimize(r.report.size());
    }
}

void clinkerSolves(benchmark::State& state, int sources)
{
    Kiln& k = kiln(sources);
    const ClinkerOptimization::Result whole =
        ClinkerOptimization(*k.db, k.parameters, k.process, static_cast<double>(k.process.FreeLime))
            .optimize();
    const ClinkerModel model;
    const BlendProblem problem = model.problem(whole.request);
    const LinearProgramme lp1 = model.shared().build(problem, 1);
    const LinearProgramme lp2 = model.shared().build(problem, 2);
    for (auto _ : state) {
        ClpSolve s1, s2;
        lp1.loadInto(s1);
        lp2.loadInto(s2);
        benchmark::DoNotOptimize(s1.Solve());
        benchmark::DoNotOptimize(s2.Solve());
    }
}

/// kilnova-cli optimize blasts on the whole quarry, timed by the child's CPU time (or its wall time).
/// Without the dump, its folder lies under a plain file, so that the dump cannot be opened and is
/// skipped.
void commandLine(benchmark::State& state, int blasts, double tonnage, bool dump, bool wall)
{
    Quarry& q = quarry(blasts);
    const std::string project = q.projectFor(tonnage);
    QFile blocker(q.dir.filePath("blocker"));
    if (!dump && !blocker.exists() && blocker.open(QIODevice::WriteOnly))
        blocker.close();
    const std::string data =
        "XDG_DATA_HOME=" +
        q.dir.filePath(dump ? QStringLiteral("data") : QStringLiteral("blocker/data")).toStdString();
    const std::string home = "HOME=" + q.dir.path().toStdString();
    const auto run = [&] {
        return bench::runChild({KILNOVA_CLI, "optimize", "blasts", project},
                               q.dir.filePath("report.txt").toStdString(), {data, home});
    };
    // Only a user's first run creates the debug file; the runs timed are the ones after it.
    if (dump && !QFile::exists(q.dir.filePath(QStringLiteral("data/Kilnova/debug.txt"))))
        run();
    bench::ChildCost cost;
    double seconds = 0.0;
    int failed = 0;
    for (auto _ : state) {
        cost = run();
        const double taken = wall ? cost.wallSeconds : cost.cpuSeconds;
        state.SetIterationTime(taken);
        seconds += taken;
        failed += cost.status != 0;
    }
    if (failed > 0)
        state.SkipWithError("kilnova-cli optimize failed");
    state.counters[wall ? "child_wall_us" : "child_cpu_us"] = seconds / static_cast<double>(state.iterations()) * 1e6;
    state.counters["peak_MB"] = static_cast<double>(cost.peakKilobytes) / 1024.0;
}

} // namespace kilnova

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    // Named "<case>/<implementation>": the whole Optimize first, its two solves as the peer.
    for (int blasts : {10, 50, 200}) {
        const std::string name = "Optimize" + std::to_string(blasts);
        benchmark::RegisterBenchmark((name + "/whole").c_str(), kilnova::optimizeWhole, blasts, false)
            ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark((name + "/solves").c_str(), kilnova::solvesAlone, blasts)
            ->Unit(benchmark::kMicrosecond);
    }
    for (int sources : {5, 20, 60}) {
        const std::string name = "Clinker" + std::to_string(sources);
        benchmark::RegisterBenchmark((name + "/whole").c_str(), kilnova::clinkerWhole, sources)
            ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark((name + "/solves").c_str(), kilnova::clinkerSolves, sources)
            ->Unit(benchmark::kMicrosecond);
    }
    for (const bool wall : {false, true}) {
        const std::string name = wall ? "Optimize2000_wall" : "Optimize2000";
        for (const bool dump : {true, false}) {
            benchmark::internal::Benchmark* b =
                benchmark::RegisterBenchmark((name + (dump ? "/dump" : "/nodump")).c_str(),
                                             kilnova::optimizeWhole, 2000, dump)
                    ->Unit(benchmark::kMillisecond);
            if (wall)
                b->UseRealTime();
            else
                b->MeasureProcessCPUTime();
        }
    }
    // Whole quarries through the command line: a bed of 250,000 t, and at 5,000 blasts a fifth of the
    // quarry (12.5 Mt), which the classic method calls infeasible and the second method solves.
    const std::pair<int, double> runs[] = {{1000, 250000}, {5000, 250000}, {20000, 250000}, {5000, 12500000}};
    for (const auto& [blasts, tonnes] : runs) {
        const std::string name = "optimize_cli_" + std::to_string(blasts) + (tonnes > 1e6 ? "_fifth" : "");
        benchmark::RegisterBenchmark((name + "/kilnova-cli").c_str(), kilnova::commandLine, blasts, tonnes,
                                     true, false)
            ->UseManualTime()
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
    }
    // The dump's share of a whole run through the command line, as a user meets it.
    for (const bool wall : {false, true}) {
        const std::string name = wall ? "optimize_cli_2000_wall" : "optimize_cli_2000";
        for (const bool dump : {true, false}) {
            benchmark::RegisterBenchmark((name + (dump ? "/kilnova-cli" : "/nodump")).c_str(),
                                         kilnova::commandLine, 2000, 250000.0, dump, wall)
                ->UseManualTime()
                ->Iterations(5)
                ->Unit(benchmark::kMillisecond);
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    kilnova::fixtures<kilnova::Quarry>().clear(); // the databases close while Qt is still there
    kilnova::fixtures<kilnova::Kiln>().clear();
    return 0;
}
