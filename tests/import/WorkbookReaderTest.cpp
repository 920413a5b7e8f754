#include "import/WorkbookReader.h"
#include "ImportFixtures.h"

#include "import/CellArea.h"
#include "import/Workbook.h"
#include "import/WorkbookError.h"
#include "import/WorkbookSourceForm.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace kilnova {
namespace {

using test::importFixture;

/// Every row as the texts of its cells, the headings first, so that the three formats compare alike.
QList<QStringList> texts(const SheetData& data)
{
    QList<QStringList> rows{data.headings};
    for (const SheetData::Row& row : data.rows) {
        QStringList cells{QString::number(row.number)};
        for (const QVariant& v : row.values)
            cells << WorkbookReader::cellText(v);
        rows << cells;
    }
    return rows;
}

const QList<QStringList> kDataSheet = {
    {"Name", "East", "North", "Elevation", "Quantity", "SiO2", "Al2O3", "Fe2O3", "CaO", "MgO", "K2O", "Na2O",
     "SO3", "CostFactor", "MS"},
    {"2", "B-101", "1000.5", "2000.25", "310", "5000", "21", "5", "3", "65", "1.2", "0.8", "0.2", "0.5",
     "2.5", "99"},
    {"3", "B-102", "1010", "2010", "312", "4000", "14", "3.5", "2", "44", "", "0.6", "0.15", "0.3", "1.75",
     ""},
    {"4", "103", "1020", "2020", "314", "3000", "12.5", "3", "", "48", "0.9", "0.5", "0.1", "0.25", "", ""},
};

const QList<QStringList> kQuarry = {
    {"Name", "SiO2", "CaO", "Quantity"},
    {"4", "Q-1", "12.5", "48", "1500"},
    {"5", "Q-2", "13", "47.5", "1600"},
};

TEST(WorkbookReader, ReadsWorksheetsNamedRangesAndCellRangesAlikeFromXlsAndXlsx)
{
    struct Case {
        const char* source;
        QList<QStringList> expected;
    };
    const Case cases[] = {
        {"Data$", kDataSheet},
        {"data$", kDataSheet},
        {"Quarry", kQuarry},
        {"[Ranges$]B3:E4", {kQuarry[0], kQuarry[1]}},
        {"Ranges$B3:E4", {kQuarry[0], kQuarry[1]}},
        {"[Ranges$]$B$3:$C$5", {{"Name", "SiO2"}, {"4", "Q-1", "12.5"}, {"5", "Q-2", "13"}}},
        // A name local to its sheet is found too.
        {"Mixes",
         {{"Name", "Source", "Quantity", "SiO2", "Al2O3", "Fe2O3", "CaO", "K2O", "Na2O"},
          {"2", "S-1", "Quarry A", "12000", "21", "5", "3", "65", "0.8", "0.2"},
          {"3", "S-1", "Quarry B", "8000", "14", "3.5", "2", "44", "0.6", "0.15"}}},
        {"Empty$", {{}}},
    };
    for (const char* file : {"blasts.xls", "blasts.xlsx"}) {
        const std::unique_ptr<Workbook> workbook = Workbook::open(importFixture(file));
        EXPECT_EQ(workbook->sheetNames(),
                  QStringList({"Data", "Ranges", "Bad", "Halfway", "NoName", "Stockpiles", "Empty"}));
        for (const Case& c : cases)
            EXPECT_EQ(texts(WorkbookReader::read(*workbook, c.source)), c.expected)
                << file << " " << c.source;
    }
}

TEST(WorkbookReader, ReadsACsvFileAsOneSheetNamedAfterIt)
{
    EXPECT_EQ(texts(WorkbookReader::read(importFixture("blasts.csv"), "blasts$")), kDataSheet);
    EXPECT_EQ(texts(WorkbookReader::read(importFixture("blasts.csv"), "[blasts$]A1:B2")),
              (QList<QStringList>{{"Name", "East"}, {"2", "B-101", "1000.5"}}));
}

TEST(WorkbookReader, ColumnsWithoutHeadingAreNamedOnlyWhenTheyHoldValues)
{
    // Read from A1, the sheet has its title in A1, an empty row, and the headings in B3: column A keeps
    // the title as its heading though nothing is below it, and B to E, with values under no heading,
    // get "F" names.
    const SheetData data = WorkbookReader::read(importFixture("blasts.xlsx"), "Ranges$");
    EXPECT_EQ(data.headings, QStringList({"Lab results week 12", "F2", "F3", "F4", "F5"}));
    ASSERT_EQ(data.rows.size(), 3u) << "the empty second row is left out";
    EXPECT_EQ(data.rows[0].number, 3);
}

TEST(WorkbookReader, SaysWhatIsWrongWithTheWorkbookOrTheSource)
{
    struct Case {
        const char* file;
        const char* source;
        const char* message;
    };
    const Case cases[] = {
        {"blasts.xls", "Data$$", "it has no worksheet named \"Data$\"."},
        {"blasts.xlsx", "Nothing", "it has no worksheet or range named \"Nothing\"."},
        {"blasts.xls", "[Sheet9$]A1:B2", "it has no worksheet named \"Sheet9\"."},
        {"blasts.csv", "Quarry", "it has no worksheet or range named \"Quarry\"."},
        {"protected.xls", "Data$", "it is protected by a password. Save it without one and import it again."},
        {"corrupt.xls", "Data$", "it is damaged or not an Excel workbook."},
        {"corrupt.xlsx", "Data$", "it is damaged or not an Excel workbook."},
        {"blasts.rsv", "Data$",
         "only Excel workbooks (.xls, .xlsx) and comma-separated files (.csv) can be imported."},
        {"binary.csv", "Data$", "there is no such file."},
    };
    for (const Case& c : cases) {
        try {
            WorkbookReader::read(importFixture(c.file), c.source);
            ADD_FAILURE() << c.file << " " << c.source << " was read";
        } catch (const WorkbookError& e) {
            EXPECT_EQ(e.message(), c.message) << c.file << " " << c.source;
        }
    }
}

TEST(WorkbookReader, AWorkbookIsReadForWhatItHoldsWhateverItsExtension)
{
    QTemporaryDir dir;
    struct Case {
        const char* file;
        const char* copy;
        bool readable;
    };
    const Case cases[] = {
        {"blasts.xls", "old.xlsx", true},  {"blasts.xlsx", "new.xls", true},
        {"blasts.rsv", "text.xls", false}, {"binary.rsv", "binary.xlsx", false},
        {"empty.rsv", "empty.xls", false},
    };
    for (const Case& c : cases) {
        const QString copy = dir.filePath(QString::fromLatin1(c.copy));
        ASSERT_TRUE(QFile::copy(importFixture(c.file), copy));
        if (c.readable) {
            EXPECT_EQ(texts(WorkbookReader::read(copy, "Data$")), kDataSheet) << c.copy;
        } else {
            try {
                Workbook::open(copy);
                ADD_FAILURE() << c.copy << " was opened";
            } catch (const WorkbookError& e) {
                EXPECT_EQ(e.message(), "it is damaged or not an Excel workbook.") << c.copy;
            }
        }
    }
}

TEST(CellArea, ParsesTheRangesUsersType)
{
    struct Case {
        const char* text;
        std::optional<SheetArea> expected;
    };
    const Case cases[] = {
        {"[Sheet1$]A1:F19", SheetArea{"Sheet1", {0, 0, 18, 5}}},
        {"Sheet1$A1:F19", SheetArea{"Sheet1", {0, 0, 18, 5}}},
        {"'My data'!$B$2:$AA$10", SheetArea{"My data", {1, 1, 9, 26}}},
        {"Data!F19:A1", SheetArea{"Data", {0, 0, 18, 5}}},
        {"A1:B2", SheetArea{"", {0, 0, 1, 1}}},
        {"$A$1:$B$2", SheetArea{"", {0, 0, 1, 1}}},
        {"Quarry", std::nullopt},
        {"Data$", std::nullopt},
        {"[Sheet1$]A0:B2", std::nullopt},
        {"A1", std::nullopt},
        {"[Sheet1$A1:B2", std::nullopt},
    };
    for (const Case& c : cases)
        EXPECT_EQ(SheetArea::parseRange(c.text), c.expected) << c.text;
}

TEST(WorkbookSourceForm, BuildsTheSourceNameFromTheChosenEntry)
{
    using Kind = WorkbookSourceForm::Kind;
    struct Case {
        Kind kind;
        const char* typed;
        const char* source;
    };
    const Case cases[] = {
        {Kind::Worksheet, "Data", "Data$"},   {Kind::Worksheet, "Data   ", "Data$"},
        {Kind::Worksheet, "Data$", "Data$$"}, {Kind::Worksheet, " My data ", " My data$"},
        {Kind::Worksheet, "   ", ""},         {Kind::NamedRange, "Quarry  ", "Quarry"},
        {Kind::NamedRange, "", ""},           {Kind::CellRange, "[Data$]A1:F19 ", "[Data$]A1:F19"},
    };
    for (const Case& c : cases) {
        WorkbookSourceForm form;
        // Only the entry of the chosen kind counts.
        form.setWorksheet("Other");
        form.setNamedRange("Other");
        form.setCellRange("Other");
        form.setKind(c.kind);
        if (c.kind == Kind::Worksheet)
            form.setWorksheet(c.typed);
        else if (c.kind == Kind::NamedRange)
            form.setNamedRange(c.typed);
        else
            form.setCellRange(c.typed);
        EXPECT_EQ(form.sourceName(), c.source) << c.typed;
    }
}

} // namespace
} // namespace kilnova
