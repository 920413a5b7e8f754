#include "ImportFixtures.h"

#include "import/WorkbookImporter.h"
#include "import/WorkbookReader.h"

#include <gtest/gtest.h>

namespace kilnova {
namespace {

using test::Expected;

class WorkbookImporterTest : public test::ImportProject {
protected:
    ImportResult import(ImportTarget target, const char* file, const char* source)
    {
        return WorkbookImporter(target).import(*mDb, WorkbookReader::read(test::importFixture(file), source));
    }
};

TEST_F(WorkbookImporterTest, MatchesHeadingsToColumnsAndComputesTheDerivedColumns)
{
    struct Case {
        const char* file;
        const char* source;
    };
    for (const Case& c :
         {Case{"blasts.xls", "Data$"}, Case{"blasts.xlsx", "Data$"}, Case{"blasts.csv", "blasts$"}}) {
        RecordTable(*mDb, Table::Blast).removeAll();
        const ImportResult result = import(ImportTarget::Blast, c.file, c.source);
        EXPECT_FALSE(result.stopped()) << c.file << result.reason.toStdString();
        EXPECT_EQ(result.count, 3) << c.file;
        EXPECT_EQ(names(Table::StdBlast), QStringList({"B-101", "B-102", "103"})) << c.file;

        const std::vector<Record> blasts = records(Table::Blast);
        ASSERT_EQ(blasts.size(), 3u) << c.file;
        // The worked example; the cost factor comes by name, the MS the sheet supplies (99) gives way.
        test::expectValues(blasts[0],
                           {{"Name", "B-101"},
                            {"East", 1000.5},
                            {"North", 2000.25},
                            {"Elevation", 310},
                            {"Quantity", 5000},
                            {"MgO", 1.2},
                            {"SO3", 0.5},
                            {"CostFactor", 2.5},
                            {"Titration", -1},
                            {"MS", 2.625},
                            {"MA", 5.0 / 3},
                            {"LSF", 65 / 66.4},
                            {"C3S", 67.135},
                            {"C2S", 9.5895},
                            {"C3A", 8.174},
                            {"C4AF", 9.12},
                            {"NaEq", 0.7264},
                            {"Cl", -1}},
                           c.file);
        // An empty cell is a value not measured.
        test::expectValues(blasts[1], {{"MgO", -1}, {"CostFactor", 1.75}, {"MS", 14 / 5.5}}, c.file);
        // A number for the name becomes its text; a text that reads as a number is taken; a missing
        // Fe2O3 makes every modulus that needs it missing.
        test::expectValues(blasts[2],
                           {{"Name", "103"},
                            {"Na2O", 0.1},
                            {"Fe2O3", -1},
                            {"MS", -1},
                            {"MA", -1},
                            {"LSF", -1},
                            {"C3S", -1},
                            {"C2S", -1},
                            {"C3A", -1},
                            {"C4AF", -1},
                            {"NaEq", 0.658 * 0.5 + 0.1},
                            {"CostFactor", 0}},
                           c.file);
    }
}

TEST_F(WorkbookImporterTest, StockpilesNeedNoCompanionAndMayShareANameAcrossSources)
{
    const ImportResult result = import(ImportTarget::Stockpile, "blasts.xlsx", "Mixes");
    EXPECT_EQ(result.count, 2);
    const std::vector<Record> piles = records(Table::Stockpile);
    ASSERT_EQ(piles.size(), 6u);
    test::expectValues(piles[4],
                       {{"Name", "S-1"},
                        {"Source", "Quarry A"},
                        {"Quantity", 12000},
                        {"CostFactor", -1},
                        {"MgO", -1},
                        {"MS", 2.625},
                        {"NaEq", 0.7264}},
                       "first");
    test::expectValues(piles[5], {{"Name", "S-1"}, {"Source", "Quarry B"}}, "second");
    EXPECT_EQ(mDb->count(Table::StdBlast), 0);
}

TEST_F(WorkbookImporterTest, StopsAtTheFirstRefusedRowAndKeepsTheRowsBeforeIt)
{
    struct Case {
        const char* source;
        long count;
        const char* stoppedAt;
        const char* reason;
        QStringList names;
    };
    const Case cases[] = {
        {"Bad$",
         0,
         "its headings",
         "Unknown column \"Colour\": the Blast table has no column of that name.",
         {}},
        {"Halfway$", 1, "row 3 of Halfway", "The value \"n/a\" of column SiO2 is not a number.", {"H-1"}},
        // Without a Name column every blast is called NewBlast, which the second may not be.
        {"NoName$",
         1,
         "row 3 of NoName",
         "The Blast table already holds a record named \"NewBlast\".",
         {"NewBlast"}},
        {"Empty$", 0, "", "", {}},
    };
    for (const Case& c : cases) {
        for (const char* file : {"blasts.xls", "blasts.xlsx"}) {
            RecordTable(*mDb, Table::Blast).removeAll();
            const ImportResult result = import(ImportTarget::Blast, file, c.source);
            EXPECT_EQ(result.count, c.count) << file << c.source;
            EXPECT_EQ(result.stoppedAt, c.stoppedAt) << file << c.source;
            EXPECT_EQ(result.reason, c.reason) << file << c.source;
            EXPECT_EQ(names(Table::Blast), c.names) << file << c.source;
            EXPECT_EQ(names(Table::StdBlast), c.names) << file << c.source;
        }
    }
}

TEST_F(WorkbookImporterTest, HeadingsAreMatchedWithoutRegardToCaseOrSurroundingBlanks)
{
    SheetData data;
    data.source = "test";
    data.headings = {"name", " SIO2 ", "cao"};
    data.rows.push_back({2, {QStringLiteral("X-1"), QStringLiteral(" 20.5 "), 60.0}});
    const ImportResult result = WorkbookImporter(ImportTarget::Blast).import(*mDb, data);
    ASSERT_EQ(result.count, 1) << result.reason.toStdString();
    test::expectValues(records(Table::Blast).at(0), {{"Name", "X-1"}, {"SiO2", 20.5}, {"CaO", 60}}, "case");
}

TEST_F(WorkbookImporterTest, TextsThatAreNoMeasurementAreRefusedByName)
{
    for (const char* text : {"NaN", "-inf", "1,5", "0x1A"}) {
        RecordTable(*mDb, Table::Blast).removeAll();
        SheetData data;
        data.source = "Lab";
        data.headings = {"Name", "SiO2"};
        data.rows.push_back({2, {QStringLiteral("X-1"), 20.0}});
        data.rows.push_back({3, {QStringLiteral("X-2"), QString::fromLatin1(text)}});
        const ImportResult result = WorkbookImporter(ImportTarget::Blast).import(*mDb, data);
        EXPECT_EQ(result.count, 1) << text;
        EXPECT_EQ(result.stoppedAt, "row 3 of Lab") << text;
        EXPECT_EQ(result.reason,
                  QStringLiteral("The value \"%1\" of column SiO2 is not a number.").arg(text));
        EXPECT_EQ(names(Table::Blast), QStringList{"X-1"}) << text;
    }
}

} // namespace
} // namespace kilnova
