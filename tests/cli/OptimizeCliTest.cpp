#include "CliFixture.h"
#include "common/MessageTable.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "project/ProjectFile.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace kilnova {
namespace {

class OptimizeCliTest : public CliFixture {
protected:
    void SetUp() override
    {
        auto db = ProjectDatabase::create(mDir.filePath("plant.kndb"));
        const Analysis limestone{90,    10, 2, 1, 50, 1, 36, 0.1f, 0.2f, 0.05f, 0.1f,
                                 0.05f, 9,  9, 9, 9,  9, 9,  9,    2,    9,     0.01f};
        const Analysis marl{70,   20, 6, 3, 40, 2, 28, 0.3f, 0.6f, 0.15f, 0.3f,
                            0.1f, 9,  9, 9, 9,  9, 9,  9,    1,    9,     -1};
        for (const auto& [name, analysis] : {std::pair{"B1", limestone}, {"B2", marl}, {"B3", marl}}) {
            Record b(Table::Blast);
            b.setValue("Name", name);
            b.setValue("Quantity", 1000.0);
            b.setAnalysis(analysis);
            RecordTable(*db, Table::Blast).add(b);
            Record d(Table::StdBlast);
            d.setValue("Name", name);
            RecordTable(*db, Table::StdBlast).add(d);
        }
        ProjectSettings s;
        s.databasePath = mDir.filePath("plant.kndb");
        COptimizationParameters& p = s.blastOptimization;
        p.mode = COptimizationParameters::kMaximize;
        p.optimizedElement = "CaO";
        p.requestedTonnage = 1000;
        p.constraints[static_cast<std::size_t>(elementIndex(Element::SiO2))] = {12, 15,
                                                                                "12.00 <= SiO2 <= 15.00", 1};
        p.selectedSources = {"B1", "B2"};
        ProjectFile::save(s, mDir.filePath("plant.knv"));
    }
};

TEST_F(OptimizeCliTest, PrintsTheReportOfTheStoredSettings)
{
    const CliRun r = run({"optimize", "blasts", mDir.filePath("plant.knv")});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(r.out.toStdString(),
              "Blast Optimization Results\n\nsuccessfully maximized CaO\n\nList of Constraints applied:\n"
              "12.00 <= SiO2 <= 15.00\n\n\nOptimized blast results\n\n"
              "     800.000000 tonnes of Blast B1 (80.00% of blast, 80.00% of mix)\n"
              "     200.000000 tonnes of Blast B2 (20.00% of blast, 20.00% of mix)\n"
              "Optimized tonnage:    1000.00\n"
              "  Titration      86.00        SiO2      12.00       Al2O3       2.80       Fe2O3       1.40\n"
              "        CaO      48.00         MgO       1.20         LOI      34.40         SO3       0.14\n"
              "        K2O       0.28        Na2O       0.07        TiO2       0.14        P2O5       0.06\n"
              "         MS       2.86          MA       2.00         LSF       1.27         C3S      83.40\n"
              "        C2S     -28.47         C3A       5.05        NaEq       0.25 Cost Factor       1.80\n"
              "       C4AF       4.26\n");
    EXPECT_TRUE(QFile::exists(mDir.filePath("data/Kilnova/debug.txt")));
}

TEST_F(OptimizeCliTest, JsonSelectionAndFailures)
{
    const CliRun json =
        run({"optimize", "blasts", mDir.filePath("plant.knv"), "--select", "B1", "B3", "--json"});
    ASSERT_EQ(json.status, 0) << json.err.toStdString();
    const QJsonObject o = QJsonDocument::fromJson(json.out.toUtf8()).object();
    EXPECT_EQ(o["status"].toString(), "optimal");
    const QJsonArray tonnes = o["tonnes"].toArray();
    ASSERT_EQ(tonnes.size(), 2);
    EXPECT_EQ(tonnes[1].toObject()["blast"].toString(), "B3");
    EXPECT_NEAR(tonnes[1].toObject()["tonnes"].toDouble(), 200, 1e-6);
    EXPECT_NEAR(o["mix"].toObject()["CaO"].toDouble(), 48, 1e-6);
    // The sources take the order of the dialog's list, however they are typed.
    EXPECT_EQ(run({"optimize", "blasts", mDir.filePath("plant.knv"), "--select", "b3", "B1", "--json"}).out,
              json.out);

    const CliRun one = run({"optimize", "blasts", mDir.filePath("plant.knv"), "--select", "B1"});
    EXPECT_EQ(one.status, 1);
    EXPECT_EQ(one.err, "Select at least 2 blasts with --select NAME... or --all.\n");
    EXPECT_TRUE(one.out.isEmpty());

    EXPECT_EQ(run({"optimize", "blasts", mDir.filePath("plant.knv"), "--frobnicate"}).status, 2);
    EXPECT_EQ(run({"optimize", "blasts", mDir.filePath("missing.knv")}).status, 1);
}

TEST_F(OptimizeCliTest, StoreAndSubtract)
{
    for (const QString& name : {QString(), QString(51, 'x')}) {
        const CliRun refused = run({"optimize", "blasts", mDir.filePath("plant.knv"), "--store", name});
        EXPECT_EQ(refused.status, 1);
        EXPECT_EQ(refused.err, "A name must have between 1 and 50 characters.\n");
    }
    const CliRun r =
        run({"optimize", "blasts", mDir.filePath("plant.knv"), "--store", "Pile 7", "--subtract"});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_TRUE(r.out.endsWith("Stored \"Pile 7\" (1000.00 t) in the Stockpile table. Subtracted 1000.00 t "
                               "from 2 source record(s), 0 of them deleted. Backup rows made: 2 in "
                               "backup-Blast, 2 in backup-stdBlast.\n"))
        << r.out.toStdString();
    auto db = ProjectDatabase::open(mDir.filePath("plant.kndb"));
    // The solver's step length is single precision, so the tonnes are 800 and 200 to about 1e-5.
    EXPECT_NEAR(RecordTable(*db, Table::Stockpile).find({"Pile 7", " "})->number("Quantity"), 1000.0, 1e-4);
    EXPECT_NEAR(RecordTable(*db, Table::Blast).find({"B1", {}})->number("Quantity"), 200.0, 1e-4);
    EXPECT_NEAR(RecordTable(*db, Table::Blast).find({"B2", {}})->number("Quantity"), 800.0, 1e-4);
    EXPECT_EQ(db->count(Table::BackupBlast), 2);
    EXPECT_EQ(db->count(Table::Stockpile), 5) << "the refused names stored nothing";
}

TEST_F(OptimizeCliTest, ANameTakenIsRefusedUnlessADuplicateIsAllowed)
{
    // "Actual 1" is in every project database; the name compares without regard to case.
    const QStringList store = {"optimize", "blasts", mDir.filePath("plant.knv"), "--store", "ACTUAL 1"};
    const CliRun taken = run(store);
    EXPECT_EQ(taken.status, 1);
    EXPECT_EQ(taken.err,
              "The Stockpile table already holds a record named \"ACTUAL 1\"; nothing was stored.\n"
              "Add --allow-duplicate to store a second record of that name.\n");
    const CliRun allowed = run(store + QStringList{"--allow-duplicate"});
    EXPECT_EQ(allowed.status, 0) << allowed.err.toStdString();
    EXPECT_TRUE(
        allowed.out.endsWith("Stored \"ACTUAL 1\" (1000.00 t) in the Stockpile table. The sources were "
                             "left as they were.\n"));
    auto db = ProjectDatabase::open(mDir.filePath("plant.kndb"));
    const std::vector<Record> actual = RecordTable(*db, Table::Stockpile).findNamed("Actual 1");
    ASSERT_EQ(actual.size(), 2u);
    EXPECT_EQ(actual[0].text("Source"), "Actual") << "the Actual stockpile is as it was";
    EXPECT_EQ(actual[0].number("Quantity"), 0.0);
    EXPECT_EQ(RecordTable(*db, Table::Blast).find({"B1", {}})->number("Quantity"), 1000.0);
}

TEST_F(OptimizeCliTest, OfSeveralStoresStartedTogetherOneStoresAndTheOthersRefuse)
{
    // Each computes the same blend from the same blasts; once one has taken its tonnes, the blend
    // of every other rests on tonnes that are gone.
    constexpr int kRuns = 6;
    std::vector<std::unique_ptr<QProcess>> runs;
    for (int i = 0; i < kRuns; ++i) {
        auto p = std::make_unique<QProcess>();
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("XDG_DATA_HOME", mDir.filePath(QStringLiteral("data%1").arg(i)));
        p->setProcessEnvironment(env);
        p->start(KILNOVA_CLI, {"optimize", "blasts", mDir.filePath("plant.knv"), "--store",
                               QStringLiteral("Pile %1").arg(i), "--subtract"});
        runs.push_back(std::move(p));
    }
    int stored = 0;
    const QString file = QDir::toNativeSeparators(mDir.filePath("plant.kndb"));
    const QStringList refusals = {message(Msg::SourceChanged, {"blast \"B1\""}),
                                  message(Msg::SourceChanged, {"blast \"B2\""}),
                                  message(Msg::DatabaseInUse, {file}), message(Msg::Infeasible)};
    for (auto& p : runs) {
        ASSERT_TRUE(p->waitForFinished(60000));
        const QString err = QString::fromUtf8(p->readAllStandardError());
        if (p->exitCode() == 0) {
            ++stored;
            continue;
        }
        EXPECT_EQ(p->exitCode(), 1) << err.toStdString();
        EXPECT_TRUE(std::any_of(refusals.begin(), refusals.end(), [&err](const QString& r) {
            return err.contains(r);
        })) << err.toStdString();
    }
    EXPECT_EQ(stored, 1);

    // The tonnes of one blend, taken once.
    auto db = ProjectDatabase::open(mDir.filePath("plant.kndb"));
    EXPECT_EQ(db->count(Table::Stockpile), 4 + 1);
    EXPECT_NEAR(RecordTable(*db, Table::Blast).find({"B1", {}})->number("Quantity"), 200.0, 1e-6);
    EXPECT_NEAR(RecordTable(*db, Table::Blast).find({"B2", {}})->number("Quantity"), 800.0, 1e-6);
    EXPECT_EQ(db->count(Table::BackupBlast), 2);
}

// B1 (SiO2 10, CaO 50) and B2 (SiO2 20, CaO 40) over 1000 t with SiO2 at least 12: 800 t and 200 t.
// SiO2 minimum 11.99 takes 801 t and 199 t, CaO 48010 against 48000: +10 per 0.01 lower; 1001 t takes
// 800.8 t and 200.2 t, CaO 48048: +48 per 1 t more.
TEST_F(OptimizeCliTest, ExplainFollowsTheReportWithTheLimitsThatHold)
{
    const CliRun plain = run({"optimize", "blasts", mDir.filePath("plant.knv")});
    const CliRun explained = run({"optimize", "blasts", mDir.filePath("plant.knv"), "--explain"});
    ASSERT_EQ(explained.status, 0) << explained.err.toStdString();
    ASSERT_TRUE(explained.out.startsWith(plain.out));
    EXPECT_EQ(explained.out.mid(plain.out.size()).toStdString(),
              "\nLimits that hold the answer\n\n"
              "  SiO2 minimum 12.00: objective +10.00 per 0.01 lower\n"
              "  Requested tonnage 1000.00 t: objective +48.00 per 1 t more\n");

    const CliRun json = run({"optimize", "blasts", mDir.filePath("plant.knv"), "--json", "--explain"});
    ASSERT_EQ(json.status, 0) << json.err.toStdString();
    const QJsonObject o = QJsonDocument::fromJson(json.out.toUtf8()).object();
    EXPECT_EQ(o["status"].toString(), "optimal");
    const QJsonObject e = o["explanation"].toObject();
    EXPECT_EQ(e["status"].toString(), "optimal");
    const QJsonArray binding = e["binding"].toArray();
    ASSERT_EQ(binding.size(), 2);
    EXPECT_EQ(binding[0].toObject()["limit"].toString(), "SiO2 minimum");
    EXPECT_EQ(binding[0].toObject()["current"].toDouble(), 12.0);
    EXPECT_TRUE(binding[0].toObject()["needed"].isNull());
    EXPECT_NEAR(binding[0].toObject()["marginal"].toDouble(), 10.0, 1e-3);
    EXPECT_EQ(binding[0].toObject()["step"].toDouble(), -0.01);
    EXPECT_NEAR(binding[1].toObject()["marginal"].toDouble(), 48.0, 1e-3);
    // Without --explain the JSON is as it was.
    EXPECT_FALSE(QJsonDocument::fromJson(
                     run({"optimize", "blasts", mDir.filePath("plant.knv"), "--json"}).out.toUtf8())
                     .object()
                     .contains("explanation"));
}

// 3000 t asked of two 1000 t blasts: SiO2 between 12 and 15 allows both whole (SiO2 15), 2000 t.
TEST_F(OptimizeCliTest, ExplainFollowsTheInfeasibleMessageWithTheConflict)
{
    const QStringList args = {"optimize", "blasts", mDir.filePath("plant.knv"), "--tonnage", "3000"};
    const CliRun plain = run(args);
    ASSERT_EQ(plain.status, 1);
    EXPECT_EQ(plain.err.toStdString(),
              "The system cannot reach an optimum, it is infeasible given the set of constraints\n");

    const CliRun explained = run(args + QStringList{"--explain"});
    EXPECT_EQ(explained.status, 1);
    EXPECT_EQ(
        explained.err.toStdString(),
        "The system cannot reach an optimum, it is infeasible given the set of constraints\n\n"
        "Why no blend was found\n\n"
        "These limits cannot hold together:\n"
        "  Requested tonnage 3000.00 t: lower it to 2000.00 t\n"
        "  Tonnages of the sources 2000.00 t: 1000.00 t missing; the fullest blend takes all of B1, B2\n"
        "Any one of these changes, every other limit kept, makes a blend possible.\n");

    const CliRun json = run(args + QStringList{"--json", "--explain"});
    EXPECT_EQ(json.status, 1);
    const QJsonObject o = QJsonDocument::fromJson(json.out.toUtf8()).object();
    EXPECT_EQ(o["status"].toString(), "failed");
    const QJsonObject e = o["explanation"].toObject();
    EXPECT_EQ(e["status"].toString(), "infeasible");
    EXPECT_NEAR(e["missingTonnes"].toDouble(), 1000.0, 1e-6);
    const QJsonArray conflict = e["conflict"].toArray();
    ASSERT_EQ(conflict.size(), 2);
    EXPECT_EQ(conflict[0].toObject()["limit"].toString(), "Requested tonnage");
    EXPECT_EQ(conflict[0].toObject()["current"].toDouble(), 3000.0);
    EXPECT_EQ(conflict[0].toObject()["needed"].toDouble(), 2000.0);
    EXPECT_TRUE(conflict[0].toObject()["marginal"].isNull());
    EXPECT_EQ(conflict[1].toObject()["sources"].toArray().size(), 2);
}

} // namespace
} // namespace kilnova
