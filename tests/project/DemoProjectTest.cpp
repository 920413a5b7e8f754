#include "project/DemoProject.h"

#include "chemistry/ChemistryFunctions.h"
#include "database/DatabaseError.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "optimise/BlendSummary.h"
#include "optimise/CoalOptimization.h"
#include "optimise/StockpileOptimization.h"
#include "optimise/StockpileReport.h"
#include "project/DemoDataError.h"
#include "project/ProjectFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

namespace kilnova {
namespace {

const QString kDemoData = QStringLiteral(KILNOVA_TEST_DATA_DIR "/../../examples/demo");

class DemoProjectTest : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        sDir = new QTemporaryDir;
        DemoProject::build(kDemoData, sDir->path());
    }
    static void TearDownTestSuite()
    {
        delete sDir;
        sDir = nullptr;
    }
    static QString path(const QString& name) { return QDir(sDir->path()).filePath(name); }

    static QTemporaryDir* sDir;
};

QTemporaryDir* DemoProjectTest::sDir = nullptr;

struct Range {
    const char* column;
    double low;
    double high;
};

TEST_F(DemoProjectTest, BlastsAreBelievableRocksSpreadOverAQuarryWithTheirDeviations)
{
    std::unique_ptr<ProjectDatabase> db = ProjectDatabase::open(path("demo.kndb"));
    const std::vector<Record> blasts = RecordTable(*db, Table::Blast).all();
    ASSERT_GE(blasts.size(), 30u);
    ASSERT_LE(blasts.size(), 60u);
    EXPECT_EQ(RecordTable(*db, Table::StdBlast).names(), RecordTable(*db, Table::Blast).names());

    // What a cement chemist expects of each rock, by the name prefix of its bench.
    const std::map<QString, std::vector<Range>> rocks = {
        {"LS", {{"CaO", 48, 53}, {"SiO2", 2, 8}, {"LOI", 38, 43}}},
        {"MA", {{"CaO", 30, 42}, {"SiO2", 12, 22}, {"LOI", 28, 36}}},
        {"CL", {{"SiO2", 45, 60}, {"Al2O3", 12, 18}, {"Fe2O3", 5, 8}, {"LOI", 6, 14}}},
    };
    std::map<QString, int> seen;
    double eastMin = 1e9, eastMax = 0, elevationMin = 1e9, elevationMax = 0;
    for (const Record& b : blasts) {
        const QString rock = b.name().left(2);
        ASSERT_TRUE(rocks.count(rock)) << b.name().toStdString();
        ++seen[rock];
        for (const Range& r : rocks.at(rock)) {
            EXPECT_GE(b.number(r.column), r.low) << b.name().toStdString() << " " << r.column;
            EXPECT_LE(b.number(r.column), r.high) << b.name().toStdString() << " " << r.column;
        }
        double oxides = 0;
        for (const char* c :
             {"SiO2", "Al2O3", "Fe2O3", "CaO", "MgO", "LOI", "SO3", "K2O", "Na2O", "TiO2", "P2O5"})
            oxides += b.number(c);
        EXPECT_NEAR(oxides, 99.5, 3.0) << b.name().toStdString() << ": the analysis must add up";
        EXPECT_GE(b.number("Quantity"), 5000);
        EXPECT_LE(b.number("Quantity"), 60000);
        eastMin = std::min(eastMin, b.number("East"));
        eastMax = std::max(eastMax, b.number("East"));
        elevationMin = std::min(elevationMin, b.number("Elevation"));
        elevationMax = std::max(elevationMax, b.number("Elevation"));
    }
    EXPECT_EQ(seen.size(), 3u);
    EXPECT_GT(eastMax - eastMin, 500) << "blasts spread over the quarry";
    EXPECT_GT(elevationMax - elevationMin, 50) << "on several benches";
}

