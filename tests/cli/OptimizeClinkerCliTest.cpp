#include "CliFixture.h"
#include "chemistry/ChemistryFunctions.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "project/ProjectFile.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace kilnova {
namespace {

/// The hand-worked clinker of the optimisation tests: two crudes of 2000 t (LOI 35), a coal of 500 t
/// (10 % ash, 12,600 BTU/lb), a kiln at 700 KCal/kg that keeps everything and takes up no ash; least
/// CaO in 650 t of clinker at 0 <= SiO2 <= 20.83. Also a stockpile and sand.
class OptimizeClinkerCliTest : public CliFixture {
protected:
    void SetUp() override
    {
        auto db = ProjectDatabase::create(mDir.filePath("plant.kndb"));
        add(*db, Table::Crude, "Meal A", "Mill 1", 2000,
            {80, 13, 3, 2, 44, 1, 35, 0.2f, 0.5f, 0.1f, 0.2f, 0.1f}, 4, 0.01f);
        add(*db, Table::Crude, "Meal B", "Mill 2", 2000,
            {76, 15.2f, 3.5f, 2.2f, 40, 1.2f, 35, 0.3f, 0.6f, 0.2f, 0.2f, 0.1f}, 3, 0.02f);
        add(*db, Table::Coal, "Coal A", "", 500, {-1, 50, 25, 8.2f, 5, 1, 2, 1, 1, 0.5f, 1, 0.5f}, 90, 0.05f);
        add(*db, Table::Stockpile, "Bed 1", "Quarry", 5000,
            {78, 14, 3.5f, 2, 43, 1, 35, 0.4f, 0.6f, 0.2f, 0.2f, 0.1f}, 3, 0.01f);
        add(*db, Table::Additives, "Sand", "", 0, {2, 90, 3, 1.5f, 1, 0.3f, 1, 0.1f, 0.8f, 0.2f, 0.1f, 0.05f},
            12, 0.005f);
        ProjectSettings s;
        s.databasePath = mDir.filePath("plant.kndb");
        s.clinkerProcess.EnergyConsumptionFactor = 700;
        CClinkerOptParameters& p = s.clinkerOptimization;
        p.mode = CClinkerOptParameters::kMinimize;
        p.optimizedElement = "CaO";
        p.requestedTonnage = 650;
        p.constraints[elementIndex(Element::SiO2)] = {0, 20.83, "0.00 <= SiO2 <= 20.83", 1};
        p.crudeSources = {"Meal A (Mill 1)", "Meal B (Mill 2)"};
        p.coalSources = {"Coal A"};
        ProjectFile::save(s, mDir.filePath("plant.knv"));
    }

    static void add(ProjectDatabase& db, Table table, const char* name, const char* source, double quantity,
                    std::initializer_list<float> oxides, float cost, float chloride)
    {
        Record r(table);
        r.setValue("Name", name);
        if (r.definition().hasColumn("Source"))
            r.setValue("Source", source);
        if (r.definition().hasColumn("Quantity"))
            r.setValue("Quantity", quantity);
        Analysis a = missingAnalysis();
        int k = 0;
        for (float v : oxides)
            a[static_cast<std::size_t>(k++)] = v;
        a[elementIndex(Element::CostFactor)] = cost;
        a[elementIndex(Element::Cl)] = chloride;
        computeDerivedQuantities(a, 0.0);
        r.setAnalysis(a);
        if (table == Table::Coal) {
            r.setValue("Ash", 10.0);
            r.setValue("BTU", 12600.0);
        }
        RecordTable(db, table).add(r);
    }

    CliRun clinker(const QStringList& options)
    {
        return run(QStringList{"optimize", "clinker", mDir.filePath("plant.knv")} + options);
    }

