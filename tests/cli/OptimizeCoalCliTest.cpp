#include "../optimise/CoalTestData.h"
#include "CliFixture.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "project/ProjectFile.h"

#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace kilnova {
namespace {

/// The two coals of 1000 t whose ashes differ (C1: 10% ash, 50% SiO2; C2: 30% ash, 30% SiO2) and a
/// project that asks for the cheapest 1000 t whose ash holds at least 36% SiO2.
class OptimizeCoalCliTest : public CliFixture {
protected:
    void SetUp() override
    {
        auto db = ProjectDatabase::create(mDir.filePath("plant.kndb"));
        for (const CoalSource& c : test::twoCoals())
            RecordTable(*db, Table::Coal).add(test::coalRecord(c));
        ProjectSettings s;
        s.databasePath = mDir.filePath("plant.kndb");
        CCoalOptParameters& p = s.coalOptimization;
        p.mode = -1;
        p.optimizedElement = "Cost Factor";
        p.requestedTonnage = 1000;
        p.constraints[coalPropertyIndex(CoalProperty::SiO2)] = {36, 100, "36.00 <= SiO2 <= 100.00", 1};
        ProjectFile::save(s, mDir.filePath("plant.knv"));
    }

    CliRun optimize(const QStringList& options)
    {
        return run(QStringList{"optimize", "coal", mDir.filePath("plant.knv")} + options);
    }