TEST_F(DemoProjectTest, EveryStoredAnalysisCarriesItsDerivedColumns)
{
    std::unique_ptr<ProjectDatabase> db = ProjectDatabase::open(path("demo.kndb"));
    int checked = 0;
    for (Table t :
         {Table::Blast, Table::Stockpile, Table::Crude, Table::Clinker, Table::Additives, Table::Coal}) {
        for (const Record& r : RecordTable(*db, t).all()) {
            Analysis expected = r.analysis();
            computeDerivedQuantities(expected, 0.0);
            EXPECT_EQ(r.analysis(), expected) << r.name().toStdString();
            ++checked;
        }
    }
    EXPECT_GT(checked, 60);
    const Record bauxite = *RecordTable(*db, Table::Additives).find({"Bauxite", {}});
    EXPECT_NEAR(bauxite.number("MA"), 3.0, 1e-6); // 48 / 16
    const Record coal = *RecordTable(*db, Table::Coal).find({"Petroleum coke", {}});
    EXPECT_EQ(coal.number("BTU"), 14700.0);
    EXPECT_EQ(coal.number("Sulfur"), double(4.9f));
}

TEST_F(DemoProjectTest, ActualStockpilesAreFilledInPlaceAndTheRestAdded)
{
    std::unique_ptr<ProjectDatabase> db = ProjectDatabase::open(path("demo.kndb"));
    RecordTable stockpiles(*db, Table::Stockpile);
    const QStringList names = stockpiles.names();
    EXPECT_EQ(names.mid(0, 4), QStringList({"Actual 1", "Actual 2", "Actual 3", "Actual 4"}));
    EXPECT_EQ(names.count("Actual 1"), 1);
    EXPECT_EQ(stockpiles.find({"Actual 1", "Actual"})->number("Quantity"), 18500.0);
    EXPECT_EQ(stockpiles.find({"Actual 4", "Actual"})->number("CaO"), -1.0) << "Actual 4 is still empty";
    EXPECT_GT(names.size(), 5);
}

TEST_F(DemoProjectTest, TheProjectFileUsesTheDatabaseAndHasABlastOptimisationReadyToRun)
{
    const ProjectFile::Loaded loaded = ProjectFile::load(path("demo.knv"));
    EXPECT_EQ(loaded.settings.databasePath, QDir::cleanPath(path("demo.kndb")));
    const COptimizationParameters& p = loaded.settings.blastOptimization;
    EXPECT_EQ(p.mode, COptimizationParameters::kTarget);
    EXPECT_EQ(p.optimizedElement, "CaO");
    EXPECT_EQ(p.target, 43.0);
    EXPECT_EQ(p.requestedTonnage, 60000.0);
    EXPECT_GE(p.selectedSources.size(), 2);

    std::unique_ptr<ProjectDatabase> db = ProjectDatabase::open(path("demo.kndb"));
    RecordTable blasts(*db, Table::Blast);
    double available = 0;
    for (const QString& name : p.selectedSources) {
        const std::optional<Record> b = blasts.find({name, {}});
        ASSERT_TRUE(b) << name.toStdString();
        available += b->number("Quantity");
    }
    EXPECT_GE(available, p.requestedTonnage);

    const int sio2 = elementIndex(Element::SiO2);
    EXPECT_EQ(p.constraints[sio2], (ConstraintEntry{12.5, 14.5, "12.50 <= SiO2 <= 14.50", 1}));
    const int lsf = elementIndex(Element::LSF);
    EXPECT_EQ(p.constraints[lsf].text, "0.94 <= LSF <= 1.00");
    EXPECT_FALSE(p.constraints[elementIndex(Element::CaO)].isActive());
}

TEST_F(DemoProjectTest, TheCoalsMakeACheaperMixThanAnyCoalThatMeetsTheLimitsAlone)
{
    const ProjectFile::Loaded loaded = ProjectFile::load(path("demo.knv"));
    const CCoalOptParameters& p = loaded.settings.coalOptimization;
    EXPECT_EQ(p.mode, -1);
    EXPECT_EQ(p.optimizedElement, "Cost Factor");
    EXPECT_EQ(p.constraints[coalPropertyIndex(CoalProperty::Sulfur)].text, "0.00 <= Sulfur <= 1.50");

    std::unique_ptr<ProjectDatabase> db = ProjectDatabase::open(path("demo.kndb"));
    CoalOptimization o(*db, p);
    o.setSelection(o.sourceNames());
    const CoalOptimization::Result r = o.optimize();
    ASSERT_TRUE(r.outcome.solved) << r.outcome.message.toStdString();
    int taken = 0;
    for (std::size_t j = 0; j < r.coals.size(); ++j)
        taken += r.outcome.counts(j) ? 1 : 0;
    EXPECT_GE(taken, 2) << "a mix, not one coal";
    EXPECT_NEAR(r.mix.tonnage, p.requestedTonnage, 1e-2);
    // The mix meets every limit; the dearest coal alone would too, and costs more.
    for (int k = 0; k < kCoalPropertyCount; ++k) {
        const ConstraintEntry& c = p.constraints[static_cast<std::size_t>(k)];
        if (!c.isActive())
            continue;
        EXPECT_GE(r.mix.properties[static_cast<std::size_t>(k)], c.minimum - 1e-4) << c.text.toStdString();
        EXPECT_LE(r.mix.properties[static_cast<std::size_t>(k)], c.maximum + 1e-4) << c.text.toStdString();
    }
    double dearest = 0;
    for (const CoalSource& c : r.coals)
        dearest = std::max(dearest, c.value(CoalProperty::CostFactor));
    EXPECT_LT(r.mix.value(CoalProperty::CostFactor), dearest - 1);
}

