#include "optimise/StockpileOptimization.h"
#include "common/MessageTable.h"
#include "database/RecordTable.h"
#include "optimise/Explainer.h"
#include "solver/ClpSolve.h"
#include "support/ScriptedPrompt.h"
#include "support/TempProject.h"

namespace kilnova {
namespace {

constexpr int kSiO2 = elementIndex(Element::SiO2);
constexpr int kCaO = elementIndex(Element::CaO);
constexpr int kMgO = elementIndex(Element::MgO);

class StockpileOptimizationTest : public test::TempProject {
protected:
    void addMaterial(Table table, const QString& name, const QString& source, double quantity, float SiO2,
                     float CaO, float MgO = -1)
    {
        Record r(table);
        r.setValue("Name", name);
        if (table != Table::Additives) {
            r.setValue("Source", source);
            r.setValue("Quantity", quantity);
        }
        Analysis a = missingAnalysis();
        a[kSiO2] = SiO2;
        a[kCaO] = CaO;
        a[kMgO] = MgO;
        r.setAnalysis(a);
        RecordTable(*mDb, table).add(r);
    }

    void SetUp() override
    {
        TempProject::SetUp();
        addMaterial(Table::Stockpile, "Pile A", "Quarry", 100, 10, 50);
        addMaterial(Table::Stockpile, "Pile B", "Quarry", 100, 20, 40);
        addMaterial(Table::Stockpile, "Pile A", "Bed", 300, 14, 45, 2);
        addMaterial(Table::Additives, "Sand", {}, 0, 90, 1, 0.5f);
        addMaterial(Table::Additives, "Limestone", {}, 0, 2, 54, 0.5f);
    }

    /// The two quarry piles, 100 t of crude, CaO maximised.
    StockpileOptimization twoPiles()
    {
        StockpileOptimization o(*mDb, CSTKOptParameters{});
        o.setSelectedStockpiles({{"Pile B", "Quarry"}, {"Pile A", "Quarry"}});
        o.setModeChoice(1);
        o.setElement(kCaO);
        o.setRequestedTonnage(100);
        return o;
    }