    double quantity(const QString& name) const
    {
        auto db = ProjectDatabase::open(mDir.filePath("plant.kndb"));
        const std::optional<Record> r = RecordTable(*db, Table::Coal).find({name, {}});
        return r ? r->number("Quantity") : -99;
    }
};

TEST_F(OptimizeCoalCliTest, PrintsTheReportOverEveryCoal)
{
    // The mix of the hand-worked report: 562.5 t of C1 and 437.5 t of C2.
    const CliRun r = optimize({});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(
        r.out.toStdString(),
        "Coal Optimization Results\n\nsuccessfully minimized Cost Factor\n\nList of Constraints applied:\n"
        "36.00 <= SiO2 <= 100.00\n\n\nOptimized coal results\n\n"
        "     562.500000 tonnes of Coal C1 (56.25% of coal, 56.25% of mix)\n"
        "     437.500000 tonnes of Coal C2 (43.75% of coal, 43.75% of mix)\n"
        "Optimized tonnage:    1000.00\n"
        "        BTU   12875.00         Ash      18.75    Humidity       7.56   Volatiles      26.75\n"
        "     Sulfur       1.44 Cost Factor      76.88\n"
        "\n"
        "Chemical composition of the ash\n"
        "       SiO2      36.00       Al2O3      18.00       Fe2O3      17.00         CaO      15.50\n"
        "        MgO       2.70         LOI       1.70         SO3       4.80         K2O       1.15\n"
        "       Na2O       1.20        TiO2       0.65        P2O5       0.60          MS       1.03\n"
        "         MA       1.06         LSF       0.12         C3S    -355.73         C2S     371.44\n"
        "        C3A      18.94        NaEq       1.96        C4AF      51.68\n");
    EXPECT_TRUE(QFile::exists(mDir.filePath("data/Kilnova/debug.txt")));
}

TEST_F(OptimizeCoalCliTest, SettingsOptionsNameTheCoalProperties)
{
    // Most BTU with sulfur at most 1.25 (by the tonne: x1 + 2 x2 <= 1250): 750 t of C1.
    const CliRun json = optimize({"--select", "c2", "C1", "--mode", "maximize", "--element", "BTU",
                                  "--constraint", "0 <= Sulfur <= 1.25", "--json"});
    ASSERT_EQ(json.status, 0) << json.err.toStdString();
    const QJsonObject o = QJsonDocument::fromJson(json.out.toUtf8()).object();
    EXPECT_EQ(o["status"].toString(), "optimal");
    const QJsonArray tonnes = o["tonnes"].toArray();
    ASSERT_EQ(tonnes.size(), 2);
    EXPECT_EQ(tonnes[0].toObject()["coal"].toString(), "C1") << "the list's order";
    EXPECT_NEAR(tonnes[0].toObject()["tonnes"].toDouble(), 750, 1e-3);
    const QJsonObject mix = o["mix"].toObject();
    EXPECT_EQ(mix.size(), 25);
    EXPECT_NEAR(mix["BTU"].toDouble(), 12500, 1e-2);
    EXPECT_NEAR(mix["Cost Factor"].toDouble(), 82.5, 1e-4);
    // Ash 7500 + 7500: the ash is half of each.
    EXPECT_NEAR(mix["SiO2"].toDouble(), 40, 1e-4);

    struct Refused {
        QStringList options;
        const char* problem;
    };
    const std::vector<Refused> refused = {
        {{"--element", "Titration"}, "--element \"Titration\" is not an element that can be optimised"},
        {{"--constraint", "0 <= Cl <= 1"}, "--constraint \"0 <= Cl <= 1\": \"Cl\" is not an element"},
        {{"--mode", "target", "--element", "SiO2", "--constraint", "30 <= SiO2 <= 40"},
         "--constraint \"30 <= SiO2 <= 40\": You cannot add a constraint on the optimized element in Target "
         "mode"},
    };
    for (const Refused& r : refused) {
        const CliRun run = optimize(r.options);
        EXPECT_EQ(run.status, 2) << r.problem;
        EXPECT_TRUE(run.err.startsWith(QStringLiteral("kilnova-cli: %1\n").arg(r.problem)))
            << run.err.toStdString();
    }
    const CliRun cost = optimize({"--element", "CostFactor", "--mode", "maximize", "--tonnage", "500"});
    EXPECT_EQ(cost.status, 0) << cost.err.toStdString();
}

TEST_F(OptimizeCoalCliTest, ChartOfTheMixInItsOwnUnits)
{
    const auto svg = [this](const QString& file) {
        QFile f(mDir.filePath(file));
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    };
    // The project's run: SiO2 of the ash held at its minimum of 36, the cost of 76.875 minimised.
    const CliRun ash = optimize({"--chart", mDir.filePath("ash.svg")});
    ASSERT_EQ(ash.status, 0) << ash.err.toStdString();
    EXPECT_TRUE(ash.out.startsWith("Coal Optimization Results\n")) << "the report is printed as before";
    const QByteArray ashChart = svg("ash.svg");
    for (const char* text : {"Coal mix of 1000.00 t; oxides, moduli and phases of its ash", "SiO2 (%)",
                             "36.00 %", "at the minimum", "Cost Factor", "76.88", "minimised"})
        EXPECT_TRUE(ashChart.contains(text)) << text;

    // Most heat with sulfur at most 1.25: 750 t of C1 and 250 t of C2, 12500 BTU/lb, sulfur on its limit.
    const CliRun heat = optimize({"--mode", "maximize", "--element", "BTU", "--constraint",
                                  "0 <= Sulfur <= 1.25", "--chart", mDir.filePath("heat.svg")});
    ASSERT_EQ(heat.status, 0) << heat.err.toStdString();
    const QByteArray heatChart = svg("heat.svg");
    for (const char* text : {"Coal mix of 1000.00 t", "BTU (BTU/lb)", "12500.00 BTU/lb", "Sulfur (%)",
                             "1.25 %", "at the maximum", "maximised"})
        EXPECT_TRUE(heatChart.contains(text)) << text;
    EXPECT_FALSE(heatChart.contains("of its ash")) << "no row of the ash analysis";
    EXPECT_FALSE(heatChart.contains("SiO2")) << "the project's SiO2 limit was replaced";

    ASSERT_EQ(optimize({"--chart", mDir.filePath("mix.png")}).status, 0);
    EXPECT_EQ(QImage(mDir.filePath("mix.png")).width(), 820);
    const CliRun wrong = optimize({"--chart", mDir.filePath("mix.bmp")});
    EXPECT_EQ(wrong.status, 2);
    EXPECT_TRUE(wrong.err.startsWith("kilnova-cli: the chart is written as .png, .pdf or .svg"))
        << wrong.err.toStdString();
}

TEST_F(OptimizeCoalCliTest, StoresTheMixAsANewCoalOnlyWhenAllIsWell)
{
    const CliRun taken = optimize({"--store", "C1"});
    EXPECT_EQ(taken.status, 1);
    EXPECT_EQ(taken.err, "The Coal table already holds a record named \"C1\"; nothing was stored.\n"
                         "Add --allow-duplicate to store a second record of that name.\n");

    const CliRun tooMuch = optimize({"--tonnage", "2500", "--store", "Mix", "--subtract"});
    EXPECT_EQ(tooMuch.status, 1);
    EXPECT_EQ(tooMuch.err, "The requested tonnage, 2500.00 t, is more than the chosen coals hold, 2000.00 t. "
                           "Choose more coals or ask for less.\n");
    EXPECT_EQ(quantity("Mix"), -99) << "nothing stored";
    EXPECT_EQ(quantity("C1"), 1000);

    const CliRun stored = optimize({"--store", "Mix", "--subtract"});
    ASSERT_EQ(stored.status, 0) << stored.err.toStdString();
    // 562.5 t of C1 and 437.5 t of C2; the Coal table has no backup.
    EXPECT_TRUE(
        stored.out.endsWith("Stored \"Mix\" (1000.00 t) in the Coal table. Subtracted 1000.00 t from 2 "
                            "source record(s), 0 of them deleted. No backup rows were made.\n"))
        << stored.out.toStdString();
    EXPECT_NEAR(quantity("Mix"), 1000, 1e-3);
    EXPECT_NEAR(quantity("C1"), 437.5, 1e-3);
    EXPECT_NEAR(quantity("C2"), 562.5, 1e-3);

    // The stored mix is a coal like any other: the next run may take it.
    const CliRun again =
        optimize({"--select", "Mix", "C2", "--tonnage", "100", "--constraint", "0 <= Sulfur <= 5", "--json"});
    EXPECT_EQ(again.status, 0) << again.err.toStdString();
}

} // namespace
} // namespace kilnova
