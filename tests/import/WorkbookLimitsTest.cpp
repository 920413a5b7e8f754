#include "WorkbookBytes.h"

#include "import/Workbook.h"
#include "import/WorkbookError.h"
#include "import/WorkbookReader.h"
#include "import/ZipArchive.h"

#include <gtest/gtest.h>

namespace kilnova {
namespace {

using test::ZipBytes;

QByteArray sheetXml(const QByteArray& rows)
{
    return "<worksheet><sheetData>" + rows + "</sheetData></worksheet>";
}

TEST(WorkbookLimits, ACellInTheLastColumnAndRowCostsOneCell)
{
    // The used range spans 16384 columns and 1048576 rows; the source holds three values.
    const QByteArray xml = sheetXml(R"(<row r="1"><c r="A1" t="inlineStr"><is><t>Name</t></is></c></row>)"
                                    R"(<row r="2"><c r="A2" t="inlineStr"><is><t>B-1</t></is></c></row>)"
                                    R"(<row r="1048576"><c r="XFD1048576"><v>3.5</v></c></row>)");
    const auto workbook = Workbook::fromBytes(ZipBytes::xlsx(xml), Workbook::Format::Xlsx);
    EXPECT_EQ(workbook->cells(0).usedArea(), (CellArea{0, 0, 1048575, 16383}));
    const SheetData data = WorkbookReader::read(*workbook, "Data$");
    EXPECT_EQ(data.headings, QStringList({"Name", "F16384"}));
    ASSERT_EQ(data.rows.size(), 2u);
    EXPECT_EQ(data.rows[1].number, 1048576);
    EXPECT_EQ(data.rows[1].values, QVariantList({QVariant(), 3.5}));
    // A cell range over the whole sheet reads the same cells.
    EXPECT_EQ(WorkbookReader::read(*workbook, "[Data$]A1:XFD1048576").rows.size(), 2u);
}

TEST(WorkbookLimits, SizesAndCountsAreCheckedBeforeAnythingIsAllocated)
{
    struct Case {
        const char* what;
        QByteArray file;
        Workbook::Format format;
        const char* message;
    };
    // A deflated part whose directory claims 200 MB from 20 bytes: more than deflate can pack.
    const QByteArray bomb =
        ZipBytes().add({"_rels/.rels", QByteArray(20, 'x'), 8, 200u * 1024 * 1024}).bytes();
    // A part that claims more than any workbook part may unpack to.
    const QByteArray huge =
        ZipBytes().add({"_rels/.rels", QByteArray(300000, 'x'), 8, ZipArchive::kMaxMemberSize + 1}).bytes();
    // A row beyond the largest sheet.
    const QByteArray farRow =
        ZipBytes::xlsx(sheetXml(R"(<row r="1048577"><c r="A1048577"><v>1</v></c></row>)"));
    // Values in 300 columns: no table has that many.
    QByteArray wide = "Name";
    for (int c = 1; c < 300; ++c)
        wide += ",1";
    QByteArray csvLine = "a";
    for (int c = 0; c < 16384; ++c)
        csvLine += ",";

    const Case cases[] = {
        {"zip bomb", bomb, Workbook::Format::Xlsx, "it is damaged or not an Excel workbook."},
        {"huge part", huge, Workbook::Format::Xlsx,
         "its part _rels/.rels unpacks to more than 256 MB, more than a workbook of records holds."},
        {"row beyond the sheet", farRow, Workbook::Format::Xlsx,
         "it is damaged (its part xl/worksheets/sheet1.xml cannot be read)."},
        {"300 columns", wide + "\n" + wide + "\n", Workbook::Format::Csv,
         "its source Data has values in 300 columns; no table has more than 256."},
        {"16385 fields", csvLine + "\n", Workbook::Format::Csv, "its line 1 has more than 16384 fields."},
    };
    for (const Case& c : cases) {
        try {
            const auto workbook = Workbook::fromBytes(c.file, c.format, "Data");
            WorkbookReader::read(*workbook, "Data$");
            ADD_FAILURE() << c.what << " was read";
        } catch (const WorkbookError& e) {
            EXPECT_EQ(e.message(), c.message) << c.what;
        }
    }
}

} // namespace
} // namespace kilnova
