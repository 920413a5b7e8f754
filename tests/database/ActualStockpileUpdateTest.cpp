#include "database/ActualStockpileUpdate.h"
#include "common/MessageTable.h"
#include "database/DatabaseError.h"
#include "database/RecordTable.h"
#include "support/ScriptedPrompt.h"
#include "support/TempProject.h"

#include <QFile>

#include <functional>

namespace kilnova {
namespace {

constexpr std::size_t at(Element e)
{
    return static_cast<std::size_t>(elementIndex(e));
}

class ActualStockpileUpdateTest : public test::TempProject {
protected:
    /// Sets a stockpile's Quantity and the given values (adding the stockpile when it is not there).
    void setPile(const RecordKey& key, double quantity,
                 std::initializer_list<std::pair<Element, float>> values)
    {
        RecordTable table(*mDb, Table::Stockpile);
        std::optional<Record> r = table.find(key);
        if (!r) {
            Record fresh(Table::Stockpile);
            fresh.setValue("Name", key.name);
            fresh.setValue("Source", key.source);
            r = table.add(fresh);
        }
        r->setValue("Quantity", quantity);
        Analysis a = r->analysis();
        for (auto [e, v] : values)
            a[at(e)] = v;
        r->setAnalysis(a);
        table.update(*r);
    }

    Record pile(const RecordKey& key) { return *RecordTable(*mDb, Table::Stockpile).find(key); }

