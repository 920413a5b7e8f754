#include "optimise/CoalOptimization.h"
#include "CoalTestData.h"
#include "common/ArchiveReader.h"
#include "common/ArchiveWriter.h"
#include "common/MessageTable.h"
#include "database/DatabaseError.h"
#include "database/RecordTable.h"
#include "support/ScriptedPrompt.h"
#include "support/TempProject.h"

#include <QDir>
#include <QFile>

#include <functional>

namespace kilnova {
namespace {

constexpr int kBTU = coalPropertyIndex(CoalProperty::BTU);
constexpr int kAsh = coalPropertyIndex(CoalProperty::Ash);
constexpr int kSulfur = coalPropertyIndex(CoalProperty::Sulfur);
constexpr int kSiO2 = coalPropertyIndex(CoalProperty::SiO2);
constexpr int kMS = coalPropertyIndex(CoalProperty::MS);
constexpr int kC3S = coalPropertyIndex(CoalProperty::C3S);
constexpr int kCost = coalPropertyIndex(CoalProperty::CostFactor);

class CoalOptimizationTest : public test::TempProject {
protected:
    void SetUp() override
    {
        TempProject::SetUp();
        for (const CoalSource& c : test::twoCoals())
            RecordTable(*mDb, Table::Coal).add(test::coalRecord(c));
    }

    /// Minimum cost of 1000 t from both coals.
    CCoalOptParameters parameters() const
    {
        CCoalOptParameters p;
        p.mode = -1;
        p.optimizedElement = "Cost Factor";
        p.requestedTonnage = 1000;
        return p;
    }

    CoalOptimization optimization(const CCoalOptParameters& p) const
    {
        CoalOptimization o(*mDb, p);
        o.setSelection({"C2", "C1"});
        return o;
    }

    /// A new database with the two coals; the old connection is closed first.
    void fresh()
    {
        mDb.reset();
        SetUp();
    }