    double tonnesOf(const StockpileOptimization::Result& r, const RecordKey& key)
    {
        for (std::size_t j = 0; j < r.keys.size(); ++j) {
            if (r.keys[j] == key)
                return r.outcome.tonnes(j);
        }
        ADD_FAILURE() << "no source " << key.name.toStdString();
        return -1;
    }
};

TEST_F(StockpileOptimizationTest, ALeftLimitChangesTheAnswerOfTwoPiles)
{
    // Without a limit on what is left, all 100 t come from Pile A (CaO 50). Holding the SiO2 left in
    // the piles at 16 or below means, with 100 t left of the 200, 10 (100 - a) + 20 (100 - b) <= 1600
    // and a + b = 100: a <= 60. The crude is then 60 t of A and 40 t of B.
    struct Case {
        const char* name;
        std::optional<double> leftMaximum;
        double a, b;
        const char* leftLine;
    };
    const Case cases[] = {
        {"no left limit", std::nullopt, 100, 0,
         "  Titration      -1.00        SiO2      20.00       Al2O3      -1.00       Fe2O3      -1.00\r\n"
         "        CaO      40.00 "},
        {"SiO2 left at most 16", 16.0, 60, 40,
         "  Titration      -1.00        SiO2      16.00       Al2O3      -1.00       Fe2O3      -1.00\r\n"
         "        CaO      44.00 "},
    };
    for (const Case& c : cases) {
        StockpileOptimization o = twoPiles();
        if (c.leftMaximum) {
            ASSERT_FALSE(o.addLeftConstraint(kSiO2, 0, *c.leftMaximum));
        }
        const StockpileOptimization::Result r = o.optimize();
        ASSERT_TRUE(r.outcome.solved) << c.name << ": " << r.outcome.message.toStdString();
        EXPECT_NEAR(tonnesOf(r, {"Pile A", "Quarry"}), c.a, 1e-4) << c.name;
        EXPECT_NEAR(tonnesOf(r, {"Pile B", "Quarry"}), c.b, 1e-4) << c.name;
        EXPECT_TRUE(r.report.contains(QStringLiteral("Left tonnage:     100.00\r\n") + c.leftLine))
            << c.name << "\n"
            << r.report.toStdString();
    }
}

TEST_F(StockpileOptimizationTest, LeftRowsAreOnThePilesOnlyAndTheirRightHandSideIsWhatTheyHold)
{
    StockpileOptimization o = twoPiles();
    o.setSelectedAdditives({"Sand"});
    ASSERT_FALSE(o.addLeftConstraint(kSiO2, 12, 16));
    ASSERT_FALSE(o.addConstraint(kCaO, 40, 48));
    const StockpileOptimization::Result r = o.optimize();
    ASSERT_TRUE(r.outcome.solved) << r.outcome.message.toStdString();
    const LinearProgramme lp = OptimizationModel().build(r.problem, 1);
    using Role = LinearProgramme::Role;
    // Sources: Pile A (10), Pile B (20), Sand (90, no tonnage). Left rows: (v - 16)·x >= (v - 16)·Q
    // over the piles, -6·100 + 4·100 = -200; then (v - 12)·x <= -2·100 + 8·100 = 600.
    const std::vector<LinearProgramme::Row> expectedTail = {
        {{1, 1, 1}, 100, ClpSolve::kEqual, Role::Tonnage, -1},
        {{-6, 4, 0}, -200, ClpSolve::kAtLeast, Role::RemainderMaximum, kSiO2},
        {{-2, 8, 0}, 600, ClpSolve::kAtMost, Role::RemainderMinimum, kSiO2},
    };
    ASSERT_GE(lp.rowList.size(), expectedTail.size());
    for (std::size_t i = 0; i < expectedTail.size(); ++i) {
        const LinearProgramme::Row& row = lp.rowList[lp.rowList.size() - expectedTail.size() + i];
        EXPECT_EQ(row.coefficients, expectedTail[i].coefficients) << i;
        EXPECT_EQ(row.rhs, expectedTail[i].rhs) << i;
        EXPECT_EQ(row.kind, expectedTail[i].kind) << i;
        EXPECT_EQ(row.role, expectedTail[i].role) << i;
        EXPECT_EQ(row.index, expectedTail[i].index) << i;
    }
    // CaO rows first; the sand has a lower row only.
    EXPECT_EQ(lp.rowList[0].role, Role::ElementMaximum);
    EXPECT_EQ(lp.rowList[0].coefficients, (std::vector<double>{2, -8, -47}));
    EXPECT_EQ(lp.rows, 2 + 5 + 1 + 2);
    EXPECT_EQ(lp.countAtLeast, 1 + 3 + 1);
    EXPECT_EQ(lp.countAtMost, 1 + 2 + 1);
}

TEST_F(StockpileOptimizationTest, RefusalsAndFailuresComeAsMessages)
{
    struct Case {
        const char* name;
        std::function<void(StockpileOptimization&)> change;
        QString message;
    };
    const Case cases[] = {
        {"one source",
         [](StockpileOptimization& o) {
             o.setSelectedStockpiles({{"Pile A", "Quarry"}});
         },
         "Please, select at least 2 sources"},
        {"left limits no choice meets",
         [](StockpileOptimization& o) { ASSERT_FALSE(o.addLeftConstraint(kSiO2, 0, 5)); },
         "The system cannot reach an optimum, it is infeasible given the set of constraints"},
        // MgO is not measured on the quarry piles: a left limit on it cannot be judged.
        {"left limit on a value a pile lacks",
         [](StockpileOptimization& o) { ASSERT_FALSE(o.addLeftConstraint(kMgO, 0, 3)); },
         message(Msg::MissingValueInSource, {"Pile A (Quarry)"})},
        // The records removed stay removed for the cases after.
        {"additive gone",
         [this](StockpileOptimization& o) {
             o.setSelectedAdditives({"Sand"});
             RecordTable(*mDb, Table::Additives).remove({"Sand", {}});
         },
         "The additive \"Sand\" is no longer in the Additives table; refresh the list of sources."},
        {"stockpile gone",
         [this](StockpileOptimization&) {
             RecordTable(*mDb, Table::Stockpile).remove({"Pile B", "Quarry"});
         },
         "The stockpile \"Pile B (Quarry)\" is no longer in the Stockpile table; refresh the list of "
         "sources."},
    };
    for (const Case& c : cases) {
        StockpileOptimization o = twoPiles();
        c.change(o);
        const StockpileOptimization::Result r = o.optimize();
        EXPECT_FALSE(r.outcome.solved) << c.name;
        EXPECT_EQ(r.outcome.message, c.message) << c.name;
        EXPECT_TRUE(r.report.isEmpty()) << c.name;
    }
}

TEST_F(StockpileOptimizationTest, EverythingTakenMeetsAnyLeftLimit)
{
    StockpileOptimization o = twoPiles();
    o.setRequestedTonnage(200);
    ASSERT_FALSE(o.addLeftConstraint(kSiO2, 0, 5));
    const StockpileOptimization::Result r = o.optimize();
    ASSERT_TRUE(r.outcome.solved) << r.outcome.message.toStdString();
    EXPECT_TRUE(r.report.endsWith(
        "Nothing is left in the stockpiles: the limits on the material left hold trivially.\r\n"));
}

TEST_F(StockpileOptimizationTest, AdditivesAreBoughtAsNeededAndNeverSubtracted)
{
    // 1000 t of crude from 200 t of piles: the limestone, with no tonnage of its own, makes up the
    // rest. The least CaO takes both piles whole and 800 t of limestone.
    StockpileOptimization o = twoPiles();
    o.setSelectedAdditives({"Limestone"});
    o.setRequestedTonnage(1000);
    o.setModeChoice(0); // Minimize
    ASSERT_FALSE(o.addConstraint(kCaO, 48, 60));
    const StockpileOptimization::Result r = o.optimize();
    ASSERT_TRUE(r.outcome.solved) << r.outcome.message.toStdString();
    EXPECT_NEAR(tonnesOf(r, {"Pile A", "Quarry"}), 100, 1e-4);
    EXPECT_NEAR(tonnesOf(r, {"Pile B", "Quarry"}), 100, 1e-4);
    EXPECT_NEAR(tonnesOf(r, {"Limestone", {}}), 800, 1e-4);
    EXPECT_EQ(StockpileOptimization::takesOf(r).size(), 2u) << "nothing is taken from the Additives table";

    test::ScriptedPrompt ui;
    ui.textAnswers = {QStringLiteral("Crude 1")};
    ui.yesNoAnswers = {true};
    ASSERT_TRUE(SourceUpdate::storeAsking(*mDb, ui, message(Msg::CrudeNamePrompt),
                                          StockpileOptimization::crudeOf(r),
                                          StockpileOptimization::takesOf(r)));
    EXPECT_EQ(ui.questions.first(), "Enter a name for this Crude");
    const std::optional<Record> crude = RecordTable(*mDb, Table::Crude).find({"Crude 1", " "});
    ASSERT_TRUE(crude);
    EXPECT_NEAR(crude->number("Quantity"), 1000, 1e-4);
    // (100·50 + 100·40 + 800·54) / 1000
    EXPECT_NEAR(crude->analysis()[kCaO], 52.2f, 1e-5);
    // Both quarry piles were emptied, backed up first; the bed and the additives are untouched.
    EXPECT_FALSE(RecordTable(*mDb, Table::Stockpile).find({"Pile A", "Quarry"}));
    EXPECT_FALSE(RecordTable(*mDb, Table::Stockpile).find({"Pile B", "Quarry"}));
    EXPECT_TRUE(RecordTable(*mDb, Table::Stockpile).find({"Pile A", "Bed"}));
    EXPECT_EQ(RecordTable(*mDb, Table::BackupStockpile).count(), 2);
    EXPECT_EQ(RecordTable(*mDb, Table::Additives).count(), 2);
    EXPECT_EQ(
        ui.messageTexts(),
        QStringList{"Stored \"Crude 1\" (1000.00 t) in the Crude table. Subtracted 200.00 t from 2 source "
                    "record(s), 2 of them deleted. Backup rows made: 2 in backup-Stockpile."});

    // The same run again rests on piles that are gone: nothing is stored.
    ui.textAnswers = {QStringLiteral("Crude 2")};
    ui.yesNoAnswers = {true};
    EXPECT_FALSE(SourceUpdate::storeAsking(*mDb, ui, message(Msg::CrudeNamePrompt),
                                           StockpileOptimization::crudeOf(r),
                                           StockpileOptimization::takesOf(r)));
    EXPECT_FALSE(RecordTable(*mDb, Table::Crude).find({"Crude 2", " "}));
}

TEST_F(StockpileOptimizationTest, TheChartShowsTheCrudeAgainstItsLimits)
{
    // As above: CaO 52.2 in 1000 t, within 48..60, the optimised element.
    StockpileOptimization o = twoPiles();
    o.setSelectedAdditives({"Limestone"});
    o.setRequestedTonnage(1000);
    o.setModeChoice(0);
    ASSERT_FALSE(o.addConstraint(kCaO, 48, 60));
    const BlendChartData chart = StockpileOptimization::chartOf(o.optimize());
    EXPECT_NEAR(chart.tonnage, 1000.0, 1e-4) << "solved in single precision";
    ASSERT_EQ(chart.rows.size(), 1u);
    EXPECT_EQ(chart.rows[0].element, kCaO);
    EXPECT_TRUE(chart.rows[0].optimised);
    ASSERT_TRUE(chart.rows[0].band);
    EXPECT_EQ((*chart.rows[0].band)[0], 48.0);
    EXPECT_EQ((*chart.rows[0].band)[1], 60.0);
    EXPECT_NEAR(chart.rows[0].value, 52.2, 1e-4);
    EXPECT_EQ(chart.rows[0].binding, BlendChartData::Binding::None);
}

TEST_F(StockpileOptimizationTest, SelectionByTextAndListOrder)
{
    StockpileOptimization o(*mDb, CSTKOptParameters{});
    const std::vector<RecordKey> keys = o.stockpileKeys();
    const std::vector<RecordKey> expected = {
        {"Actual 1", "Actual"}, {"Actual 2", "Actual"}, {"Actual 3", "Actual"}, {"Actual 4", "Actual"},
        {"Pile A", "Bed"},      {"Pile A", "Quarry"},   {"Pile B", "Quarry"}};
    EXPECT_EQ(keys, expected);
    EXPECT_EQ(o.additiveNames(), QStringList({"Limestone", "Sand"}));

    EXPECT_FALSE(o.selectByText({"Sand", "pile b (quarry)", "Pile A (Bed)"}));
    EXPECT_EQ(o.selectedStockpiles(), (std::vector<RecordKey>{{"Pile A", "Bed"}, {"Pile B", "Quarry"}}));
    EXPECT_EQ(o.selectedAdditives(), QStringList({"Sand"}));
    EXPECT_EQ(
        o.selectByText({"Pile A (Bed)", "Pile C (Bed)"}),
        "\"Pile C (Bed)\" is neither a stockpile, written NAME (SOURCE), nor an additive of this database.");
    EXPECT_EQ(o.selectedAdditives(), QStringList({"Sand"})) << "a refused selection changes nothing";

    struct Parse {
        const char* text;
        std::optional<RecordKey> key;
    };
    const Parse parses[] = {{"Pile A (Bed)", RecordKey{"Pile A", "Bed"}},
                            {"Bed (north) (Pre-blending)", RecordKey{"Bed (north)", "Pre-blending"}},
                            {"X ()", RecordKey{"X", ""}},
                            {"Sand", std::nullopt},
                            {" (Bed)", std::nullopt}};
    for (const Parse& p : parses)
        EXPECT_EQ(StockpileOptimization::parseKeyText(p.text), p.key) << p.text;
}

TEST_F(StockpileOptimizationTest, SettingsComeBackWithTheirListOrder)
{
    StockpileOptimization o(*mDb, CSTKOptParameters{});
    o.setModeChoice(2);
    o.setElement(kCaO);
    o.setTarget(44.5);
    o.setRequestedTonnage(900);
    ASSERT_FALSE(o.addConstraint(kMgO, 0, 2));
    ASSERT_FALSE(o.addConstraint(kSiO2, 12, 15));
    ASSERT_FALSE(o.addLeftConstraint(kCaO, 40, 50));
    o.setSelectedStockpiles({{"Pile B", "Quarry"}, {"Pile A", "Bed"}});
    o.setSelectedAdditives({"Sand"});

    const CSTKOptParameters p = o.parameters(CSTKOptParameters{});
    EXPECT_EQ(p.mode, 0);
    EXPECT_EQ(p.optimizedElement, "CaO");
    EXPECT_EQ(p.productConstraints[kMgO], (CSTKOptParameters::Entry{0, 2, "0.00 <= MgO <= 2.00", 1, 1}));
    EXPECT_EQ(p.productConstraints[kSiO2],
              (CSTKOptParameters::Entry{12, 15, "12.00 <= SiO2 <= 15.00", 1, 2}));
    EXPECT_EQ(p.productConstraints[kCaO], CSTKOptParameters::Entry{});
    EXPECT_EQ(p.remainderConstraints[kCaO],
              (CSTKOptParameters::Entry{40, 50, "40.00 <= CaO <= 50.00", 1, 1}));
    EXPECT_EQ(p.stockpileCount, 2);
    EXPECT_EQ(p.sources, QStringList({"Pile A", "Bed", "Pile B", "Quarry", "Sand"}));

    const StockpileOptimization back(*mDb, p);
    EXPECT_EQ(back.constraintTexts(), QStringList({"0.00 <= MgO <= 2.00", "12.00 <= SiO2 <= 15.00"}))
        << "MgO was added first and stays first";
    EXPECT_EQ(back.leftConstraintTexts(), QStringList({"40.00 <= CaO <= 50.00"}));
    EXPECT_EQ(back.selectedStockpiles(), o.selectedStockpiles());
    EXPECT_EQ(back.selectedAdditives(), QStringList({"Sand"}));
    EXPECT_EQ(back.parameters(CSTKOptParameters{}), p);

    // A count beyond the list claims every string for the stockpiles: the pairs that are there are
    // read, the odd string left is half a pair. Entries without a position follow the others.
    CSTKOptParameters odd = p;
    odd.stockpileCount = 7;
    odd.productConstraints[kSiO2].position = 0;
    const StockpileOptimization oddBack(*mDb, odd);
    EXPECT_EQ(oddBack.selectedStockpiles(), o.selectedStockpiles());
    EXPECT_TRUE(oddBack.selectedAdditives().isEmpty()) << "the fifth string is half a pair";
    EXPECT_EQ(oddBack.constraintTexts(), QStringList({"0.00 <= MgO <= 2.00", "12.00 <= SiO2 <= 15.00"}));
}

TEST_F(StockpileOptimizationTest, LeftConstraintsHaveTheListRulesButNoTargetRule)
{
    StockpileOptimization o(*mDb, CSTKOptParameters{});
    o.setModeChoice(2);
    o.setElement(kCaO);
    EXPECT_EQ(o.addConstraint(kCaO, 40, 50),
              "You cannot add a constraint on the optimized element in Target mode");
    EXPECT_FALSE(o.addLeftConstraint(kCaO, 40, 50)) << "the target is on the crude";
    EXPECT_EQ(o.addLeftConstraint(kCaO, 1, 2), "A constraint on this variable has already been set");
    EXPECT_FALSE(o.modifyLeftConstraint(0, kSiO2, 10, 20));
    EXPECT_EQ(o.leftConstraintTexts(), QStringList({"10.00 <= SiO2 <= 20.00"}));
    o.removeLeftConstraint(0);
    EXPECT_TRUE(o.leftConstraintTexts().isEmpty());
}

// With b t of Pile B in 100 t of crude (a + b = 100, 100 t left), the crude holds 10 + 0.1 b of SiO2
// and what is left 20 - 0.1 b. At most 13 in the crude wants b <= 30, at most 16 left wants b >= 40.
// Each needed value, every other limit kept: the crude at 14 (b = 40), what is left at 17 (b = 30).
// Without its tonnage row the piles may stay whole (15 left), so the tonnage is part of the conflict:
// b <= 0.3 T and -6 a + 4 b >= -200 (the row of the left maximum) meet up to T = 66.67 t.
TEST_F(StockpileOptimizationTest, ExplainsAConflictOfTheCrudeWithWhatIsLeft)
{
    struct Limits {
        double crudeMaximum = 13, leftMaximum = 16, tonnage = 100;
    };
    auto optimize = [this](Limits l) {
        StockpileOptimization o = twoPiles();
        o.setRequestedTonnage(l.tonnage);
        EXPECT_FALSE(o.addConstraint(kSiO2, 0, l.crudeMaximum));
        EXPECT_FALSE(o.addLeftConstraint(kSiO2, 0, l.leftMaximum));
        return o.optimize();
    };
    const StockpileOptimization::Result r = optimize({});
    ASSERT_FALSE(r.outcome.solved);
    const OptimizationModel model;
    const Explanation e = Explainer(model).explain(r.outcome, elementNames());
    ASSERT_EQ(e.status, Explanation::Status::Infeasible) << e.statement.toStdString();
    EXPECT_EQ(e.text(), "Why no blend was found\r\n\r\n"
                        "These limits cannot hold together:\r\n"
                        "  SiO2 maximum 13.00: raise it to 14.00\r\n"
                        "  SiO2 maximum of the material left 16.00: raise it to 17.00\r\n"
                        "  Requested tonnage 100.00 t: lower it to 66.00 t\r\n"
                        "Any one of these changes, every other limit kept, makes a blend possible.\r\n");
    ASSERT_EQ(e.conflict.size(), 3u);
    EXPECT_EQ(e.conflict[1].limit, (UserLimit{UserLimit::Kind::RemainderMaximum, kSiO2}));
    EXPECT_EQ(e.json()["conflict"][1]["kind"], "remainder maximum");

    // The proposed value solves; a step short of it does not.
    struct Case {
        const char* what;
        Limits limits;
        bool solved;
    };
    const Case cases[] = {
        {"crude at 14", {14, 16, 100}, true},  {"crude at 13.99", {13.99, 16, 100}, false},
        {"left at 17", {13, 17, 100}, true},   {"left at 16.99", {13, 16.99, 100}, false},
        {"66 t of crude", {13, 16, 66}, true}, {"67 t of crude", {13, 16, 67}, false},
    };
    for (const Case& c : cases)
        EXPECT_EQ(optimize(c.limits).outcome.solved, c.solved) << c.what;
}

} // namespace
} // namespace kilnova
