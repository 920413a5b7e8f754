#include "CliFixture.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "project/ProjectFile.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

namespace kilnova {
namespace {

class CombineCliTest : public CliFixture {
protected:
    /// A project whose stored settings ask for SiO2 14 from 1000 t, ranked by CaO closest to 45, over
    /// A and B (600 t + 400 t) and C', which cannot give the 200 t a pair with A would need.
    void SetUp() override
    {
        ASSERT_TRUE(mDir.isValid());
        std::unique_ptr<ProjectDatabase> db = ProjectDatabase::create(path("plant.kndb"));
        RecordTable blasts(*db, Table::Blast);
        RecordTable deviations(*db, Table::StdBlast);
        for (const auto& [name, quantity, sio2, cao] :
             {std::tuple{"A", 1000.0, 10.0, 50.0}, std::tuple{"B", 1000.0, 20.0, 40.0},
              std::tuple{"C'", 50.0, 30.0, 30.0}}) {
            Record r(Table::Blast);
            r.setAnalysis(Analysis{});
            r.setValue("Name", QString::fromUtf8(name));
            r.setValue("Quantity", quantity);
            r.setValue("SiO2", sio2);
            r.setValue("CaO", cao);
            blasts.add(r);
            Record d(Table::StdBlast);
            d.setValue("Name", QString::fromUtf8(name));
            deviations.add(d);
        }
        mSettings.databasePath = path("plant.kndb");
        mSettings.combination.targetTonnage = 1000;
        mSettings.combination.targets[1] = {14, "SiO2", 1};
        mSettings.combination.combinedGradeProperty = "CaO";
        mSettings.combination.combinedGradeTarget = 45;
        ProjectFile::save(mSettings, path("plant.knv"));
    }

    /// The report of the stored settings over A, B and C', worked out by hand: A 600 t and B 400 t give
    /// SiO2 (0.6 x 10 + 0.4 x 20) = 14 and CaO (0.6 x 50 + 0.4 x 40) = 46; C' cannot make up 200 t.
    static QString report(int period = 1)
    {
        const QString properties =
            "  Titration       0.00        SiO2      14.00       Al2O3       0.00       Fe2O3       0.00\n"
            "        CaO      46.00         MgO       0.00         LOI       0.00         SO3       0.00\n"
            "        K2O       0.00        Na2O       0.00        TiO2       0.00        P2O5       0.00\n"
            "         MS      -1.00          MA      -1.00         LSF       1.17         C3S      80.87\n"
            "        C2S     -20.83         C3A       0.00        NaEq       0.00 Cost Factor       0.00\n";
        return "Blast Combination Analysis Results\n"
               "Analyzing combinations of 2 blasts from a series of 3 blasts\n"
               "Number of combinations to analyse: 3\n"
               "Target combined tonnage: 1000.00\n"
               "Target SiO2: 14.00\n"
               "Restriction applied to individual blast quantity, must be greater than 0.000 of combination "
               "total "
               "quantity\n"
               "Successful combinations are ranked by combined CaO grade closest to 45.000\n"
               "\n\nResults for Period #" +
               QString::number(period) +
               "\n"
               "\n\nSuccessful combination #1\n"
               "         600.00 tonnes of Blast A (60.00% of blast, 60.00% of combination)\n"
               "         400.00 tonnes of Blast B (40.00% of blast, 40.00% of combination)\n"
               "        1000.00 total tonnes\n" +
               properties +
               "\n\nBest Solution found: Combination #1\n"
               "         600.00 tonnes of Blast A\n"
               "         400.00 tonnes of Blast B\n"
               "        1000.00 total tonnes\n" +
               properties +
               "       C4AF       0.00\n"
               "\nTotal number of successful combinations: 1\n";
    }

