#include "CliFixture.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "project/ProjectFile.h"

#include <gtest/gtest.h>

namespace kilnova {
namespace {

/// The settings options every optimize command shares, on a blast optimisation: two blasts of
/// 1000 t, a limestone (SiO2 10, CaO 50) and a marl (SiO2 20, CaO 40).
class OptimizeSettingsCliTest : public CliFixture {
protected:
    void SetUp() override
    {
        auto db = ProjectDatabase::create(mDir.filePath("plant.kndb"));
        for (auto [name, SiO2, CaO] : {std::tuple{"B1", 10.0f, 50.0f}, {"B2", 20.0f, 40.0f}}) {
            Record b(Table::Blast);
            b.setValue("Name", name);
            b.setValue("Quantity", 1000.0);
            Analysis a = missingAnalysis();
            a[elementIndex(Element::SiO2)] = SiO2;
            a[elementIndex(Element::CaO)] = CaO;
            a[elementIndex(Element::MgO)] = 1.0f;
            b.setAnalysis(a);
            RecordTable(*db, Table::Blast).add(b);
        }
        ProjectSettings s;
        s.databasePath = mDir.filePath("plant.kndb");
        s.blastOptimization.mode = COptimizationParameters::kMaximize;
        s.blastOptimization.optimizedElement = "CaO";
        s.blastOptimization.requestedTonnage = 1000;
        s.blastOptimization.constraints[elementIndex(Element::MgO)] = {0, 2, "0.00 <= MgO <= 2.00", 1};
        s.blastOptimization.selectedSources = {"B1", "B2"};
        ProjectFile::save(s, mDir.filePath("plant.knv"));
    }

    CliRun optimize(const QStringList& options)
    {
        return run(QStringList{"optimize", "blasts", mDir.filePath("plant.knv")} + options);
    }
};

TEST_F(OptimizeSettingsCliTest, OptionsOverrideTheStoredSettingsForTheRunOnly)
{
    // Minimise CaO over 800 t with 12 <= SiO2 <= 15: as much marl as the silica allows, 400 t.
    const CliRun r = optimize({"--mode", "minimize", "--tonnage", "800", "--constraint", "12 <= SiO2 <= 15"});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_TRUE(r.out.startsWith("Blast Optimization Results\n\nsuccessfully minimized CaO\n\n"
                                 "List of Constraints applied:\n12.00 <= SiO2 <= 15.00\n\n\n"))
        << r.out.toStdString();
    EXPECT_TRUE(r.out.contains("     400.000000 tonnes of Blast B2 (40.00% of blast, 50.00% of mix)\n"))
        << r.out.toStdString();
    const COptimizationParameters stored =
        ProjectFile::load(mDir.filePath("plant.knv")).settings.blastOptimization;
    EXPECT_EQ(stored.mode, COptimizationParameters::kMaximize) << "without --save nothing is kept";
    EXPECT_TRUE(stored.constraints[elementIndex(Element::MgO)].isActive());

    // Target 44 % CaO: 50 a + 40 (1 - a) = 44 takes 0.4 limestone and 0.6 marl.
    const CliRun target = optimize({"--mode", "target", "--element", "CaO", "--value", "44", "--save"});
    ASSERT_EQ(target.status, 0) << target.err.toStdString();
    EXPECT_TRUE(target.out.contains("successfully targeted CaO\n\nList of Constraints applied:\n"
                                    "0.00 <= MgO <= 2.00\n\n\n"))
        << target.out.toStdString();
    EXPECT_TRUE(target.out.contains("     400.000000 tonnes of Blast B1 (40.00% of blast, 40.00% of mix)\n"
                                    "     600.000000 tonnes of Blast B2"))
        << target.out.toStdString();
    const COptimizationParameters saved =
        ProjectFile::load(mDir.filePath("plant.knv")).settings.blastOptimization;
    EXPECT_EQ(saved.mode, COptimizationParameters::kTarget);
    EXPECT_EQ(saved.target, 44.0);
    EXPECT_EQ(saved.requestedTonnage, 1000.0);

    // Maximize Tonnage keeps the stored mode, as OK in the dialog does.
    ASSERT_EQ(optimize({"--mode", "max-tonnage", "--save"}).status, 0);
    EXPECT_EQ(ProjectFile::load(mDir.filePath("plant.knv")).settings.blastOptimization.mode,
              COptimizationParameters::kTarget);
}

TEST_F(OptimizeSettingsCliTest, ABadValueSaysWhichAndChangesNothing)
{
    const QByteArray before = [this] {
        QFile f(mDir.filePath("plant.knv"));
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }();
    struct Case {
        QStringList options;
        QString says;
    };
    const std::vector<Case> cases = {
        {{"--mode", "sideways"},
         "kilnova-cli: --mode must be one of minimize, maximize, target, max-tonnage\n"},
        {{"--element", "Cl"}, "kilnova-cli: --element \"Cl\" is not an element that can be optimised\n"},
        {{"--element", "Gold"}, "kilnova-cli: --element \"Gold\" is not an element that can be optimised\n"},
        {{"--value", "lots"}, "kilnova-cli: --value must be a number; \"lots\" is not one\n"},
        {{"--tonnage"}, "kilnova-cli: --tonnage needs a number\n"},
        {{"--constraint", "12 <= SiO2"},
         "kilnova-cli: --constraint \"12 <= SiO2\" is not \"MIN <= ELEMENT <= MAX\"\n"},
        {{"--constraint", "1 <= Sand <= 2"},
         "kilnova-cli: --constraint \"1 <= Sand <= 2\": \"Sand\" is not an element\n"},
        {{"--constraint", "1 <= SiO2 <= 2", "--constraint", "3 <= SiO2 <= 4", "--save"},
         "kilnova-cli: --constraint \"3 <= SiO2 <= 4\": A constraint on this variable has already been "
         "set\n"},
        {{"--mode", "target", "--element", "SiO2", "--constraint", "1 <= SiO2 <= 2", "--save"},
         "kilnova-cli: --constraint \"1 <= SiO2 <= 2\": You cannot add a constraint on the optimized element "
         "in "
         "Target mode\n"},
        {{"--subtract"}, "kilnova-cli: --subtract needs --store NAME\n"},
    };
    for (const Case& c : cases) {
        const CliRun r = optimize(c.options);
        EXPECT_EQ(r.status, 2) << c.options.join(' ').toStdString();
        EXPECT_TRUE(r.err.startsWith(c.says)) << r.err.toStdString();
        EXPECT_EQ(r.out, "");
    }
    QFile after(mDir.filePath("plant.knv"));
    ASSERT_TRUE(after.open(QIODevice::ReadOnly));
    EXPECT_EQ(after.readAll(), before);
}

TEST_F(OptimizeSettingsCliTest, AStoreNameTheTableHoldsIsRefusedBeforeAnythingRuns)
{
    const CliRun r = optimize({"--store", "Actual 2", "--subtract"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "The Stockpile table already holds a record named \"Actual 2\"; nothing was stored.\n"
                     "Add --allow-duplicate to store a second record of that name.\n");
    EXPECT_EQ(r.out, "");
    auto db = ProjectDatabase::open(mDir.filePath("plant.kndb"));
    EXPECT_EQ(db->count(Table::Stockpile), 4);
    EXPECT_EQ(RecordTable(*db, Table::Blast).find({"B1", {}})->number("Quantity"), 1000.0);
}

} // namespace
} // namespace kilnova
