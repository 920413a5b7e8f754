// The pair search of the blast combination analysis against a straightforward search that gathers
// the inventory left by each pair from every record of the series again (one pass over the series
// per pair). Both build the same report, byte for byte; the workload checks it before timing.
// Then the analysis as a user runs it, `kilnova-cli combine` on a project holding the series, its
// report streamed to a file, as a whole process against the search alone (the search and its report
// built in memory and dropped).
// Names are "<case>/<implementation>"; scripts/run-bench divides the first implementation's time
// by each peer's.

#include "ChildProcess.h"

#include "chemistry/ChemEquationCoefficients.h"
#include "chemistry/ChemistryFunctions.h"
#include "combine/CCombinationParameters.h"
#include "combine/CombinationFunctions.h"
#include "combine/CombinationReport.h"
#include "combine/CombinationRequest.h"
#include "combine/CombinationSearch.h"
#include "common/ReportSink.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "database/Transaction.h"
#include "project/ProjectFile.h"
#include "project/ProjectSettings.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kilnova::bench {
namespace {

/// Series for the search against the reference, and for the command line against the search.
constexpr int kSizes[] = {200, 1000, 5000};
/// Above this the reference search (cubic in the series) would run for minutes.
constexpr int kLargestReference = 1000;
/// The whole quarry, with a restriction that keeps the successful pairs few.
constexpr int kQuarry = 20000;

/// Text built and dropped: the search with its report, written nowhere.
class Discard final : public ReportSink {
public:
    void write(std::string_view text) override { bytes += text.size(); }
    std::size_t bytes = 0;
};

/// The whole text, for comparing two searches.
class Collect final : public ReportSink {
public:
    void write(std::string_view text) override { text_.append(text); }
    std::string text_;
};

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
        b.Name = QStringLiteral("Blast %1").arg(i + 1, 5, 10, QLatin1Char('0'));
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
/// exceeds 48.5, a few in a hundred. For the whole quarry instead: ranked by the combined CaO
/// closest to 49.9 and kept only between 49.8 and 50, a few pairs in ten thousand.
CCombinationParameters makeParameters(const std::vector<BLASTSD>& series, bool few)
{
    CCombinationParameters p;
    p.targetTonnage = 4000;
    p.targets[at(Element::SiO2)] = {19, QStringLiteral("SiO2"), 1};
    p.quantityRestriction = 1;
    if (few) {
        p.classificationMode = CCombinationParameters::kCombinedGradeClosest;
        p.combinedGradeProperty = QStringLiteral("CaO");
        p.combinedGradeTarget = 49.9f;
        p.combinedRestriction = 1;
        p.combinedRestrictionProperty = QStringLiteral("CaO");
        p.combinedLowerBound = 49.8f;
        p.combinedUpperBound = 50.0f;
        return p;
    }
    p.classificationMode = CCombinationParameters::kInventoryGradeClosest;
    p.inventoryGradeProperty = QStringLiteral("CaO");
    p.inventoryGradeTarget = 45;
    double quantity = 0.0;
    double lime = 0.0;
    for (const BLASTSD& b : series) {
        quantity += b.Quantity;
        lime += b.Quantity * static_cast<double>(b.Values[at(Element::CaO)]);
    }
    p.inventoryRestriction = 1;
    p.inventoryRestrictionProperty = QStringLiteral("CaO");
    p.inventoryLowerBound = 0.0f;
    p.inventoryUpperBound =
        static_cast<float>((lime - p.targetTonnage * 48.5) / (quantity - p.targetTonnage));
    return p;
}

bool isAveraged(int p)
{
    return p <= elementIndex(Element::P2O5) || p == elementIndex(Element::CostFactor);
}

/// The search written out plainly: the same rules and arithmetic, but the inventory of every pair
/// is summed again over the whole series.
CombinationOutcome referenceSearch(const CombinationRequest& r, const std::vector<BLASTSD>& series,
                                   ReportSink& sink)
{
    const int n = static_cast<int>(series.size());
    const int p0 = *r.targetProperty;
    const double t = static_cast<float>(r.targetValue);
    CombinationOutcome outcome;
    outcome.seriesSize = n;
    CombinationReport report(r, sink);
    report.addHeader(n);
    double best = 1e39;
    SuccessfulPair bestPair;
    Analysis bestCombined{};
    std::vector<QByteArray> names;
    for (const BLASTSD& b : series)
        names.push_back(b.Name.toUtf8());
    const auto nameOf = [&names](int index) {
        const QByteArray& name = names[static_cast<std::size_t>(index)];
        return std::string_view(name.constData(), static_cast<std::size_t>(name.size()));
    };
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
            const SuccessfulPair found{{i, j}, x};
            if (std::fabs(M[q] - r.rankingTarget) < best) {
                best = std::fabs(I[q] - r.rankingTarget);
                outcome.bestIndex = static_cast<int>(outcome.pairs.size());
                bestPair = found;
                bestCombined = M;
            }
            outcome.pairs.push_back(found);
            report.addSuccessfulPair(static_cast<long>(outcome.pairs.size()), {nameOf(i), nameOf(j)}, x,
                                     {pair[0]->Quantity, pair[1]->Quantity}, S, best, M);
        }
    }
    const std::array<std::string_view, 2> bestNames =
        outcome.bestIndex >= 0 ? std::array{nameOf(bestPair.blasts[0]), nameOf(bestPair.blasts[1])}
                               : std::array<std::string_view, 2>{};
    report.addBestSolution(outcome.bestIndex + 1, bestNames, bestPair.tonnes, 0.0, bestCombined);
    if (!outcome.pairs.empty()) {
        report.addTotal(static_cast<long>(outcome.pairs.size()));
        report.finish();
    }
    return outcome;
}