/// A copy of the demo data with one file changed.
class BrokenDemoData : public testing::Test {
protected:
    void SetUp() override { freshCopy(); }
    void freshCopy()
    {
        ASSERT_TRUE(mData.isValid() && mOut.isValid());
        for (const QString& f : QDir(kDemoData).entryList({"*.csv"}, QDir::Files)) {
            QFile::remove(mData.filePath(f));
            ASSERT_TRUE(QFile::copy(QDir(kDemoData).filePath(f), mData.filePath(f)));
        }
    }
    void edit(const QString& file, const std::function<QString(QString)>& change)
    {
        QFile f(mData.filePath(file));
        ASSERT_TRUE(f.open(QIODevice::ReadOnly));
        const QString text = change(QString::fromUtf8(f.readAll()));
        f.close();
        ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(text.toUtf8());
    }
    QStringList written() const { return QDir(mOut.path()).entryList(QDir::Files); }

    QTemporaryDir mData;
    QTemporaryDir mOut;
};

TEST_F(BrokenDemoData, IsReportedByFileAndLineAndLeavesNothingBehind)
{
    struct Case {
        const char* file;
        QString from;
        QString to;
        QString message;
    };
    const std::vector<Case> cases = {
        {"blasts.csv", ",Cl\n", ",Chloride\n", "blasts.csv: the Blast table has no column \"Chloride\"."},
        {"additives.csv", ",Cl\n", ",MS\n",
         "additives.csv: MS is computed from the oxides; leave the column out."},
        {"crude.csv", "RM1-0611,Raw mill 1,7150,", "RM1-0611,Raw mill 1,7 150,",
         "crude.csv line 4: \"7 150\" in column Quantity is not a number."},
        {"coal.csv", "Bituminous B,8500,", "Bituminous B,",
         "coal.csv line 5: 19 fields where the header names 20."},
        {"blast-optimisation.csv", "Blast,LS398-02", "Blast,LS999-99",
         "blast-optimisation.csv line 10: there is no blast \"LS999-99\"."},
        {"blast-optimisation.csv", "Constraint,MgO", "Constraint,SiO2",
         "blast-optimisation.csv line 18: SiO2 is constrained twice."},
        {"blast-optimisation.csv", "Constraint,MgO", "Constraint,CaO",
         "blast-optimisation.csv constrains CaO, the element it targets."},
        {"blast-optimisation.csv", "Mode,Target", "Mode,Aim",
         "blast-optimisation.csv line 5: \"Aim\" is not a mode."},
        {"stockpile-optimisation.csv", "Stockpile,Marl pile (Quarry)", "Stockpile,Marl pile (Bed)",
         "stockpile-optimisation.csv line 13: there is no stockpile \"Marl pile (Bed)\"."},
        {"stockpile-optimisation.csv", "Additive,Bauxite", "Additive,Gypsum",
         "stockpile-optimisation.csv line 17: there is no additive \"Gypsum\"."},
        {"stockpile-optimisation.csv", "Left,MS", "Left,LSF",
         "stockpile-optimisation.csv line 23: LSF is constrained twice."},
        {"coal-optimisation.csv", "Constraint,Ash", "Constraint,Titration",
         "coal-optimisation.csv line 11: \"Titration\" is not an element that can be used here."},
        {"coal-optimisation.csv", "Constraint,Ash,0,12", "Constraint,Ash,12,0",
         "coal-optimisation.csv line 11: the minimum of Ash is above its maximum."},
    };
    for (const Case& c : cases) {
        freshCopy();
        edit(c.file, [&](QString text) {
            EXPECT_TRUE(text.contains(c.from)) << c.file;
            return text.replace(c.from, c.to);
        });
        try {
            DemoProject::build(mData.path(), mOut.path());
            ADD_FAILURE() << "accepted: " << c.message.toStdString();
        } catch (const DemoDataError& e) {
            EXPECT_EQ(e.message(), c.message);
        }
        EXPECT_EQ(written(), QStringList{}) << c.message.toStdString();
    }
}

