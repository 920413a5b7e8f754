#include "optimise/ClinkerOptimization.h"
#include "common/ArchiveReader.h"
#include "common/ArchiveWriter.h"
#include "common/MessageTable.h"
#include "database/DatabaseError.h"
#include "database/RecordTable.h"
#include "support/ScriptedPrompt.h"
#include "support/TempProject.h"

#include "ClinkerFixtures.h"

#include <QFile>

namespace kilnova {
namespace {

/// The sources of the hand-worked clinker (ClinkerFixtures.h) in a project database, a second crude
/// named Meal A from the other mill, a stockpile and sand.
class ClinkerOptimizationTest : public test::TempProject {
protected:
    void SetUp() override
    {
        TempProject::SetUp();
        test::addClinkerSources(*mDb);
        mProcess.EnergyConsumptionFactor = 700;
    }

    /// Minimise CaO at SiO2 <= 20.83 over both Meal A (Mill 1) and Meal B, with Coal A.
    CClinkerOptParameters settings() const
    {
        CClinkerOptParameters p;
        p.mode = CClinkerOptParameters::kMinimize;
        p.optimizedElement = "CaO";
        p.requestedTonnage = 650;
        p.constraints[elementIndex(Element::SiO2)] = {0, 20.83, "0.00 <= SiO2 <= 20.83", 1};
        p.crudeSources = {"Meal B (Mill 2)", "Meal A (Mill 1)"};
        p.coalSources = {"Coal A"};
        return p;
    }

    double quantity(Table table, const RecordKey& key) const
    {
        const std::optional<Record> r = RecordTable(*mDb, table).find(key);
        return r ? r->number("Quantity") : -99;
    }