/// A series, its request, and the project that holds it for the command line.
struct Workload {
    CombinationRequest request;
    std::vector<BLASTSD> series;
    bool sameReports = true;
    std::unique_ptr<QTemporaryDir> folder;
    std::string project;
};

/// The series as the Blast and stdBlast tables, and the settings in a project beside them.
void writeProject(Workload& w, const CCombinationParameters& parameters)
{
    w.folder = std::make_unique<QTemporaryDir>();
    const QString database = w.folder->filePath(QStringLiteral("quarry.kndb"));
    {
        std::unique_ptr<ProjectDatabase> db = ProjectDatabase::create(database);
        Transaction transaction(*db);
        RecordTable blasts(*db, Table::Blast);
        RecordTable deviations(*db, Table::StdBlast);
        for (const BLASTSD& b : w.series) {
            Record r(Table::Blast);
            r.setValue("Name", b.Name);
            r.setValue("Quantity", b.Quantity);
            r.setAnalysis(b.Values);
            blasts.add(r);
            Record d(Table::StdBlast);
            d.setValue("Name", b.Name);
            deviations.add(d);
        }
        transaction.commit();
    }
    ProjectSettings settings;
    settings.databasePath = database;
    settings.combination = parameters;
    const QString project = w.folder->filePath(QStringLiteral("quarry.knv"));
    ProjectFile::save(settings, project);
    w.project = project.toStdString();
}

Workload makeWorkload(int n)
{
    Workload w;
    w.series = makeSeries(n);
    const CCombinationParameters parameters = makeParameters(w.series, n == kQuarry);
    w.request = std::get<CombinationRequest>(CombinationRequest::fromParameters(parameters, 1));
    Discard sizing;
    const CombinationOutcome ours = CombinationSearch(w.request, w.series).run(sizing);
    std::fprintf(stderr, "%d blasts: %lld pairs, %zu successful, report %zu bytes\n", n,
                 static_cast<long long>(n) * (n - 1) / 2, ours.pairs.size(), sizing.bytes);
    if (n <= kLargestReference) {
        Collect mine, reference;
        CombinationSearch(w.request, w.series).run(mine);
        referenceSearch(w.request, w.series, reference);
        w.sameReports = mine.text_ == reference.text_;
        if (!w.sameReports)
            std::fprintf(stderr, "%d blasts: the two searches built different reports\n", n);
    }
    if (n >= 5000)
        writeProject(w, parameters);
    return w;
}

// Built on first use (outside the timed loop), so a filtered run builds only what it needs.
const Workload& workload(int n)
{
    static std::map<int, Workload> cache;
    auto found = cache.find(n);
    if (found == cache.end())
        found = cache.emplace(n, makeWorkload(n)).first;
    return found->second;
}

template <typename Call> void registerOne(const std::string& name, int n, Call call)
{
    benchmark::RegisterBenchmark(name.c_str(), [n, call](benchmark::State& state) {
        const Workload& w = workload(n);
        if (!w.sameReports) {
            state.SkipWithError("the reports differ");
            return;
        }
        for (auto _ : state)
            benchmark::DoNotOptimize(call(w));
    })->Unit(benchmark::kMillisecond);
}

/// kilnova-cli combine over the whole series, its report to a file; timed by the child's CPU time.
void registerCommandLine(const std::string& name, int n)
{
    benchmark::RegisterBenchmark(
        name.c_str(),
        [n](benchmark::State& state) {
            const Workload& w = workload(n);
            const std::string report = w.folder->filePath(QStringLiteral("report.txt")).toStdString();
            ChildCost cost;
            for (auto _ : state) {
                cost = runChild({KILNOVA_CLI, "combine", w.project, "--all"}, report);
                state.SetIterationTime(cost.cpuSeconds);
            }
            if (cost.status != 0)
                state.SkipWithError("kilnova-cli combine failed");
            state.counters["child_cpu_us"] = cost.cpuSeconds * 1e6;
            state.counters["peak_MB"] = static_cast<double>(cost.peakKilobytes) / 1024.0;
            std::remove(report.c_str());
        })
        ->UseManualTime()
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
}

} // namespace

void registerBenchmarks()
{
    for (const int n : kSizes) {
        const std::string name = "combine_" + std::to_string(n);
        registerOne(name + "/CombinationSearch", n, [](const Workload& w) {
            Discard report;
            return CombinationSearch(w.request, w.series).run(report).pairs.size();
        });
        if (n <= kLargestReference)
            registerOne(name + "/reference", n, [](const Workload& w) {
                Discard report;
                return referenceSearch(w.request, w.series, report).pairs.size();
            });
        else
            std::printf(
                "%s/reference: not run; gathering the inventory from all %d blasts for each of the %lld "
                "pairs takes minutes\n",
                name.c_str(), n, static_cast<long long>(n) * (n - 1) / 2);
    }
    // The command line first, the search alone as its peer.
    for (const int n : {5000, kQuarry}) {
        const std::string name = "combine_cli_" + std::to_string(n);
        registerCommandLine(name + "/kilnova-cli", n);
        registerOne(name + "/search", n, [](const Workload& w) {
            Discard report;
            return CombinationSearch(w.request, w.series).run(report).pairs.size();
        });
    }
    std::fflush(stdout);
}

} // namespace kilnova::bench

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    kilnova::bench::registerBenchmarks();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