    double quantity(Table table, const RecordKey& key)
    {
        auto db = ProjectDatabase::open(mDir.filePath("plant.kndb"));
        const std::optional<Record> r = RecordTable(*db, table).find(key);
        return r ? r->number("Quantity") : -99;
    }
};

TEST_F(OptimizeClinkerCliTest, PrintsTheHandWorkedReportOfTheStoredSettings)
{
    const CliRun r = clinker({});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    QFile expected(QStringLiteral(KILNOVA_TEST_DATA_DIR "/clinker/crude-and-coal.txt"));
    ASSERT_TRUE(expected.open(QIODevice::ReadOnly));
    EXPECT_EQ(r.out.toStdString(), QString::fromUtf8(expected.readAll()).replace("\r\n", "\n").toStdString());
    EXPECT_EQ(r.err, "");
    EXPECT_TRUE(QFile::exists(mDir.filePath("data/Kilnova/debug.txt")));
}

TEST_F(OptimizeClinkerCliTest, JsonCarriesTonnesCompositionsAndTheDegeneracyFlag)
{
    const CliRun r = clinker({"--json"});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    const QJsonObject o = QJsonDocument::fromJson(r.out.toUtf8()).object();
    EXPECT_EQ(o["status"].toString(), "optimal");
    const QJsonArray tonnes = o["tonnes"].toArray();
    ASSERT_EQ(tonnes.size(), 3);
    EXPECT_EQ(tonnes[0].toObject()["kind"].toString(), "Crude");
    EXPECT_EQ(tonnes[0].toObject()["name"].toString(), "Meal A");
    EXPECT_EQ(tonnes[0].toObject()["source"].toString(), "Mill 1");
    EXPECT_NEAR(tonnes[0].toObject()["tonnes"].toDouble(), 902.5, 0.01);
    EXPECT_EQ(tonnes[2].toObject()["kind"].toString(), "Coal");
    EXPECT_NEAR(tonnes[2].toObject()["tonnes"].toDouble(), 65, 1e-3);
    EXPECT_NEAR(o["areNeeded"].toDouble(), 650, 1e-9);
    EXPECT_FALSE(o["degenerated"].toBool());
    EXPECT_NEAR(o["clinker"].toObject()["SiO2"].toDouble(), 20.83, 1e-4);
    EXPECT_EQ(o["clinker"].toObject()["Titration"].toDouble(), -1.0);
    EXPECT_NEAR(o["crudeTonnage"].toDouble(), 1000, 1e-3);
    EXPECT_NEAR(o["crude"].toObject()["CaO"].toDouble(), (44 * 902.5 + 40 * 97.5) / 1000, 1e-3);
    EXPECT_NEAR(o["coal"].toObject()["Cost Factor"].toDouble(), 90, 1e-6);
}

TEST_F(OptimizeClinkerCliTest, SettingsGivenAsOptions)
{
    // Stockpile, sand and coal: the most LSF at SiO2 <= 26 with at most 4000 t of the bed. 4000 t of
    // the bed make 2600 t of clinker: sand (0.99 t a tonne) makes up the 90 t left of 2690 t.
    const CliRun r = clinker({"--stockpile-additives-coal", "--select", "Bed 1", "Sand", "Coal A", "--mode",
                              "maximize", "--element", "LSF", "--tonnage", "2690", "--constraint",
                              "0 <= SiO2 <= 26", "--tonnage-limit", "0 <= Bed 1 (Quarry) <= 4000", "--json"});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    const QJsonArray tonnes = QJsonDocument::fromJson(r.out.toUtf8()).object()["tonnes"].toArray();
    ASSERT_EQ(tonnes.size(), 3);
    EXPECT_EQ(tonnes[0].toObject()["kind"].toString(), "Stockpile");
    EXPECT_NEAR(tonnes[0].toObject()["tonnes"].toDouble(), 4000, 1e-3);
    EXPECT_EQ(tonnes[1].toObject()["kind"].toString(), "Additive");
    EXPECT_NEAR(tonnes[1].toObject()["tonnes"].toDouble(), 90 / 0.99, 1e-3);
    // Without --save the stored settings are as they were; with it they are those of the run.
    EXPECT_EQ(ProjectFile::load(mDir.filePath("plant.knv")).settings.clinkerOptimization.sourceSelection,
              CClinkerOptParameters::kCrudeAndCoal);
    // Saved as given, although these settings (SiO2 <= 20.83 in clinker from the bed) find no clinker.
    const CliRun saving = clinker({"--stockpile-additives-coal", "--select", "Bed 1", "Sand", "Coal A",
                                   "--tonnage-limit", "0 <= Bed 1 (Quarry) <= 4200", "--save"});
    EXPECT_EQ(saving.status, 1);
    EXPECT_EQ(saving.err,
              "The system cannot reach an optimum, it is infeasible given the set of constraints\n");
    const CClinkerOptParameters saved =
        ProjectFile::load(mDir.filePath("plant.knv")).settings.clinkerOptimization;
    EXPECT_EQ(saved.sourceSelection, CClinkerOptParameters::kStockpileAdditivesAndCoal);
    EXPECT_EQ(saved.crudeSources, QStringList{"Bed 1 (Quarry)"});
    EXPECT_EQ(saved.additiveSources, QStringList{"Sand"});
    ASSERT_EQ(saved.tonnageConstraints.size(), 1);
    EXPECT_EQ(saved.tonnageConstraints[0].text, "0.00 <= Bed 1 (Quarry) <= 4200.00");
}

TEST_F(OptimizeClinkerCliTest, ABadOptionSaysWhich)
{
    struct Case {
        QStringList options;
        QString says;
    };
    const std::vector<Case> cases = {
        {{"--crude-coal", "--stockpile-additives-coal"},
         "kilnova-cli: choose either --crude-coal or --stockpile-additives-coal\n"},
        {{"--mode", "max-tonnage"},
         "kilnova-cli: --mode max-tonnage: this optimisation offers minimize, maximize, "
         "target\n"},
        {{"--select", "Meal"}, "kilnova-cli: --select: \"Meal\" names no single crude, additive or coal\n"},
        {{"--stockpile-additives-coal", "--tonnage-limit", "1 <= Bed 9 (Quarry) <= 2"},
         "kilnova-cli: --tonnage-limit \"1 <= Bed 9 (Quarry) <= 2\": there is no stockpile \"Bed 9 "
         "(Quarry)\"\n"},
        {{"--tonnage-limit", "Bed 1 <= 2"},
         "kilnova-cli: --tonnage-limit \"Bed 1 <= 2\" is not \"MIN <= STOCKPILE (SOURCE) <= MAX\"\n"},
        {{"--subtract"}, "kilnova-cli: --subtract needs --store-clinker NAME or --store-crude NAME\n"},
        {{"--store-clinker"}, "kilnova-cli: --store-clinker needs a value\n"},
    };
    for (const Case& c : cases) {
        const CliRun r = clinker(c.options);
        EXPECT_EQ(r.status, 2) << c.options.join(' ').toStdString();
        EXPECT_TRUE(r.err.startsWith(c.says)) << r.err.toStdString();
        EXPECT_EQ(r.out, "");
    }
    // A failing run says why and exits 1.
    const CliRun none = clinker({"--tonnage", "0"});
    EXPECT_EQ(none.status, 1);
    EXPECT_EQ(none.err, "Enter a requested clinker tonnage greater than 0.\n");
}

TEST_F(OptimizeClinkerCliTest, StoresTheClinkerAndTheCrudeAndSubtracts)
{
    const CliRun taken = clinker({"--store-clinker", "Actual 1", "--store-crude", "Meal AB"});
    EXPECT_EQ(taken.status, 0) << "a stockpile of that name is no clinker";
    EXPECT_TRUE(taken.out.endsWith("Stored \"Actual 1\" (650.00 t) in the Clinker table. Stored \"Meal AB\" "
                                   "(1000.00 t) in the Crude table. The sources were left as they were.\n"))
        << taken.out.toStdString();
    const CliRun again = clinker({"--store-clinker", "K2", "--store-crude", "Meal AB", "--subtract"});
    EXPECT_EQ(again.status, 1);
    EXPECT_EQ(again.err, "The Crude table already holds a record named \"Meal AB\"; nothing was stored.\n"
                         "Add --allow-duplicate to store a second record of that name.\n");
    EXPECT_EQ(again.out, "");
    EXPECT_EQ(quantity(Table::Clinker, {"K2", " "}), -99) << "nothing stored when one name is refused";
    EXPECT_EQ(quantity(Table::Crude, {"Meal A", "Mill 1"}), 2000.0);

    // 902.5 t and 97.5 t of the crudes and 65 t of coal; crudes and coals have no backup table.
    const CliRun r = clinker({"--store-clinker", "K2", "--subtract"});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_TRUE(r.out.endsWith("Stored \"K2\" (650.00 t) in the Clinker table. Subtracted 1065.00 t from 3 "
                               "source record(s), 0 of them deleted. No backup rows were made.\n"))
        << r.out.toStdString();
    EXPECT_NEAR(quantity(Table::Clinker, {"K2", " "}), 650, 1e-3);
    EXPECT_NEAR(quantity(Table::Crude, {"Meal A", "Mill 1"}), 1097.5, 0.01);
    EXPECT_NEAR(quantity(Table::Coal, {"Coal A", {}}), 435, 1e-3);

    // A second crude of a taken name is kept beside the first only when asked for.
    const CliRun both = clinker({"--store-crude", "Meal AB", "--allow-duplicate"});
    ASSERT_EQ(both.status, 0) << both.err.toStdString();
    auto db = ProjectDatabase::open(mDir.filePath("plant.kndb"));
    EXPECT_EQ(RecordTable(*db, Table::Crude).findNamed("Meal AB").size(), 2u);
}

TEST_F(OptimizeClinkerCliTest, ChartOfTheClinker)
{
    const CliRun wrong = clinker({"--chart", mDir.filePath("chart.bmp")});
    EXPECT_EQ(wrong.status, 2);
    EXPECT_TRUE(wrong.err.startsWith("kilnova-cli: the chart is written as .png, .pdf or .svg"))
        << wrong.err.toStdString();
    const CliRun r = clinker({"--chart", mDir.filePath("chart.svg")});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    QFile svg(mDir.filePath("chart.svg"));
    ASSERT_TRUE(svg.open(QIODevice::ReadOnly));
    // The SiO2 limit and the optimised CaO are the chart's rows, of the clinker's 650 t.
    const QByteArray picture = svg.readAll();
    EXPECT_TRUE(picture.contains("SiO2 (%)"));
    EXPECT_TRUE(picture.contains("CaO (%)"));
    EXPECT_TRUE(picture.contains("Blend of 650.00 t"));
}

// 3000 t of clinker at SiO2 <= 20.83. The coal follows the clinker made, 0.1 t a tonne, and its ash
// brings 0.5 of SiO2: the crudes may bring 20.33 of the 0.65 t of clinker a tonne makes, 13.2145. Meal A
// (13) then holds Meal B (15.2) to 2000 * 0.2145 / 1.9855 = 216.07 t: at most 0.65 * 2216.07 = 1440.44 t
// of clinker, 1559.56 t missing. Without the SiO2 maximum 2600 t are still short of 3000 t, and the coal
// (144 t of its 500 t) is not taken whole.
TEST_F(OptimizeClinkerCliTest, ExplainNamesTheTonnageTheSourcesCannotMake)
{
    const CliRun plain = clinker({"--tonnage", "3000"});
    ASSERT_EQ(plain.status, 1);
    const CliRun explained = clinker({"--tonnage", "3000", "--explain"});
    EXPECT_EQ(explained.status, 1);
    ASSERT_TRUE(explained.err.startsWith(plain.err.trimmed() + "\n\nWhy no blend was found\n"))
        << explained.err.toStdString();
    EXPECT_TRUE(explained.err.contains("  Requested tonnage 3000.00 t: lower it to 1440.00 t\n"))
        << explained.err.toStdString();

    const CliRun json = clinker({"--tonnage", "3000", "--json", "--explain"});
    const QJsonObject e = QJsonDocument::fromJson(json.out.toUtf8()).object()["explanation"].toObject();
    EXPECT_EQ(e["status"].toString(), "infeasible");
    EXPECT_NEAR(e["missingTonnes"].toDouble(), 1559.56, 0.01);
    const QJsonArray conflict = e["conflict"].toArray();
    ASSERT_EQ(conflict.size(), 2);
    EXPECT_EQ(conflict[0].toObject()["limit"].toString(), "Requested tonnage");
    EXPECT_EQ(conflict[0].toObject()["needed"].toDouble(), 1440.0);
    EXPECT_EQ(conflict[1].toObject()["limit"].toString(), "Tonnages of the sources");
    EXPECT_EQ(conflict[1].toObject()["sources"].toArray().size(), 1) << "only Meal A is taken whole";
}

} // namespace
} // namespace kilnova