    ProjectSettings mSettings;
};

TEST_F(CombineCliTest, PrintsTheReportWithTheStoredSettings)
{
    const QString expected = report();
    const CliRun all = run({"combine", "plant.knv", "--all"});
    EXPECT_EQ(all.status, 0) << all.err.toStdString();
    EXPECT_EQ(all.out.toStdString(), expected.toStdString());
    EXPECT_TRUE(all.err.isEmpty());

    const CliRun selected = run({"combine", "plant.knv", "--select", "C'", "B", "A"});
    EXPECT_EQ(selected.status, 0) << selected.err.toStdString();
    EXPECT_EQ(selected.out, expected) << "the series follows the list, whatever the order named";

    std::unique_ptr<ProjectDatabase> db = ProjectDatabase::open(path("plant.kndb"));
    EXPECT_EQ(db->count(Table::TempBlast), 0) << "the working copy is emptied as the dialog's OK does";
    EXPECT_EQ(RecordTable(*db, Table::Blast).find({"A", {}})->number("Quantity"), 1000);
}

TEST_F(CombineCliTest, FailuresGoToStandardErrorWithStatusOne)
{
    struct Case {
        QStringList args;
        int status;
        QString error;
    };
    const std::vector<Case> cases = {
        {{"combine", "plant.knv", "--select", "A"},
         1,
         "Select at least 2 blasts with --select NAME... or --all.\n"},
        {{"combine", "plant.knv", "--select", "A", "C'"},
         1,
         "0 successful combinations of 2 blasts were found\n"},
        {{"combine", "plant.knv", "--select", "A", "Nobody"},
         1,
         "The blast \"Nobody\" cannot be combined: it is not in the Blast table, has no tonnes left or lies "
         "outside the coordinate filter (--filter, --no-filter).\n"},
        {{"combine", "plant.knv", "--all", "--tonnage", "0"},
         1,
         "Give a target tonnage greater than 0 with --tonnage T.\n"},
        {{"combine", "plant.knv", "--all", "--tonnage", "abc"},
         2,
         "kilnova-cli: --tonnage takes a number of tonnes, not \"abc\"\n"},
        {{"combine", "plant.knv", "--all", "--target", "Silica=14"},
         2,
         "kilnova-cli: --target takes PROPERTY=VALUE, not \"Silica=14\"\n"},
        {{"combine", "plant.knv", "--all", "--rank", "best"},
         2,
         "kilnova-cli: --rank takes combined:PROPERTY=VALUE, inventory:PROPERTY=VALUE or deviation:PROPERTY, "
         "not \"best\"\n"},
        {{"combine", "plant.knv", "--all", "--select", "A"},
         2,
         "kilnova-cli: combine takes --select NAME... or --all, not both\n"},
        {{"combine", "plant.knv"},
         2,
         "kilnova-cli: combine needs PROJECT.knv and --select NAME... or --all\n"},
        {{"combine", "missing.knv", "--all"},
         1,
         "The project " + path("missing.knv") + " cannot be opened.\n"},
    };
    for (const Case& c : cases) {
        const CliRun r = run(c.args);
        EXPECT_EQ(r.status, c.status) << c.args.join(' ').toStdString();
        EXPECT_TRUE(r.err.startsWith(c.error))
            << c.args.join(' ').toStdString() << ": " << r.err.toStdString();
        EXPECT_TRUE(r.out.isEmpty()) << c.args.join(' ').toStdString();
    }

    mSettings.combination.targets[4] = {46, "CaO", 1};
    ProjectFile::save(mSettings, path("plant.knv"));
    const CliRun twoTargets = run({"combine", "plant.knv", "--all"});
    EXPECT_EQ(twoTargets.status, 1);
    EXPECT_EQ(twoTargets.err, "A combination of two blasts can meet the tonnage and one chemistry target "
                              "only. Give one --target PROPERTY=VALUE, or --no-targets.\n");
    EXPECT_EQ(run({"combine", "plant.knv", "--all", "--target", "SiO2=14"}).status, 0)
        << "one --target replaces the stored ones";

    mSettings.combination.targets[4] = {};
    mSettings.combination.combinedRestriction = 1;
    ProjectFile::save(mSettings, path("plant.knv"));
    EXPECT_EQ(run({"combine", "plant.knv", "--all"}).err,
              "Name the property of \"Combined grade\" with --combined-grade PROPERTY:LOW:HIGH.\n");
}

TEST_F(CombineCliTest, OptionsSetWhatTheDialogSetsOnAProjectWithoutCombinationSettings)
{
    // A project with no combination settings at all, as the demo project comes.
    ProjectSettings fresh;
    fresh.databasePath = path("plant.kndb");
    ProjectFile::save(fresh, path("fresh.knv"));
    const CliRun refused = run({"combine", "fresh.knv", "--all"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, "Give a target tonnage greater than 0 with --tonnage T.\n");

    const QStringList options = {"--tonnage", "1000", "--target", "sio2=14", "--rank", "combined:CaO=45"};
    const CliRun r = run(QStringList{"combine", "fresh.knv", "--all", "--period", "3"} + options);
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(r.out, report(3));
    EXPECT_EQ(ProjectFile::load(path("fresh.knv")).settings, fresh) << "nothing saved without --save";

    EXPECT_EQ(run(QStringList{"combine", "fresh.knv", "--save"} + options).status, 0);
    EXPECT_EQ(ProjectFile::load(path("fresh.knv")).settings.combination, mSettings.combination)
        << "the options saved are the settings of the project made for these tests";
    EXPECT_EQ(run({"combine", "fresh.knv", "--all"}).out, report());
}

TEST_F(CombineCliTest, SaveWritesEachOptionBackAndLeavesTheRestOfTheProjectAlone)
{
    using P = CCombinationParameters;
    struct Case {
        QStringList options;
        std::function<void(P&)> expected;
    };
    const std::vector<Case> cases = {
        {{"--tonnage", "600.5"},
         [](P& p) {
             p.targetTonnage = 600.5;
         }},
        {{"--target", "Cost Factor=2", "--target", "LSF=0.95"},
         [](P& p) {
             p.targets[1] = {};
             p.targets[19] = {2, "Cost Factor", 1};
             p.targets[14] = {0.95, "LSF", 1};
         }},
        {{"--no-targets"},
         [](P& p) {
             p.targets[1] = {};
         }},
        {{"--filter", "100:200:-5:5.5:300:310"},
         [](P& p) {
             p.coordinateFilter = 1;
             p.eastMinimum = 100;
             p.eastMaximum = 200;
             p.northMinimum = -5;
             p.northMaximum = 5.5;
             p.elevationMinimum = 300;
             p.elevationMaximum = 310;
         }},
        {{"--min-quantity", "12.5", "--min-cost", "40"},
         [](P& p) {
             p.quantityMinimumPercent = 12.5;
             p.costRestriction = 1;
             p.costMinimumPercent = 40;
         }},
        {{"--no-min-quantity"},
         [](P& p) {
             p.quantityRestriction = 0;
         }},
        {{"--combined-grade", "costfactor:0.5:1.5", "--inventory-grade", "MgO:0:3.2"},
         [](P& p) {
             p.combinedRestriction = 1;
             p.combinedRestrictionProperty = "Cost Factor";
             p.combinedLowerBound = 0.5f;
             p.combinedUpperBound = 1.5f;
             p.inventoryRestriction = 1;
             p.inventoryRestrictionProperty = "MgO";
             p.inventoryLowerBound = 0.0f;
             p.inventoryUpperBound = 3.2f;
         }},
        {{"--rank", "inventory:Fe2O3=3.1"},
         [](P& p) {
             p.classificationMode = P::kInventoryGradeClosest;
             p.inventoryGradeProperty = "Fe2O3";
             p.inventoryGradeTarget = 3.1f;
         }},
        {{"--rank", "deviation:Al2O3"},
         [](P& p) {
             p.classificationMode = P::kSmallestStdDeviation;
             p.stdDeviationProperty = "Al2O3";
         }},
    };
    const ProjectFile::Loaded original = ProjectFile::load(path("plant.knv"));
    for (const Case& c : cases) {
        ProjectFile::save(mSettings, path("plant.knv"));
        const CliRun r = run(QStringList{"combine", "plant.knv", "--save"} + c.options);
        EXPECT_EQ(r.status, 0) << c.options.join(' ').toStdString() << ": " << r.err.toStdString();
        EXPECT_TRUE(r.out.isEmpty());
        ProjectSettings expected = mSettings;
        c.expected(expected.combination);
        const ProjectFile::Loaded saved = ProjectFile::load(path("plant.knv"));
        EXPECT_EQ(saved.settings, expected) << c.options.join(' ').toStdString();
        EXPECT_EQ(saved.chemistryDefaulted, original.chemistryDefaulted);
    }

    // --db is used for the run and never written into the project.
    ASSERT_TRUE(QFile::copy(path("plant.kndb"), path("other.kndb")));
    ProjectFile::save(mSettings, path("plant.knv"));
    const CliRun elsewhere = run({"combine", "plant.knv", "--all", "--save", "--db", "other.kndb"});
    EXPECT_EQ(elsewhere.status, 0) << elsewhere.err.toStdString();
    EXPECT_EQ(ProjectFile::load(path("plant.knv")).settings.databasePath, path("plant.kndb"));
}

} // namespace
} // namespace kilnova
