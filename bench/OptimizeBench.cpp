// One blast optimisation as the user runs it (load the selected blasts, build and solve both
// programmes, build the report) against the two solves alone, for 10, 50 and 200 blasts of a
// generated quarry; at 2,000 blasts with its debug dump against the same run without it; and
// kilnova-cli optimize blasts over whole quarries of 1,000, 5,000 and 20,000 blasts as whole
// processes (load, build, solve, report, dump), with their peak memory; at 2,000 blasts the same
// command with its dump against the command without it. scripts/run-bench prints
// the share of the time spent outside the solver and the dump's share of its run.

#include "ChildProcess.h"
#include "GeneratedQuarry.h"

#include "database/ProjectDatabase.h"
#include "optimise/BlastOptimization.h"
#include "project/ProjectFile.h"
#include "project/ProjectSettings.h"
#include "solver/ClpSolve.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <map>
#include <memory>

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

/// kilnova-cli optimize blasts on the whole quarry, timed by the child's CPU time. Without the dump,
/// its folder lies under a plain file, so that the dump cannot be opened and is skipped.
void commandLine(benchmark::State& state, int blasts, double tonnage, bool dump)
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
    bench::ChildCost cost;
    double seconds = 0.0;
    int failed = 0;
    for (auto _ : state) {
        cost = bench::runChild({KILNOVA_CLI, "optimize", "blasts", project},
                               q.dir.filePath("report.txt").toStdString(), {data, home});
        state.SetIterationTime(cost.cpuSeconds);
        seconds += cost.cpuSeconds;
        failed += cost.status != 0;
    }
    if (failed > 0)
        state.SkipWithError("kilnova-cli optimize failed");
    state.counters["child_cpu_us"] = seconds / static_cast<double>(state.iterations()) * 1e6;
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
    benchmark::RegisterBenchmark("Optimize2000/dump", kilnova::optimizeWhole, 2000, true)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("Optimize2000/nodump", kilnova::optimizeWhole, 2000, false)
        ->Unit(benchmark::kMillisecond);
    // Whole quarries through the command line: a bed of 250,000 t, and at 5,000 blasts a fifth of the
    // quarry (12.5 Mt), which the classic method calls infeasible and the second method solves.
    const std::pair<int, double> runs[] = {{1000, 250000}, {5000, 250000}, {20000, 250000}, {5000, 12500000}};
    for (const auto& [blasts, tonnes] : runs) {
        const std::string name = "optimize_cli_" + std::to_string(blasts) + (tonnes > 1e6 ? "_fifth" : "");
        benchmark::RegisterBenchmark((name + "/kilnova-cli").c_str(), kilnova::commandLine, blasts, tonnes,
                                     true)
            ->UseManualTime()
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
    }
    // The dump's share of a whole run through the command line, as a user meets it.
    for (const bool dump : {true, false}) {
        benchmark::RegisterBenchmark(dump ? "optimize_cli_2000/kilnova-cli" : "optimize_cli_2000/nodump",
                                     kilnova::commandLine, 2000, 250000.0, dump)
            ->UseManualTime()
            ->Iterations(3)
            ->Unit(benchmark::kMillisecond);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    kilnova::quarries().clear(); // the databases close while Qt is still there
    return 0;
}
