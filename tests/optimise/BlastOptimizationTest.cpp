#include "optimise/BlastOptimization.h"
#include "database/RecordTable.h"
#include "optimise/SourceUpdate.h"
#include "support/TempProject.h"

#include <QFile>

namespace kilnova {
namespace {

class BlastOptimizationTest : public test::TempProject {
protected:
    void addBlast(const QString& name, double quantity, double east, double north, double elevation,
                  std::initializer_list<std::pair<Element, float>> values)
    {
        Record b(Table::Blast);
        b.setValue("Name", name);
        b.setValue("Quantity", quantity);
        b.setValue("East", east);
        b.setValue("North", north);
        b.setValue("Elevation", elevation);
        Analysis a = missingAnalysis();
        for (auto [e, v] : values)
            a[static_cast<std::size_t>(elementIndex(e))] = v;
        b.setAnalysis(a);
        RecordTable(*mDb, Table::Blast).add(b);
    }

    void SetUp() override
    {
        TempProject::SetUp();
        addBlast("North 1", 1000, 100, 500, 80,
                 {{Element::SiO2, 10}, {Element::Al2O3, 2}, {Element::Fe2O3, 1}, {Element::CaO, 50}});
        addBlast("East 2", 1000, 300, 200, 95,
                 {{Element::SiO2, 20}, {Element::Al2O3, 6}, {Element::Fe2O3, 3}, {Element::CaO, 40}});
        addBlast("Pit 3", 400, 200, 300, 70, {{Element::SiO2, -1}, {Element::CaO, 45}});
    }
};

TEST_F(BlastOptimizationTest, ConstraintListRules)
{
    BlastOptimization o(*mDb, COptimizationParameters{});
    EXPECT_FALSE(o.addConstraint(elementIndex(Element::SiO2), 12, 15));
    EXPECT_FALSE(o.addConstraint(elementIndex(Element::CostFactor), 0.5, 1.255));
    EXPECT_EQ(o.constraintTexts(), QStringList({"12.00 <= SiO2 <= 15.00", "0.50 <= Cost Factor <= 1.25"}));
    EXPECT_EQ(o.addConstraint(elementIndex(Element::SiO2), 1, 2),
              "A constraint on this variable has already been set");
    // Modify replaces in place and may keep its own element.
    EXPECT_FALSE(o.modifyConstraint(0, elementIndex(Element::SiO2), 11, 14));
    EXPECT_EQ(o.modifyConstraint(1, elementIndex(Element::SiO2), 1, 2),
              "A constraint on this variable has already been set");
    EXPECT_FALSE(o.modifyConstraint(1, elementIndex(Element::MgO), 0, 3));
    EXPECT_EQ(o.constraintTexts(), QStringList({"11.00 <= SiO2 <= 14.00", "0.00 <= MgO <= 3.00"}));
    EXPECT_FALSE(o.constraint(elementIndex(Element::CostFactor)).isActive());

    o.setModeChoice(2); // Target
    o.setElement(elementIndex(Element::CaO));
    EXPECT_EQ(o.addConstraint(elementIndex(Element::CaO), 40, 50),
              "You cannot add a constraint on the optimized element in Target mode");
    o.removeConstraint(0);
    EXPECT_EQ(o.constraintTexts(), QStringList({"0.00 <= MgO <= 3.00"}));
}

TEST_F(BlastOptimizationTest, SourceListFilterAndExtent)
{
    BlastOptimization o(*mDb, COptimizationParameters{});
    EXPECT_EQ(o.sourceNames(), QStringList({"East 2", "North 1", "Pit 3"}));
    EXPECT_EQ(o.sourceCaption(), "Blasts");
    o.computeExtent();
    EXPECT_EQ(o.bounds(), (std::array<double, 6>{100, 300, 200, 500, 70, 95}));
    o.setCoordinateFilter(true);
    EXPECT_EQ(o.sourceNames(), QStringList({"East 2", "North 1", "Pit 3"})) << "bounds are inclusive";
    o.setBounds({100, 250, 0, 1000, 0, 100});
    EXPECT_EQ(o.sourceNames(), QStringList({"North 1", "Pit 3"}));
    EXPECT_EQ(o.sourceCaption(), "Blasts (filtered)");
}

TEST_F(BlastOptimizationTest, RunningTotalCountsMissingValuesAsMinusOne)
{
    BlastOptimization o(*mDb, COptimizationParameters{});
    EXPECT_EQ(o.runningTotal(), "");
    o.setSelection({"North 1", "Pit 3"});
    // SiO2: (10 * 1000 + -1 * 400) / 1400 = 6.857; Al2O3 (2000 - 400) / 1400; Fe2O3 (1000 - 400) / 1400;
    // MS 6.857 / 1.571; LSF 48.57 / (2.8 * 6.857 + 1.1 * 1.143 + 0.7 * 0.429); Titration -1 for both.
    EXPECT_EQ(o.runningTotal(),
              "Quantity 1400.00; Titration -1.00; SiO2 6.86; Al2O3 1.14; Fe2O3 0.43; MS 4.36; "
              "MA 2.67; LSF 2.34");
}

TEST_F(BlastOptimizationTest, OptimizeWritesTheDebugDumpAndReport)
{
    COptimizationParameters p;
    p.mode = COptimizationParameters::kMaximize;
    p.optimizedElement = "CaO";
    p.requestedTonnage = 1000;
    p.selectedSources = {"North 1", "East 2"};
    BlastOptimization o(*mDb, p);
    ASSERT_FALSE(o.addConstraint(elementIndex(Element::SiO2), 12, 15));
    // The sources follow the order of the list, so a selection typed in any order gives one blend.
    EXPECT_EQ(o.selection(), QStringList({"East 2", "North 1"}));
    const BlastOptimization::Result r = o.optimize(path("debug.txt"));
    ASSERT_TRUE(r.outcome.solved) << r.outcome.message.toStdString();
    EXPECT_TRUE(
        r.report.contains("     800.000000 tonnes of Blast North 1 (80.00% of blast, 80.00% of mix)\r\n"))
        << r.report.toStdString();
    QFile dump(path("debug.txt"));
    ASSERT_TRUE(dump.open(QIODevice::ReadOnly));
    EXPECT_EQ(dump.readLine(), QByteArray("      5.00     -5.00      0.00 IBT:    1\n"));

    o.setSelection({"North 1", "Pit 3"});
    EXPECT_EQ(o.optimize().outcome.message,
              "Error, a constraint or the element to optimize is applied to an element for which one of the "
              "sources "
              "has a missing value, optimization is aborted\nProblem first found in source Pit 3");

    o.setSelection({"North 1", "Gone"});
    EXPECT_EQ(o.optimize().outcome.message,
              "The blast \"Gone\" is no longer in the Blast table; refresh the list of sources.");
}

// A blend only the second method finds is reported under the classic message and stored, with its
// subtraction, like any other.
TEST_F(BlastOptimizationTest, BlendOfTheSecondMethodIsReportedAndStored)
{
    addBlast("Big 4", 300000.3, 0, 0, 0, {{Element::SiO2, 10}, {Element::CaO, 50}});
    addBlast("Big 5", 400000, 0, 0, 0, {{Element::SiO2, 20}, {Element::CaO, 40}});
    COptimizationParameters p;
    p.mode = COptimizationParameters::kMinimize;
    p.optimizedElement = "CaO";
    p.requestedTonnage = 600000.52;
    p.selectedSources = {"Big 4", "Big 5"};
    const BlastOptimization o(*mDb, p);
    const BlastOptimization::Result r = o.optimize();
    ASSERT_TRUE(r.outcome.solved) << r.outcome.message.toStdString();
    EXPECT_EQ(r.outcome.method, OptimizationOutcome::Method::Second);
    EXPECT_TRUE(r.report.startsWith("The system cannot reach an optimum, it is infeasible given the set of "
                                    "constraints\r\n\r\nA blend that "
                                    "meets every limit exists all the same."))
        << r.report.toStdString();
    // All of the leaner blast, the rest from the other: 200 000.52 t at 50 and 400 000 t at 40 CaO.
    EXPECT_TRUE(r.report.contains("\r\n\r\nBlast Optimization Results\r\n\r\nsuccessfully minimized CaO\r\n"))
        << r.report.toStdString();
    EXPECT_TRUE(
        r.report.contains("  200000.520000 tonnes of Blast Big 4 (66.67% of blast, 33.33% of mix)\r\n"))
        << r.report.toStdString();
    EXPECT_TRUE(
        r.report.contains("  400000.000000 tonnes of Blast Big 5 (100.00% of blast, 66.67% of mix)\r\n"))
        << r.report.toStdString();
    EXPECT_TRUE(r.report.contains("Optimized tonnage:  600000.52\r\n")) << r.report.toStdString();

    SourceUpdate::Blend blend = BlastOptimization::blendOf(r);
    blend.name = "Bed 1";
    SourceUpdate::store(*mDb, blend, BlastOptimization::takesOf(r), true);
    const std::optional<Record> bed = RecordTable(*mDb, Table::Stockpile).find({"Bed 1", " "});
    ASSERT_TRUE(bed);
    EXPECT_NEAR(bed->number("Quantity"), 600000.52, 1e-6);
    // CaO (50 x 200 000.52 + 40 x 400 000) / 600 000.52.
    EXPECT_NEAR(bed->analysis()[static_cast<std::size_t>(elementIndex(Element::CaO))], 43.333344f, 1e-4);
    EXPECT_NEAR(RecordTable(*mDb, Table::Blast).find({"Big 4", {}})->number("Quantity"), 99999.78, 1e-6);
    EXPECT_FALSE(RecordTable(*mDb, Table::Blast).find({"Big 5", {}})) << "taken whole, so deleted";
}

TEST_F(BlastOptimizationTest, OkKeepsTheStoredModeForMaximizeTonnageAndEmptiesTheWorkingCopy)
{
    Record working(Table::TempBlast);
    working.setValue("Name", "North 1");
    RecordTable(*mDb, Table::TempBlast).add(working);

    COptimizationParameters before;
    before.mode = COptimizationParameters::kMinimize;
    BlastOptimization o(*mDb, before);
    o.setModeChoice(3);
    o.setSelection({"East 2", "North 1"});
    o.setRequestedTonnage(750);
    const COptimizationParameters after = o.accept(before);
    EXPECT_EQ(after.mode, COptimizationParameters::kMinimize);
    EXPECT_EQ(after.requestedTonnage, 750);
    EXPECT_EQ(after.selectedSources, QStringList({"East 2", "North 1"}));
    EXPECT_EQ(mDb->count(Table::TempBlast), 0);

    // Choice position -> mode solved and mode stored by OK (Maximize Tonnage keeps the stored one).
    struct Case {
        int position, mode, stored;
        bool target, elementAndTonnage;
    };
    for (const Case& c :
         {Case{-1, -1, -1, false, true}, Case{0, -1, -1, false, true}, Case{1, 1, 1, false, true},
          Case{2, 0, 0, true, true}, Case{3, 2, COptimizationParameters::kMinimize, false, false}}) {
        o.setModeChoice(c.position);
        EXPECT_EQ(o.mode(), c.mode) << c.position;
        EXPECT_EQ(o.parametersForOk(before).mode, c.stored) << c.position;
        EXPECT_EQ(o.targetEnabled(), c.target) << c.position;
        EXPECT_EQ(o.elementAndTonnageEnabled(), c.elementAndTonnage) << c.position;
    }
}

} // namespace
} // namespace kilnova