    const RecordKey kActual1{"Actual 1", "Actual"};
    const RecordKey kBed{"Bed A", "Pre-blending"};
    const RecordKey kMarl{"Marl", "Quarry"};
};

TEST_F(ActualStockpileUpdateTest, BlendsByTonnageWithMissingValuesContagious)
{
    // 300 t at SiO2 14 receive 100 t at SiO2 12: 400 t at (4200 + 1200) / 400 = 13.5. The
    // destination lacks MgO and the source lacks LOI: both stay missing whatever the other holds.
    setPile(kActual1, 300,
            {{Element::SiO2, 14},
             {Element::Al2O3, 3},
             {Element::Fe2O3, 1.5f},
             {Element::CaO, 44},
             {Element::LOI, 35},
             {Element::CostFactor, 3},
             {Element::Cl, 0.02f},
             {Element::MS, 7}});
    setPile(kBed, 100,
            {{Element::SiO2, 12},
             {Element::Al2O3, 3},
             {Element::Fe2O3, 1.5f},
             {Element::CaO, 48},
             {Element::MgO, 2},
             {Element::CostFactor, 1},
             {Element::Cl, 0.5f}});
    ASSERT_FALSE(ActualStockpileUpdate::apply(*mDb, {kActual1, {kBed}, false}));

    const Record r = pile(kActual1);
    const Analysis a = r.analysis();
    EXPECT_EQ(r.number("Quantity"), 400.0);
    struct Expected {
        Element element;
        float value;
    };
    const Expected expected[] = {
        {Element::SiO2, 13.5f},   {Element::Al2O3, 3},
        {Element::Fe2O3, 1.5f},   {Element::CaO, 45}, // (300·44 + 100·48) / 400
        {Element::MgO, -1},       {Element::LOI, -1},
        {Element::Titration, -1}, {Element::CostFactor, 2.5f}, // (900 + 100) / 400
        {Element::Cl, 0.02f},                                  // the destination's
        {Element::MS, 3},                                      // 13.5 / (3 + 1.5), derived again
        {Element::MA, 2},                                      // 3 / 1.5
        {Element::NaEq, -1},                                   // K2O and Na2O are not measured
    };
    for (const Expected& e : expected)
        EXPECT_EQ(a[at(e.element)], e.value) << elementIndex(e.element);
    EXPECT_TRUE(RecordTable(*mDb, Table::Stockpile).find(kBed)) << "the source is kept unless asked";
}

TEST_F(ActualStockpileUpdateTest, AnEmptyDestinationTakesTheSourcesWeightedMean)
{
    // Quantity 0 with a measured SiO2: 100 t at 12 and 300 t at 16 give (1200 + 4800) / 400 = 15.
    setPile(kActual1, 0, {{Element::SiO2, 10}});
    setPile(kBed, 100, {{Element::SiO2, 12}});
    setPile(kMarl, 300, {{Element::SiO2, 16}});
    ASSERT_FALSE(ActualStockpileUpdate::apply(*mDb, {kActual1, {kBed, kMarl}, true}));
    EXPECT_EQ(pile(kActual1).number("Quantity"), 400.0);
    EXPECT_EQ(pile(kActual1).analysis()[at(Element::SiO2)], 15.0f);
    EXPECT_FALSE(RecordTable(*mDb, Table::Stockpile).find(kBed)) << "deleted after the update";
    EXPECT_FALSE(RecordTable(*mDb, Table::Stockpile).find(kMarl));
    EXPECT_EQ(RecordTable(*mDb, Table::Stockpile).count(), 4);
}

TEST_F(ActualStockpileUpdateTest, RefusedBlendsChangeNoRecord)
{
    setPile(kActual1, 300, {{Element::SiO2, 14}});
    setPile(kBed, 100, {{Element::SiO2, 12}});
    setPile({"Actual 2", "Actual"}, -1, {});
    setPile(kMarl, -1, {{Element::SiO2, 16}});
    struct Case {
        const char* name;
        ActualStockpileUpdate::Request request;
        QString message;
    };
    const Case cases[] = {
        {"no source", {kActual1, {}, true}, message(Msg::BlendNeedsSources)},
        {"source is the destination",
         {kActual1, {kBed, {"ACTUAL 1", "actual"}}, true},
         "The stockpile \"Actual 1 (Actual)\" cannot be added to itself: nothing was blended."},
        {"destination without quantity",
         {{"Actual 2", "Actual"}, {kBed}, true},
         "The stockpile \"Actual 2 (Actual)\" has no Quantity (-1): nothing was blended."},
        {"source without quantity",
         {kActual1, {kBed, kMarl}, true},
         "The stockpile \"Marl (Quarry)\" has no Quantity (-1): nothing was blended."},
        {"source gone",
         {kActual1, {kBed, {"Bed B", "Pre-blending"}}, true},
         "The stockpile \"Bed B (Pre-blending)\" is no longer in the Stockpile table: nothing was blended."},
    };
    const std::vector<Record> before = RecordTable(*mDb, Table::Stockpile).all();
    for (const Case& c : cases) {
        test::ScriptedPrompt ui;
        EXPECT_FALSE(ActualStockpileUpdate::applyAsking(*mDb, ui, c.request)) << c.name;
        EXPECT_EQ(ui.messageTexts(), QStringList{c.message}) << c.name;
        EXPECT_EQ(RecordTable(*mDb, Table::Stockpile).all(), before) << c.name;
    }
}

TEST_F(ActualStockpileUpdateTest, AVanishedDatabaseFileIsToldAndNothingIsWritten)
{
    setPile(kBed, 100, {{Element::SiO2, 12}});
    ASSERT_TRUE(QFile::remove(path("project.kndb")));
    EXPECT_THROW(ActualStockpileUpdate::apply(*mDb, {kActual1, {kBed}, true}), DatabaseError);
    test::ScriptedPrompt ui;
    EXPECT_FALSE(ActualStockpileUpdate::applyAsking(*mDb, ui, {kActual1, {kBed}, true}));
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(ui.messages[0].text, message(Msg::DatabaseOperationFailed));
    EXPECT_TRUE(ui.messages[0].details.contains("is no longer there"))
        << ui.messages[0].details.toStdString();
    EXPECT_EQ(pile(kActual1).number("Quantity"), 0.0) << "the open connection still reads the old file";
}

TEST_F(ActualStockpileUpdateTest, BlendsOnlyWhatTheUserChoseAsItWas)
{
    // Chosen when Actual 1 held 300 t and Bed A 100 t; then another program acts before OK.
    struct Case {
        const char* name;
        std::function<void()> meanwhile;
        QString message; // empty: blended
    };
    const Case cases[] = {
        {"unchanged", [] {}, {}},
        {"source tonnage changed", [&] { setPile(kBed, 60, {}); },
         message(Msg::BlendSourceChanged, {"stockpile \"Bed A\" from \"Pre-blending\""})},
        {"destination analysis changed",
         [&] {
             setPile(kActual1, 300, {{Element::CaO, 45}});
         },
         "The stockpile \"Actual 1\" from \"Actual\" has changed since it was chosen for Update Actual "
         "Stockpiles, so nothing was blended. Open Update Actual Stockpiles again."},
        {"source deleted", [&] { RecordTable(*mDb, Table::Stockpile).remove(kBed); },
         "The stockpile \"Bed A\" from \"Pre-blending\" is no longer in the database, so nothing was "
         "blended. Open Update Actual Stockpiles again."},
        {"source deleted and added again with other tonnes",
         [&] {
             RecordTable(*mDb, Table::Stockpile).remove(kBed);
             setPile(kBed, 100.5, {{Element::SiO2, 12}});
         },
         message(Msg::BlendSourceChanged, {"stockpile \"Bed A\" from \"Pre-blending\""})},
    };
    for (const Case& c : cases) {
        setPile(kActual1, 300, {{Element::SiO2, 14}, {Element::CaO, 44}});
        setPile(kBed, 100, {{Element::SiO2, 12}, {Element::CaO, 48}});
        ActualStockpileUpdate::Request request{kActual1, {kBed}, true};
        request.seen.add(pile(kActual1));
        request.seen.add(pile(kBed));
        c.meanwhile();
        const std::vector<Record> before = RecordTable(*mDb, Table::Stockpile).all();

        test::ScriptedPrompt ui;
        const bool stored = ActualStockpileUpdate::applyAsking(*mDb, ui, request);
        if (c.message.isEmpty()) {
            EXPECT_TRUE(stored) << c.name;
            EXPECT_TRUE(ui.messageTexts().isEmpty()) << c.name;
            EXPECT_EQ(pile(kActual1).number("Quantity"), 400.0) << c.name;
            EXPECT_EQ(pile(kActual1).analysis()[at(Element::SiO2)], 13.5f) << c.name; // (4200 + 1200) / 400
            EXPECT_FALSE(RecordTable(*mDb, Table::Stockpile).find(kBed)) << c.name;
        } else {
            EXPECT_FALSE(stored) << c.name;
            EXPECT_EQ(ui.messageTexts(), QStringList{c.message}) << c.name;
            EXPECT_EQ(RecordTable(*mDb, Table::Stockpile).all(), before) << c.name << ": nothing written";
        }
    }
}

} // namespace
} // namespace kilnova