    void setCoal(const char* name, const char* column, double value)
    {
        RecordTable coals(*mDb, Table::Coal);
        Record r = *coals.find({name, {}});
        r.setValue(column, value);
        coals.update(r);
    }
};

TEST_F(CoalOptimizationTest, LimitsAndObjectivesOnTheAshCountByTheTonnesOfAsh)
{
    struct Case {
        const char* what;
        int mode;
        int property;
        double target;
        std::vector<ElementBound> limits;
        double C1;
    };
    // x1 + x2 = 1000; C1 costs 90 and C2 60, so the cheapest mix takes as much C2 as it may.
    const std::vector<Case> cases = {
        // (500 x1 + 900 x2) / (10 x1 + 30 x2) >= 36: 140 x1 >= 180 x2. By the tonne it would be x1 = 300.
        {"SiO2 of the ash", -1, kCost, 0, {{kSiO2, 36, 100}}, 562.5},
        // (500 x1 + 900 x2) >= 1.1 ((250 + 100) x1 + (450 + 600) x2): 115 x1 >= 255 x2.
        {"MS on the oxides of the ash", -1, kCost, 0, {{kMS, 1.1, 5}}, 1000.0 * 255 / 370},
        // The fuel's own values by the tonne: x1 + 2 x2 <= 1400, 10 x1 + 30 x2 <= 20000.
        {"Sulfur by the tonne", -1, kCost, 0, {{kSulfur, 0, 1.4}}, 600},
        {"Ash by the tonne", -1, kCost, 0, {{kAsh, 0, 20}}, 500},
        // Most SiO2 in the ash: 500 x1 + 900 x2 favours C2, as far as the sulfur lets it (by the tonne,
        // 50 x1 + 30 x2 would take only C1).
        {"an objective on the ash", 1, kSiO2, 0, {{kSulfur, 0, 1.4}}, 600},
        // 500 x1 + 900 x2 = 40 (10 x1 + 30 x2): 100 x1 = 300 x2.
        {"a target on the ash", 0, kSiO2, 40, {}, 750},
        {"BTU by the tonne", 1, kBTU, 0, {{kSulfur, 0, 1.25}}, 750},
    };
    for (const Case& c : cases) {
        CCoalOptParameters p = parameters();
        p.mode = c.mode;
        p.optimizedElement = CoalProperties::names()[c.property];
        p.target = c.target;
        CoalOptimization o = optimization(p);
        for (const ElementBound& b : c.limits)
            ASSERT_FALSE(o.addConstraint(b.element, b.minimum, b.maximum)) << c.what;
        const CoalOptimization::Result r = o.optimize();
        ASSERT_TRUE(r.outcome.solved) << c.what << ": " << r.outcome.message.toStdString();
        ASSERT_EQ(r.coals.size(), 2u);
        EXPECT_EQ(r.coals[0].name, "C1") << "the list's order";
        EXPECT_NEAR(r.outcome.tonnes(0), c.C1, 1e-3) << c.what;
        EXPECT_NEAR(r.outcome.tonnes(1), 1000 - c.C1, 1e-3) << c.what;
        EXPECT_NEAR(r.mix.tonnage, 1000, 1e-3) << c.what;
        EXPECT_TRUE(r.report.startsWith("Coal Optimization Results\r\n\r\n")) << c.what;
    }
}

TEST_F(CoalOptimizationTest, BadInputGivesAClearMessageAndNoReport)
{
    const QString missing1 = message(Msg::MissingValueInSource, {"C1"});
    struct Case {
        const char* what;
        std::function<void(CoalOptimization&)> change;
        QString message;
    };
    const std::vector<Case> cases = {
        {"one coal", [](CoalOptimization& o) { o.setSelection({"C1"}); },
         "Please, select at least 2 sources"},
        {"an ash limit, a coal without its Ash",
         [this](CoalOptimization& o) {
             setCoal("C1", "Ash", -1);
             o.addConstraint(kSiO2, 0, 60);
         },
         missing1},
        {"an ash limit, a coal with Ash 0",
         [this](CoalOptimization& o) {
             setCoal("C2", "Ash", 0);
             o.addConstraint(kSiO2, 0, 60);
         },
         "Error, a constraint or the element to optimize is applied to the ash analysis, which coal C2 "
         "cannot "
         "weigh: its Ash is 0.00, optimization is aborted"},
        {"the ash optimised, no coal with ash",
         [this](CoalOptimization& o) {
             setCoal("C1", "Ash", 0);
             setCoal("C2", "Ash", 0);
             o.setElement(kSiO2);
         },
         "Error, a constraint or the element to optimize is applied to the ash analysis, which coal C1 "
         "cannot "
         "weigh: its Ash is 0.00, optimization is aborted"},
        {"a missing value under a limit", [](CoalOptimization& o) { o.addConstraint(kC3S, 0, 60); },
         missing1},
        {"a missing Quantity", [this](CoalOptimization&) { setCoal("C1", "Quantity", -1); }, missing1},
        {"more tonnes than the coals hold", [](CoalOptimization& o) { o.setRequestedTonnage(2000.5); },
         "The requested tonnage, 2000.50 t, is more than the chosen coals hold, 2000.00 t. Choose more coals "
         "or "
         "ask for less."},
        {"limits no mix meets", [](CoalOptimization& o) { o.addConstraint(kSulfur, 0, 0.5); },
         message(Msg::Infeasible)},
        {"a coal deleted meanwhile",
         [this](CoalOptimization&) {
             RecordTable(*mDb, Table::Coal).remove({"C2", {}});
         },
         "The coal \"C2\" is no longer in the Coal table; refresh the list of sources."},
    };
    for (const Case& c : cases) {
        fresh();
        CoalOptimization o = optimization(parameters());
        c.change(o);
        const CoalOptimization::Result r = o.optimize();
        EXPECT_FALSE(r.outcome.solved) << c.what;
        EXPECT_EQ(r.outcome.message, c.message) << c.what;
        EXPECT_TRUE(r.report.isEmpty()) << c.what;
    }
}

TEST_F(CoalOptimizationTest, WhatTheRunDoesNotUseMayBeMissing)
{
    struct Case {
        const char* what;
        std::function<void(CoalOptimization&)> change;
    };
    const std::vector<Case> cases = {
        {"no Ash, nothing on the ash asked for",
         [this](CoalOptimization& o) {
             setCoal("C1", "Ash", -1);
             o.addConstraint(kSulfur, 0, 1.4);
         }},
        {"Maximize Tonnage has no tonnage row to exceed",
         [](CoalOptimization& o) {
             o.setModeChoice(3);
             o.setElement(kBTU);
             o.setRequestedTonnage(5000);
         }},
    };
    for (const Case& c : cases) {
        fresh();
        CoalOptimization o = optimization(parameters());
        c.change(o);
        const CoalOptimization::Result r = o.optimize();
        EXPECT_TRUE(r.outcome.solved) << c.what << ": " << r.outcome.message.toStdString();
    }
}

TEST_F(CoalOptimizationTest, StoresTheMixAsACoalAndSubtractsWithoutBackup)
{
    CoalOptimization o = optimization(parameters());
    ASSERT_FALSE(o.addConstraint(kSulfur, 1.5, 1.5));
    const CoalOptimization::Result r = o.optimize();
    ASSERT_TRUE(r.outcome.solved) << r.outcome.message.toStdString();
    // x1 + 2 x2 = 1500 and x1 + x2 = 1000.
    ASSERT_NEAR(r.outcome.tonnes(0), 500, 1e-3);

    test::ScriptedPrompt ui;
    ui.textAnswers = {QStringLiteral("c1"), QStringLiteral("Mix 'A'")};
    ui.choiceAnswers = {2}; // another name
    ui.yesNoAnswers = {true};
    ASSERT_TRUE(SourceUpdate::storeAsking(*mDb, ui, message(Msg::CoalNamePrompt),
                                          CoalOptimization::blendOf(r), CoalOptimization::takesOf(r),
                                          CoalOptimization::subtractQuestion()));
    EXPECT_EQ(
        ui.questions,
        QStringList({"Enter a name for this coal",
                     message(Msg::NameTakenQuestion, {"Coal", message(Msg::OneRecord), "c1"}),
                     "Enter a name for this coal",
                     "Would you like to update the source records by subtracting the quantities (Blast, "
                     "Stockpile, Crude, Coal) taken by this optimisation?\n\nThe Coal table has no "
                     "backup: subtracted quantities cannot be restored."}));
    EXPECT_EQ(
        ui.messageTexts(),
        QStringList{"Stored \"Mix 'A'\" (1000.00 t) in the Coal table. Subtracted 1000.00 t from 2 source "
                    "record(s), 0 of them deleted. No backup rows were made."});

    const std::optional<Record> mix = RecordTable(*mDb, Table::Coal).find({"Mix 'A'", {}});
    ASSERT_TRUE(mix);
    // Half of each: the fuel values by the tonne, the ash (10 and 30 t of ash in 40) by the ash.
    const std::vector<std::pair<const char*, double>> stored = {
        {"Quantity", 1000}, {"BTU", 13000}, {"Ash", 20},     {"Humidity", 7.5}, {"Volatiles", 26},
        {"Sulfur", 1.5},    {"SiO2", 35},   {"Al2O3", 17.5}, {"Fe2O3", 17.5},   {"CaO", 16.25},
        {"CostFactor", 75}, {"MS", 1.0},    {"MA", 1.0},     {"C4AF", 53.2},    {"Cl", 0.035},
    };
    for (const auto& [column, value] : stored)
        EXPECT_NEAR(mix->number(column), value, 2e-4 * std::max(1.0, value)) << column;
    EXPECT_NEAR(RecordTable(*mDb, Table::Coal).find({"C1", {}})->number("Quantity"), 500, 1e-3);
    for (Table backup : {Table::BackupBlast, Table::BackupStockpile, Table::BackupStdBlast})
        EXPECT_EQ(mDb->count(backup), 0);

    // The same run again rests on coals that have changed: nothing is stored.
    try {
        SourceUpdate::Blend again = CoalOptimization::blendOf(r);
        again.name = "Mix B";
        SourceUpdate::store(*mDb, again, CoalOptimization::takesOf(r), true);
        ADD_FAILURE() << "stored on changed coals";
    } catch (const DatabaseError& e) {
        EXPECT_EQ(e.message(), message(Msg::SourceChanged, {"coal \"C1\""}));
    }
    EXPECT_FALSE(RecordTable(*mDb, Table::Coal).find({"Mix B", {}}));
}

TEST_F(CoalOptimizationTest, TheChartShowsTheMixAgainstItsLimitsInTheReportsUnits)
{
    using B = BlendChartData::Binding;
    struct Row {
        int property;
        const char* name;
        const char* unit;
        std::optional<double> value; ///< none: as the report's mix has it
        B binding;
    };
    struct Case {
        const char* what;
        CCoalOptParameters parameters;
        std::vector<ElementBound> limits;
        const char* caption;
        std::vector<Row> rows;
    };
    CCoalOptParameters target = parameters();
    target.mode = 0;
    target.optimizedElement = "BTU";
    target.target = 13000;
    const std::vector<Case> cases = {
        // The cheapest mix whose ash holds 36% SiO2 (562.5 t of C1, 437.5 t of C2) costs 76.875; C4AF,
        // past the 22 elements, keeps its row, with the mixed ash's value the report prints.
        {"ash limits",
         parameters(),
         {{kSiO2, 36, 100}, {coalPropertyIndex(CoalProperty::C4AF), 0, 100}},
         "Coal mix of 1000.00 t; oxides, moduli and phases of its ash",
         {{kSiO2, "SiO2", "%", 36, B::Minimum},
          {kCost, "Cost Factor", "", 76.875, B::None},
          {coalPropertyIndex(CoalProperty::C4AF), "C4AF", "%", std::nullopt, B::None}}},
        // 13000 BTU/lb needs half of each (12000 + 2 x2 = 13000), which holds sulfur at its 1.5.
        {"fuel values",
         target,
         {{kSulfur, 0, 1.5}},
         "Coal mix of 1000.00 t",
         {{kBTU, "BTU", "BTU/lb", 13000, B::None}, {kSulfur, "Sulfur", "%", 1.5, B::Maximum}}},
    };
    for (const Case& c : cases) {
        CoalOptimization o = optimization(c.parameters);
        for (const ElementBound& l : c.limits)
            ASSERT_FALSE(o.addConstraint(l.element, l.minimum, l.maximum)) << c.what;
        const CoalOptimization::Result r = o.optimize();
        ASSERT_TRUE(r.outcome.solved) << c.what << ": " << r.outcome.message.toStdString();
        const BlendChartData chart = CoalOptimization::chartOf(r);
        EXPECT_EQ(chart.caption, QString::fromUtf8(c.caption)) << c.what;
        EXPECT_EQ(chart.mode, c.parameters.mode);
        EXPECT_NEAR(chart.tonnage, 1000, 1e-6);
        ASSERT_EQ(chart.rows.size(), c.rows.size()) << c.what;
        for (std::size_t i = 0; i < c.rows.size(); ++i) {
            const BlendChartData::Row& row = chart.rows[i];
            const Row& want = c.rows[i];
            EXPECT_EQ(row.element, want.property) << c.what << " row " << i;
            EXPECT_EQ(row.quantity.name, QString::fromUtf8(want.name));
            EXPECT_EQ(row.quantity.unit, QString::fromUtf8(want.unit)) << want.name;
            EXPECT_EQ(row.quantity.decimals, 2) << "the report's %10.2lf";
            const double value =
                want.value.value_or(r.mix.properties[static_cast<std::size_t>(want.property)]);
            EXPECT_NEAR(row.value, value, 1e-4 * std::max(1.0, value)) << c.what << ": " << want.name;
            EXPECT_EQ(row.binding, want.binding) << c.what << ": " << want.name;
            EXPECT_EQ(row.optimised, want.property == o.element()) << want.name;
            EXPECT_EQ(row.target.has_value(), row.optimised && c.parameters.mode == 0) << want.name;
        }
    }

    // A run that found no mix draws nothing.
    CCoalOptParameters tooMuch = parameters();
    tooMuch.requestedTonnage = 5000;
    const CoalOptimization::Result refused = optimization(tooMuch).optimize();
    ASSERT_FALSE(refused.outcome.solved);
    EXPECT_TRUE(CoalOptimization::chartOf(refused).rows.empty());
}

TEST_F(CoalOptimizationTest, ACoalLeftWithATenthOfATonneOrLessIsDeleted)
{
    setCoal("C1", "Quantity", 100.1);
    setCoal("C2", "Quantity", 100.11);
    SourceUpdate::Blend blend{Table::Coal, "Mix", 200, {}};
    blend.values.fill(-1);
    SourceUpdate::store(
        *mDb, blend, {takeAsRead(Table::Coal, {"C1", {}}, 100.0), takeAsRead(Table::Coal, {"C2", {}}, 100.0)},
        true);
    EXPECT_FALSE(RecordTable(*mDb, Table::Coal).find({"C1", {}})) << "0.1 t left";
    EXPECT_NEAR(RecordTable(*mDb, Table::Coal).find({"C2", {}})->number("Quantity"), 0.11, 1e-9);
    EXPECT_EQ(RecordTable(*mDb, Table::Coal).names(), QStringList({"C2", "Mix"}));
}

TEST_F(CoalOptimizationTest, AStoreThatCannotBeWrittenChangesNothing)
{
    // 500 t of each: both coals are changed, neither deleted.
    CoalOptimization o = optimization(parameters());
    ASSERT_FALSE(o.addConstraint(kSulfur, 1.5, 1.5));
    const CoalOptimization::Result r = o.optimize();
    ASSERT_TRUE(r.outcome.solved);
    struct Case {
        const char* what;
        std::function<void()> breakIt;
        QString message;
    };
    const std::vector<Case> cases = {
        {"the database file is gone", [this] { ASSERT_TRUE(QFile::remove(path("project.kndb"))); },
         message(Msg::DatabaseFileGone, {QDir::toNativeSeparators(path("project.kndb"))})},
        {"a write fails half way",
         [this] {
             ASSERT_EQ(rawExec("CREATE TRIGGER refuse BEFORE UPDATE ON [Coal] BEGIN SELECT RAISE(ABORT, "
                               "'disk full'); END"),
                       "");
         },
         message(Msg::DatabaseOperationFailed)},
    };
    for (const Case& c : cases) {
        fresh();
        c.breakIt();
        test::ScriptedPrompt ui;
        ui.textAnswers = {QStringLiteral("Mix")};
        ui.yesNoAnswers = {true};
        EXPECT_FALSE(SourceUpdate::storeAsking(*mDb, ui, message(Msg::CoalNamePrompt),
                                               CoalOptimization::blendOf(r), CoalOptimization::takesOf(r),
                                               CoalOptimization::subtractQuestion()))
            << c.what;
        EXPECT_EQ(ui.messageTexts(), QStringList{c.message}) << c.what;
        if (QFile::exists(path("project.kndb"))) {
            EXPECT_EQ(mDb->count(Table::Coal), 2) << c.what;
            const std::optional<Record> c2 = RecordTable(*mDb, Table::Coal).find({"C2", {}});
            ASSERT_TRUE(c2) << c.what;
            EXPECT_EQ(c2->number("Quantity"), 1000.0) << c.what;
        }
    }
}

TEST_F(CoalOptimizationTest, SettingsGoThroughTheDocumentAndBack)
{
    CoalOptimization o(*mDb, CCoalOptParameters{});
    EXPECT_EQ(o.element(), kBTU) << "a new project optimises the first property";
    o.setModeChoice(3);
    o.setElement(kCost);
    o.setTarget(6250.5);
    o.setRequestedTonnage(800);
    ASSERT_FALSE(o.addConstraint(kSulfur, 0, 1.5));
    ASSERT_FALSE(o.addConstraint(kBTU, 12000, 13000));
    ASSERT_FALSE(o.addConstraint(kMS, 1, 2.5));
    EXPECT_EQ(o.addConstraint(kSulfur, 0, 2), message(Msg::ConstraintAlreadySet));
    const CCoalOptParameters stored = o.parametersForOk(CCoalOptParameters{});
    EXPECT_EQ(stored.mode, 2) << "Maximize Tonnage is kept as chosen";
    EXPECT_EQ(stored.optimizedElement, "Cost Factor");
    EXPECT_EQ(stored.constraints[kSulfur].text, "0.00 <= Sulfur <= 1.50");
    EXPECT_EQ(stored.constraints[kMS].text, "1.00 <= MS <= 2.50");

    ArchiveWriter out;
    stored.serialize(out);
    CCoalOptParameters loaded;
    ArchiveReader in(out.data());
    loaded.load(in);
    EXPECT_EQ(loaded, stored);

    const CoalOptimization reopened(*mDb, loaded);
    EXPECT_EQ(reopened.modeChoice(), 3);
    EXPECT_EQ(reopened.element(), kCost);
    EXPECT_EQ(reopened.target(), 6250.5);
    EXPECT_EQ(reopened.requestedTonnage(), 800);
    // The list shows the limits in property order once stored.
    EXPECT_EQ(reopened.constraintTexts(),
              QStringList({"12000.00 <= BTU <= 13000.00", "0.00 <= Sulfur <= 1.50", "1.00 <= MS <= 2.50"}));
    EXPECT_EQ(reopened.propertyOfName("CostFactor"), kCost);
    EXPECT_EQ(reopened.propertyOfName("Titration"), std::nullopt);
}

} // namespace
} // namespace kilnova
