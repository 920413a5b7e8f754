#include "WorkbookBytes.h"

#include "import/CellStore.h"
#include "import/Workbook.h"
#include "import/WorkbookError.h"
#include "import/WorkbookReader.h"

#include <gtest/gtest.h>

namespace kilnova {
namespace {

using test::biff8Text;
using test::biffRecord;
using test::BiffWorkbook;
using test::ByteBuilder;
using test::cellHead;

std::unique_ptr<Workbook> xls(const BiffWorkbook& book)
{
    return Workbook::fromBytes(book.file(), Workbook::Format::Xls);
}

QByteArray number(int row, int column, double value)
{
    return biffRecord(0x0203, cellHead(row, column).f64(value).bytes());
}

QByteArray rk(int row, int column, quint32 value)
{
    return biffRecord(0x027E, cellHead(row, column).u32(value).bytes());
}

/// A shared string table: a total, the count of unique strings, then the strings as given.
QByteArray sst(quint32 unique, const QByteArray& strings)
{
    return biffRecord(0x00FC, ByteBuilder().u32(unique).u32(unique).raw(strings).bytes());
}

QByteArray labelSst(int row, int column, quint32 index)
{
    return biffRecord(0x00FD, cellHead(row, column).u32(index).bytes());
}

/// A formula whose saved result is given by its 8 result bytes; the formula itself is left empty.
QByteArray formula(int row, int column, const QByteArray& result)
{
    return biffRecord(0x0006, cellHead(row, column).raw(result).u16(0).u32(0).u16(0).bytes());
}

QByteArray special(quint8 kind, quint8 value)
{
    return ByteBuilder().u8(kind).u8(0).u8(value).u8(0).u8(0).u8(0).u16(0xFFFF).bytes();
}

TEST(XlsReader, ReadsEveryKindOfCellAsItsValue)
{
    const QByteArray wideName = ByteBuilder().u16(2).u8(1).u16(0x0152).u16(0x20AC).bytes(); // "Œ€"
    const QByteArray records =
        number(0, 0, 1000.5) +
        // RK: an integer (7 << 2 | 2), the same divided by 100, a double's high half (2.5), and that
        // divided by 100.
        rk(0, 1, (7u << 2) | 2) + rk(0, 2, (1234u << 2) | 3) + rk(0, 3, 0x40040000u) + rk(0, 4, 0x40040001u) +
        rk(0, 5, static_cast<quint32>(-3 << 2) | 2) +
        // MULRK: two numbers from column 6 on, then the last column.
        biffRecord(
            0x00BD,
            ByteBuilder().u16(0).u16(6).u16(0).u32((5u << 2) | 2).u16(0).u32((6u << 2) | 2).u16(7).bytes()) +
        labelSst(1, 0, 1) + labelSst(1, 1, 0) +
        biffRecord(0x0204, cellHead(1, 2).raw(biff8Text("B-101")).bytes()) +
        biffRecord(0x0204, cellHead(1, 3).raw(wideName).bytes()) +
        // RSTRING: the text, then its formatting runs.
        biffRecord(0x00D6, cellHead(1, 4).raw(biff8Text("rich")).u16(1).u16(0).u16(0).bytes()) +
        formula(2, 0, ByteBuilder().f64(42.25).bytes()) + formula(2, 1, special(0, 0)) +
        biffRecord(0x0207, biff8Text("from a formula")) + formula(2, 2, special(1, 1)) +
        formula(2, 3, special(2, 0x07)) + formula(2, 4, special(3, 0)) +
        biffRecord(0x0205, cellHead(2, 5).u8(0).u8(0).bytes()) +
        biffRecord(0x0205, cellHead(2, 6).u8(0x2A).u8(1).bytes()) +
        // BLANK holds no value.
        biffRecord(0x0201, cellHead(3, 0).bytes());
    BiffWorkbook book;
    book.globals(sst(2, biff8Text("Quarry") + biff8Text("Name"))).sheet("Data", records);
    const auto workbook = xls(book);
    ASSERT_EQ(workbook->sheetNames(), QStringList{"Data"});
    const CellStore& cells = workbook->cells(0);

    struct Case {
        int row;
        int column;
        QVariant expected;
    };
    const Case cases[] = {
        {0, 0, 1000.5},   {0, 1, 7.0},       {0, 2, 12.34},
        {0, 3, 2.5},      {0, 4, 0.025},     {0, 5, -3.0},
        {0, 6, 5.0},      {0, 7, 6.0},       {1, 0, "Name"},
        {1, 1, "Quarry"}, {1, 2, "B-101"},   {1, 3, QString::fromUtf16(u"Œ€")},
        {1, 4, "rich"},   {2, 0, 42.25},     {2, 1, "from a formula"},
        {2, 2, 1.0},      {2, 3, "#DIV/0!"}, {2, 4, QVariant()},
        {2, 5, 0.0},      {2, 6, "#N/A"},    {3, 0, QVariant()},
    };
    for (const Case& c : cases)
        EXPECT_EQ(cells.value(c.row, c.column), c.expected) << c.row << "," << c.column;
    EXPECT_EQ(cells.size(), 19u);
    EXPECT_EQ(cells.usedArea(), (CellArea{0, 0, 2, 7}));
}

TEST(XlsReader, SharedStringsCutAcrossContinueRecordsChangeWidthWhereTheFileSays)
{
    // "Quarry" starts in the SST record as one byte per character and goes on in a CONTINUE record,
    // which switches to two bytes; a rich string with an extension follows whole; then "ok".
    const QByteArray first = ByteBuilder().u16(6).u8(0).raw("Qua").bytes();
    const QByteArray rest = ByteBuilder()
                                .u8(1)
                                .u16('r')
                                .u16('r')
                                .u16('y')
                                .u16(3)
                                .u8(0x0C)
                                .u16(1)
                                .u32(2)
                                .raw("abc")
                                .u32(0)
                                .raw("xx")
                                .raw(biff8Text("ok"))
                                .bytes();
    BiffWorkbook book;
    book.globals(sst(3, first) + biffRecord(0x003C, rest))
        .sheet("Data", labelSst(0, 0, 0) + labelSst(0, 1, 1) + labelSst(0, 2, 2));
    const auto workbook = xls(book);
    const CellStore& cells = workbook->cells(0);
    EXPECT_EQ(cells.value(0, 0), "Quarry");
    EXPECT_EQ(cells.value(0, 1), "abc");
    EXPECT_EQ(cells.value(0, 2), "ok");
}

TEST(XlsReader, ABiff5WorkbookKeepsItsTextsAsBytes)
{
    BiffWorkbook book(false);
    book.sheet("Alt", number(0, 0, 1) + biffRecord(0x0204, cellHead(0, 1)
                                                               .u16(5)
                                                               .raw("Gr\xFC\xDF"
                                                                    "e")
                                                               .bytes()));
    const auto workbook = Workbook::fromBytes(book.file(), Workbook::Format::Xls);
    EXPECT_EQ(workbook->sheetNames(), QStringList{"Alt"});
    EXPECT_EQ(workbook->cells(0).value(0, 1), QString::fromUtf16(u"Grüße"));
    EXPECT_THROW(workbook->definedName("Quarry"), WorkbookError);
}

TEST(XlsReader, OneCellInTheLastRowAndColumnIsOneCell)
{
    // Column IV, row 65536: the largest an .xls sheet holds. The source still has its two cells only.
    BiffWorkbook book;
    book.globals(sst(1, biff8Text("Name")))
        .sheet("Data", labelSst(0, 0, 0) + number(1, 0, 5) + number(65535, 255, 7.5));
    const auto workbook = xls(book);
    EXPECT_EQ(workbook->cells(0).usedArea(), (CellArea{0, 0, 65535, 255}));
    const SheetData data = WorkbookReader::read(*workbook, "Data$");
    EXPECT_EQ(data.headings, QStringList({"Name", "F256"}));
    ASSERT_EQ(data.rows.size(), 2u);
    EXPECT_EQ(data.rows[0].number, 2);
    EXPECT_EQ(data.rows[0].values, QVariantList({5.0, QVariant()}));
    EXPECT_EQ(data.rows[1].number, 65536);
    EXPECT_EQ(data.rows[1].values, QVariantList({QVariant(), 7.5}));
}

TEST(XlsReader, DamagedWorkbooksGiveAMessageNeverACrash)
{
    struct Case {
        const char* what;
        QByteArray file;
        const char* message;
    };
    // A shared string table that claims 2^31 strings and holds one: the one is read, nothing is
    // reserved for the rest; a cell pointing past it is refused.
    BiffWorkbook hugeCount;
    hugeCount
        .globals(
            biffRecord(0x00FC, ByteBuilder().u32(0x80000000u).u32(0x80000000u).raw(biff8Text("a")).bytes()))
        .sheet("Data", labelSst(0, 0, 0) + labelSst(1, 0, 5));
    // A sheet whose records the workbook places beyond the stream.
    QByteArray farSheet = BiffWorkbook().sheet("Data", number(0, 0, 1)).stream();
    const qsizetype boundSheet = farSheet.indexOf(QByteArray::fromHex("8500"));
    farSheet[boundSheet + 4] = '\xFF';
    farSheet[boundSheet + 5] = '\xFF';
    // An allocation table whose chain loops back on itself.
    QByteArray looping = BiffWorkbook().sheet("Data", number(0, 0, 1)).file();
    looping.replace(looping.size() - 512, 8, ByteBuilder().u32(1).u32(0).bytes());
    // The password record.
    const QByteArray encrypted =
        BiffWorkbook().globals(biffRecord(0x002F, QByteArray(6, '\0'))).sheet("Data", number(0, 0, 1)).file();
    // A workbook stream that does not start with BOF.
    const QByteArray noBof = BiffWorkbook::compoundFile(biffRecord(0x0203, QByteArray(14, '\0')), "Workbook");

    const Case cases[] = {
        {"huge string count", hugeCount.file(), "it is damaged (a text of its sheet 1 is missing)."},
        {"sheet beyond the stream", BiffWorkbook::compoundFile(farSheet, "Workbook"),
         "it is damaged (its sheet 1 cannot be read)."},
        {"looping chain", looping, "it is damaged or not an Excel workbook."},
        {"encrypted", encrypted, "it is protected by a password. Save it without one and import it again."},
        {"no BOF", noBof, "it is damaged or not an Excel 95/97 workbook."},
        {"cut short", BiffWorkbook().sheet("Data", number(0, 0, 1)).file().left(1000),
         "it is damaged or not an Excel workbook."},
    };
    for (const Case& c : cases) {
        try {
            const auto workbook = Workbook::fromBytes(c.file, Workbook::Format::Xls);
            WorkbookReader::read(*workbook, "Data$");
            ADD_FAILURE() << c.what << " was read";
        } catch (const WorkbookError& e) {
            EXPECT_EQ(e.message(), c.message) << c.what;
        }
    }
}

} // namespace
} // namespace kilnova