    ClinkerProcessParameters mProcess;
};

TEST_F(ClinkerOptimizationTest, ListsSelectionsAndTheirOrder)
{
    ClinkerOptimization o(*mDb, settings(), mProcess, 0);
    EXPECT_EQ(o.rawCaption(), "Crude");
    EXPECT_EQ(o.rawList(), QStringList({"Meal A (Mill 1)", "Meal A (Mill 2)", "Meal B (Mill 2)"}));
    EXPECT_EQ(o.additiveList(), QStringList()) << "no additives with crude and coal";
    EXPECT_EQ(o.coalList(), QStringList({"Coal A"}));
    EXPECT_EQ(o.rawSelection(), QStringList({"Meal A (Mill 1)", "Meal B (Mill 2)"})) << "in the list's order";
    EXPECT_EQ(o.source("Meal A (Mill 2)")->text("Source"), "Mill 2");

    struct Case {
        const char* name;
        bool selected;
    };
    o.setRawSelection({});
    for (const Case& c : {Case{"Meal B", true}, Case{"Meal A", false}, Case{"Meal A (Mill 2)", true},
                          Case{"Coal A", true}, Case{"Sand", false}, Case{"Gold", false}})
        EXPECT_EQ(o.select(c.name), c.selected) << c.name;
    EXPECT_EQ(o.rawSelection(), QStringList({"Meal A (Mill 2)", "Meal B (Mill 2)"}));

    o.setStockpiles(true);
    EXPECT_EQ(o.rawCaption(), "Stockpile");
    EXPECT_TRUE(o.rawSelection().isEmpty()) << "the first list now lists another table";
    EXPECT_EQ(o.rawList(), QStringList({"Actual 1 (Actual)", "Actual 2 (Actual)", "Actual 3 (Actual)",
                                        "Actual 4 (Actual)", "Bed 1 (Quarry)"}));
    EXPECT_EQ(o.additiveList(), QStringList({"Sand"}));
    EXPECT_TRUE(o.select("Sand"));
    EXPECT_EQ(o.additiveSelection(), QStringList({"Sand"}));
}

TEST_F(ClinkerOptimizationTest, ConstraintListsFollowTheSharedRules)
{
    ClinkerOptimization o(*mDb, settings(), mProcess, 0);
    EXPECT_EQ(o.modeChoiceList(), QStringList({"Minimize", "Maximize", "Target"}));
    EXPECT_EQ(o.constraintTexts(), QStringList({"0.00 <= SiO2 <= 20.83"}));
    EXPECT_EQ(o.addConstraint(elementIndex(Element::SiO2), 1, 2), message(Msg::ConstraintAlreadySet));
    o.setModeChoice(2);
    o.setElement(elementIndex(Element::LSF));
    EXPECT_EQ(o.addConstraint(elementIndex(Element::LSF), 0.9, 1), message(Msg::NoConstraintOnTargetElement));
    EXPECT_FALSE(o.addConstraint(elementIndex(Element::Cl), 0, 0.1));

    const std::vector<RecordKey> piles = o.stockpileKeys();
    ASSERT_EQ(piles.size(), 5u);
    EXPECT_EQ(piles[4], (RecordKey{"Bed 1", "Quarry"}));
    EXPECT_FALSE(o.addTonnageConstraint(piles[4], 100, 2500));
    EXPECT_EQ(o.addTonnageConstraint(piles[4], 0, 10), message(Msg::ConstraintAlreadySet));
    EXPECT_FALSE(o.addTonnageConstraint(piles[0], 0, 10));
    EXPECT_EQ(o.tonnageConstraintTexts(),
              QStringList({"100.00 <= Bed 1 (Quarry) <= 2500.00", "0.00 <= Actual 1 (Actual) <= 10.00"}));
    EXPECT_EQ(o.modifyTonnageConstraint(1, piles[4], 0, 10), message(Msg::ConstraintAlreadySet));
    EXPECT_FALSE(o.modifyTonnageConstraint(0, piles[4], 200, 2000)) << "a constraint may keep its own pile";
    o.removeTonnageConstraint(1);
    EXPECT_EQ(o.tonnageConstraintTexts(), QStringList({"200.00 <= Bed 1 (Quarry) <= 2000.00"}));

    // OK keeps all of it, and a stored block brings it back.
    o.setCoalSelection({"Coal A"});
    const CClinkerOptParameters kept = o.parametersForOk(CClinkerOptParameters{});
    EXPECT_EQ(kept.mode, CClinkerOptParameters::kTarget);
    EXPECT_EQ(kept.optimizedElement, "LSF");
    EXPECT_EQ(kept.tonnageConstraints.size(), 1);
    ArchiveWriter out;
    kept.serialize(out);
    CClinkerOptParameters loaded;
    ArchiveReader in(out.takeData());
    loaded.load(in);
    EXPECT_EQ(loaded, kept);
    EXPECT_EQ(ClinkerOptimization(*mDb, loaded, mProcess, 0).parametersForOk(CClinkerOptParameters{}), kept);
}

TEST_F(ClinkerOptimizationTest, OptimizeReportsDumpsAndStoresAllOrNothing)
{
    const ClinkerOptimization o(*mDb, settings(), mProcess, 0);
    const ClinkerOptimization::Result r = o.optimize(path("debug.txt"));
    ASSERT_TRUE(r.outcome.solved) << r.outcome.message.toStdString();
    EXPECT_TRUE(r.report.contains("tonnes of Crude Meal A; Mill 1  (90.25% of crude, 90.25% of clinker)\r\n"))
        << r.report.toStdString();
    // The chart names the tonnage the report says is needed, not the sum of single-precision shares.
    EXPECT_EQ(ClinkerOptimization::chartOf(r).tonnage, 650.0);
    QFile dump(path("debug.txt"));
    ASSERT_TRUE(dump.open(QIODevice::ReadOnly));
    // The SiO2 maximum row: 13 - 20.83 * 0.65, 15.2 - 13.5395, the coal's 5.
    EXPECT_EQ(dump.readLine(), QByteArray("     -0.54      1.66      5.00      0.00 IBT:    1\n"));

    // A failure at the last write (the coal) leaves the clinker and crude unwritten and the crudes whole.
    ASSERT_EQ(
        rawExec("CREATE TRIGGER refuse BEFORE UPDATE ON [Coal] BEGIN SELECT RAISE(ABORT, 'disk full'); END"),
        "");
    test::ScriptedPrompt ui;
    const std::vector<SourceUpdate::Named> records = {
        {message(Msg::ClinkerNamePrompt), ClinkerOptimization::clinkerOf(r)},
        {message(Msg::CrudeNamePrompt), ClinkerOptimization::crudeOf(r)}};
    ui.textAnswers = {QStringLiteral("K-650"), QStringLiteral("Meal AB")};
    ui.yesNoAnswers = {true};
    EXPECT_FALSE(SourceUpdate::storeAsking(*mDb, ui, records, ClinkerOptimization::takesOf(r)));
    EXPECT_EQ(mDb->count(Table::Clinker), 0);
    EXPECT_EQ(mDb->count(Table::Crude), 3);
    EXPECT_EQ(quantity(Table::Crude, {"Meal A", "Mill 1"}), 2000.0);

    ASSERT_EQ(rawExec("DROP TRIGGER refuse"), "");
    ui.textAnswers = {QStringLiteral("K-650"), QStringLiteral("Meal AB")};
    ui.yesNoAnswers = {true};
    ASSERT_TRUE(SourceUpdate::storeAsking(*mDb, ui, records, ClinkerOptimization::takesOf(r)));
    const Record clinker = *RecordTable(*mDb, Table::Clinker).find({"K-650", " "});
    EXPECT_NEAR(clinker.number("Quantity"), 650, 1e-3);
    EXPECT_NEAR(clinker.number("SiO2"), 20.83, 1e-4);
    EXPECT_EQ(clinker.number("Titration"), -1.0);
    EXPECT_NEAR(clinker.number("MA"), 3211.25 / 2072.8, 1e-4) << "the derived columns come with it";
    const Record crude = *RecordTable(*mDb, Table::Crude).find({"Meal AB", " "});
    EXPECT_NEAR(crude.number("Quantity"), 1000, 1e-3);
    EXPECT_NEAR(quantity(Table::Crude, {"Meal A", "Mill 1"}), 2000 - 902.5, 0.01);
    EXPECT_NEAR(quantity(Table::Crude, {"Meal B", "Mill 2"}), 2000 - 97.5, 0.01);
    EXPECT_EQ(quantity(Table::Crude, {"Meal A", "Mill 2"}), 2000.0) << "not chosen";
    EXPECT_NEAR(quantity(Table::Coal, {"Coal A", {}}), 500 - 65, 1e-3);
    EXPECT_EQ(mDb->count(Table::BackupStockpile), 0) << "crudes and coal have no backup table";

    // The same run stored again rests on tonnes that are gone: the crude it read first is named.
    SourceUpdate::Blend again = ClinkerOptimization::clinkerOf(r);
    again.name = "K-651";
    try {
        SourceUpdate::store(*mDb, again, ClinkerOptimization::takesOf(r), true);
        ADD_FAILURE() << "stored on changed sources";
    } catch (const DatabaseError& e) {
        EXPECT_EQ(e.message(), message(Msg::SourceChanged, {"crude \"Meal A\" from \"Mill 1\""}));
    }
    EXPECT_FALSE(RecordTable(*mDb, Table::Clinker).find({"K-651", " "}));
}

TEST_F(ClinkerOptimizationTest, StockpilesAreBackedUpAndAdditivesLeftAlone)
{
    CClinkerOptParameters p;
    p.sourceSelection = CClinkerOptParameters::kStockpileAdditivesAndCoal;
    p.mode = CClinkerOptParameters::kMaximize;
    p.optimizedElement = "LSF";
    p.requestedTonnage = 2690;
    p.crudeSources = {"Bed 1 (Quarry)"};
    p.additiveSources = {"Sand"};
    p.coalSources = {"Coal A"};
    p.constraints[elementIndex(Element::SiO2)] = {0, 24, "0.00 <= SiO2 <= 24.00", 1};
    ClinkerOptimization o(*mDb, p, test::stockpileAdditiveAndCoal().process, 1.5);
    ASSERT_FALSE(o.addTonnageConstraint({"Bed 1", "Quarry"}, 0, 4200));
    const ClinkerOptimization::Result r = o.optimize();
    ASSERT_TRUE(r.outcome.solved) << r.outcome.message.toStdString();
    ASSERT_EQ(r.request.tonnageLimits.size(), 1u);
    EXPECT_LE(r.outcome.tonnes(0), 4200 + 1e-3);
    EXPECT_GT(r.outcome.tonnes(1), 0) << "4200 t of the bed and the ash make 2672 t: sand makes up the rest";

    SourceUpdate::Blend clinker = ClinkerOptimization::clinkerOf(r);
    clinker.name = "K-2690";
    SourceUpdate::store(*mDb, clinker, ClinkerOptimization::takesOf(r), true);
    EXPECT_NEAR(quantity(Table::Stockpile, {"Bed 1", "Quarry"}), 5000 - r.outcome.tonnes(0), 1e-3);
    ASSERT_EQ(mDb->count(Table::BackupStockpile), 1);
    EXPECT_EQ(RecordTable(*mDb, Table::BackupStockpile).all()[0].number("Quantity"), 5000.0);
    EXPECT_EQ(mDb->count(Table::Additives), 1);
}

TEST_F(ClinkerOptimizationTest, ASourceGoneSinceListingIsNamed)
{
    ClinkerOptimization o(*mDb, settings(), mProcess, 0);
    ASSERT_EQ(RecordTable(*mDb, Table::Crude).remove({"Meal B", "Mill 2"}), 1);
    EXPECT_EQ(o.optimize().outcome.message,
              "The crude \"Meal B (Mill 2)\" is no longer in the Crude table; refresh the list of sources.");
    o.setRawSelection({"Meal A (Mill 1)"});
    o.setCoalSelection({});
    EXPECT_EQ(o.optimize().outcome.message, message(Msg::SelectTwoSources));
}

} // namespace
} // namespace kilnova