TEST_F(DemoProjectTest, TheStockpileOptimisationMakesACrudeWithinItsLimits)
{
    const ProjectFile::Loaded loaded = ProjectFile::load(path("demo.knv"));
    std::unique_ptr<ProjectDatabase> db = ProjectDatabase::open(path("demo.kndb"));
    const StockpileOptimization o(*db, loaded.settings.stockpileOptimization);
    EXPECT_EQ(o.selectedStockpiles().size(), 6u);
    EXPECT_EQ(o.selectedAdditives(), QStringList({"Bauxite", "Iron ore", "Sand"}));
    EXPECT_EQ(o.constraintTexts(), QStringList({"0.95 <= LSF <= 0.98", "2.40 <= MS <= 2.60",
                                                "1.40 <= MA <= 1.70", "0.00 <= MgO <= 1.50"}))
        << "in the file's order";
    EXPECT_EQ(o.leftConstraintTexts(), QStringList({"0.75 <= LSF <= 1.05", "2.20 <= MS <= 3.00"}));
    const StockpileOptimization::Result r = o.optimize();
    ASSERT_TRUE(r.outcome.solved) << r.outcome.message.toStdString();
    const BlendSummary crude = StockpileReport::crude(r.problem, r.outcome, chemCoefficients());
    const BlendSummary left = StockpileReport::left(r.problem, r.outcome, chemCoefficients());
    EXPECT_NEAR(crude.tonnage, 24000, 0.01);
    // What the limits promise, with the solver's tolerance.
    const Range crudeRanges[] = {{"LSF", 0.95, 0.98}, {"MS", 2.4, 2.6}, {"MA", 1.4, 1.7}, {"MgO", 0, 1.5}};
    for (const Range& range : crudeRanges) {
        const double v = crude.values[static_cast<std::size_t>(*elementFromName(range.column))];
        EXPECT_GE(v, range.low - 1e-4) << range.column;
        EXPECT_LE(v, range.high + 1e-4) << range.column;
    }
    const Range leftRanges[] = {{"LSF", 0.75, 1.05}, {"MS", 2.2, 3.0}};
    for (const Range& range : leftRanges) {
        const double v = left.values[static_cast<std::size_t>(*elementFromName(range.column))];
        EXPECT_GE(v, range.low - 1e-4) << range.column;
        EXPECT_LE(v, range.high + 1e-4) << range.column;
    }
    EXPECT_GT(left.tonnage, 0.0);
}

TEST_F(BrokenDemoData, ADuplicateBlastIsRefusedByTheDatabaseAndNoFileStays)
{
    edit("blasts.csv", [](QString text) { return text.replace("LS398-01,", "LS410-01,"); });
    edit("blast-deviations.csv", [](QString text) { return text.replace("LS398-01,", "LS410-01,"); });
    EXPECT_THROW(DemoProject::build(mData.path(), mOut.path()), DatabaseError);
    EXPECT_EQ(written(), QStringList{});
}

TEST_F(BrokenDemoData, QuotedFieldsMayHoldCommasAndQuotes)
{
    edit("stockpiles.csv", [](QString text) {
        return text.replace("Marl pile,Quarry", "\"Marl pile \"\"east\"\", bench 2\",Quarry");
    });
    edit("stockpile-optimisation.csv", [](QString text) {
        return text.replace("Stockpile,Marl pile (Quarry)",
                            "Stockpile,\"Marl pile \"\"east\"\", bench 2 (Quarry)\"");
    });
    DemoProject::build(mData.path(), mOut.path());
    std::unique_ptr<ProjectDatabase> db = ProjectDatabase::open(QDir(mOut.path()).filePath("demo.kndb"));
    EXPECT_TRUE(RecordTable(*db, Table::Stockpile).find({"Marl pile \"east\", bench 2", "Quarry"}));
    EXPECT_EQ(written(), QStringList({"demo.kndb", "demo.knv"}));
}

} // namespace
} // namespace kilnova
