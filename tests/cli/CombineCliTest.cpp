#include "CliFixture.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "project/ProjectFile.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

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

    ProjectSettings mSettings;
};

TEST_F(CombineCliTest, PrintsTheReportWithTheStoredSettings)
{
    const QString properties =
        "  Titration       0.00        SiO2      14.00       Al2O3       0.00       Fe2O3       0.00\n"
        "        CaO      46.00         MgO       0.00         LOI       0.00         SO3       0.00\n"
        "        K2O       0.00        Na2O       0.00        TiO2       0.00        P2O5       0.00\n"
        "         MS      -1.00          MA      -1.00         LSF       1.17         C3S      80.87\n"
        "        C2S     -20.83         C3A       0.00        NaEq       0.00 Cost Factor       0.00\n";
    const QString expected =
        "Blast Combination Analysis Results\n"
        "Analyzing combinations of 2 blasts from a series of 3 blasts\n"
        "Number of combinations to analyse: 3\n"
        "Target combined tonnage: 1000.00\n"
        "Target SiO2: 14.00\n"
        "Restriction applied to individual blast quantity, must be greater than 0.000 of combination total "
        "quantity\n"
        "Successful combinations are ranked by combined CaO grade closest to 45.000\n"
        "\n\nResults for Period #1\n"
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
        {{"combine", "plant.knv", "--select", "A"}, 1, "Please, select at least 2 sources\n"},
        {{"combine", "plant.knv", "--select", "A", "C'"},
         1,
         "0 successful combinations of 2 blasts were found\n"},
        {{"combine", "plant.knv", "--select", "A", "Nobody"},
         1,
         "The blast \"Nobody\" is not in the list of sources: it is not in the Blast table, has no tonnes "
         "left or "
         "lies outside the coordinate filter.\n"},
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
    EXPECT_EQ(twoTargets.err,
              "A combination of two blasts can meet the tonnage and one chemistry target only. "
              "Remove all targets but one, then combine again.\n");
}

} // namespace
} // namespace kilnova
