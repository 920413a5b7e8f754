#include "optimise/QuarryMapData.h"

#include "database/RecordTable.h"
#include "optimise/OptimizationModel.h"
#include "support/TempProject.h"

namespace kilnova {
namespace {

constexpr std::size_t kCaO = static_cast<std::size_t>(elementIndex(Element::CaO));

TEST(QuarryBlast, BlastsAtTheOriginOrWithAMissingCoordinateHaveNoPlace)
{
    const struct {
        double east, north;
        bool placed;
    } cases[] = {
        {0, 0, false},  {-1, 250, false}, {250, -1, false}, {-1, -1, false},
        {0, 250, true}, {250, 0, true},   {-5, -2, true},   {512408.2, 4861627.1, true},
    };
    for (const auto& c : cases) {
        QuarryBlast b;
        b.east = c.east;
        b.north = c.north;
        EXPECT_EQ(b.placed(), c.placed) << c.east << "/" << c.north;
    }
}

class QuarryMapDataTest : public test::TempProject {
protected:
    void add(Table table, const QString& name, double quantity, double east, double north, float CaO)
    {
        Record b(table);
        b.setValue("Name", name);
        b.setValue("Quantity", quantity);
        b.setValue("East", east);
        b.setValue("North", north);
        b.setValue("Elevation", 400.0 + std::max(CaO, 0.0f));
        Analysis a = missingAnalysis();
        a[kCaO] = CaO;
        b.setAnalysis(a);
        RecordTable(*mDb, table).add(b);
    }

    void SetUp() override
    {
        TempProject::SetUp();
        add(Table::Blast, "north", 1000, 100, 900, 50);
        add(Table::Blast, "East", 4000, 700, 300, 42);
        add(Table::Blast, "Unsurveyed", 9000, 0, 0, 20); // its CaO must not stretch the scale
        add(Table::Blast, "Clay", 500, 400, 100, -1);
        add(Table::Blast, "Empty", 0, 300, 300, 45);
    }
};

TEST_F(QuarryMapDataTest, LoadsTheBlastsByNameWithWhatThePictureNeeds)
{
    const QuarryMapData data = QuarryMapData::load(*mDb, Table::Blast);
    QStringList names;
    for (const QuarryBlast& b : data.blasts())
        names << b.name;
    EXPECT_EQ(names, QStringList({"Clay", "East", "Empty", "north", "Unsurveyed"}));
    EXPECT_EQ(data.unplacedCount(), 1u);
    EXPECT_EQ(data.extent(), (QuarryMapData::Extent{100, 700, 100, 900}));
    EXPECT_EQ(data.largestTonnage(), 4000) << "the unsurveyed blast is not on the map";
    EXPECT_EQ(data.elevationRange(), (std::pair<double, double>{400, 450})) << "from Clay to north";
    EXPECT_EQ(data.valueRange(static_cast<int>(kCaO)), (std::pair<double, double>{42, 50}))
        << "the missing and the unsurveyed values are left out";
    EXPECT_FALSE(data.valueRange(elementIndex(Element::SiO2))) << "no blast has SiO2";

    // Largest first, so that the small ones are drawn over them.
    std::vector<QString> order;
    for (std::size_t i : data.drawOrder())
        order.push_back(data[i].name);
    EXPECT_EQ(order, (std::vector<QString>{"East", "north", "Clay", "Empty"}));

    const QuarryBlast& east = data[*data.indexOf("EAST")];
    EXPECT_EQ(east.name, "East");
    EXPECT_EQ(east.tonnage, 4000);
    EXPECT_EQ(east.elevation, 442);
    EXPECT_EQ(east.values[kCaO], 42.0f);
}

TEST_F(QuarryMapDataTest, WorkingBlastsWithoutTonnesAreLeftOutAsTheCombinationListDoes)
{
    add(Table::TempBlast, "Left", 200, 10, 10, 44);
    add(Table::TempBlast, "Taken", 0, 20, 20, 44);
    const QuarryMapData data = QuarryMapData::load(*mDb, Table::TempBlast);
    ASSERT_EQ(data.size(), 1u);
    EXPECT_EQ(data[0].name, "Left");
}

TEST(QuarryMapData, NothingPlacedGivesNoExtent)
{
    const QuarryMapData empty;
    EXPECT_FALSE(empty.extent());
    EXPECT_EQ(empty.largestTonnage(), 0);
    std::vector<QuarryBlast> one(1);
    one[0].name = "nowhere";
    const QuarryMapData unplaced(one);
    EXPECT_FALSE(unplaced.extent());
    EXPECT_EQ(unplaced.unplacedCount(), 1u);
}

TEST_F(QuarryMapDataTest, SelectionListingAndTakenTonnesGoByNameWithoutCase)
{
    QuarryMapData data = QuarryMapData::load(*mDb, Table::Blast);
    EXPECT_EQ(data.setSelection({"NORTH", "clay", "O'Brien"}), QStringList{"O'Brien"});
    EXPECT_EQ(data.selection(), QStringList({"Clay", "north"}));
    EXPECT_EQ(data.setListed({"East", "north"}), QStringList());
    EXPECT_FALSE(data[*data.indexOf("Clay")].listed);
    EXPECT_TRUE(data[*data.indexOf("East")].listed);
    data.setAllListed();
    EXPECT_TRUE(data[*data.indexOf("Clay")].listed);

    // A run over north and East that took 600 t and 400 t; the others took nothing.
    OptimizationRequest request;
    request.sources = {{"north", 1000, {}}, {"East", 4000, {}}, {"Clay", 500, {}}};
    OptimizationOutcome outcome;
    outcome.solved = true;
    outcome.values = {600.0, 400.0, 0.004};
    data.setTaken({"Empty"}, {123.0});
    data.setTaken(request, outcome);
    EXPECT_EQ(data[*data.indexOf("north")].taken, 600);
    EXPECT_EQ(data[*data.indexOf("East")].taken, 400);
    EXPECT_EQ(data[*data.indexOf("Clay")].taken, 0) << "0.004 t is not taken";
    EXPECT_EQ(data[*data.indexOf("Empty")].taken, 0) << "an earlier run's label goes";
}

} // namespace
} // namespace kilnova
