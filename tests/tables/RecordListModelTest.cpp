#include "tables/RecordListModel.h"

#include <QPersistentModelIndex>

#include <gtest/gtest.h>

namespace kilnova {
namespace {

Record blast(const QString& name, double quantity)
{
    Record r(Table::Blast);
    r.setValue("Name", name);
    r.setValue("Quantity", quantity);
    return r;
}

QStringList column(const RecordListModel& model, int c)
{
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row)
        texts << model.index(row, c).data().toString();
    return texts;
}

TEST(RecordListModel, OneColumnPerTableColumnHeadedByItsNameInTableOrder)
{
    for (Table table :
         {Table::Blast, Table::Stockpile, Table::Crude, Table::Clinker, Table::Additives, Table::Coal}) {
        RecordListModel model(table);
        QStringList headers;
        for (int c = 0; c < model.columnCount(); ++c)
            headers << model.headerData(c, Qt::Horizontal).toString();
        EXPECT_EQ(headers, Schema::table(table).columnNames()) << Schema::table(table).name.toStdString();
    }
    RecordListModel coal(Table::Coal);
    EXPECT_EQ(coal.headerData(1, Qt::Horizontal).toString(), "Quantity");
    EXPECT_EQ(coal.headerData(2, Qt::Horizontal).toString(), "BTU");
}

TEST(RecordListModel, CellsShowNumbersRightAlignedAndFlagMissingValues)
{
    Record r = blast("LS398-01", 12345.678);
    r.setValue("East", 512340.5);
    r.setValue("SiO2", 4.876);
    r.setValue("LSF", 0.97891);
    r.setValue("Cl", 0.0125);
    r.setValue("CostFactor", 0.0);
    RecordListModel model(Table::Blast);
    model.setRecords({r});

    struct Case {
        const char* column;
        const char* shown;
        bool missing;
        bool right;
    };
    const Case cases[] = {
        {"Name", "LS398-01", false, false}, {"East", "512340.50", false, true},
        {"North", "-1", true, true},        {"Quantity", "12345.68", false, true},
        {"SiO2", "4.88", false, true},      {"CaO", "-1", true, true},
        {"LSF", "0.979", false, true},      {"CostFactor", "0.00", false, true},
        {"Cl", "0.013", false, true},
    };
    const TableDef& def = Schema::table(Table::Blast);
    for (const Case& c : cases) {
        const QModelIndex cell = model.index(0, def.columnIndex(c.column));
        EXPECT_EQ(cell.data().toString(), c.shown) << c.column;
        EXPECT_EQ(cell.data(RecordListModel::kMissingRole).toBool(), c.missing) << c.column;
        EXPECT_EQ(cell.data(Qt::ToolTipRole).toString(), c.missing ? "missing" : "") << c.column;
        const auto align = cell.data(Qt::TextAlignmentRole).value<Qt::Alignment>();
        EXPECT_EQ(bool(align & Qt::AlignRight), c.right) << c.column;
    }
    EXPECT_EQ(model.index(0, def.columnIndex("SiO2")).data(Qt::EditRole).toDouble(), double(4.876f));
}

TEST(RecordListModel, SortsStablyByNumberOrByNameAsPeopleReadIt)
{
    RecordListModel model(Table::Blast);
    model.setRecords(
        {blast("b10", 500), blast("B9", 100), blast("a2", 500), blast("B1", 100), blast("C", 300)});
    const int name = 0;
    const int quantity = Schema::table(Table::Blast).columnIndex("Quantity");

    struct Case {
        int column;
        Qt::SortOrder order;
        QStringList names;
    };
    const Case cases[] = {
        {name, Qt::AscendingOrder, {"a2", "B1", "B9", "b10", "C"}},
        {name, Qt::DescendingOrder, {"C", "b10", "B9", "B1", "a2"}},
        // Equal quantities keep the order they had before.
        {quantity, Qt::AscendingOrder, {"B9", "B1", "C", "b10", "a2"}},
        {quantity, Qt::DescendingOrder, {"b10", "a2", "C", "B9", "B1"}},
    };
    for (const Case& c : cases) {
        model.setRecords(
            {blast("b10", 500), blast("B9", 100), blast("a2", 500), blast("B1", 100), blast("C", 300)});
        model.sort(c.column, c.order);
        EXPECT_EQ(column(model, name), c.names) << c.column << " " << c.order;
    }
}

TEST(RecordListModel, SortIsKeptWhenRecordsAreReplacedAndSelectionFollowsItsRow)
{
    RecordListModel model(Table::Blast);
    model.setRecords({blast("B2", 1), blast("B3", 2), blast("B1", 3)});
    const QPersistentModelIndex selected = model.index(0, 0); // B2
    model.sort(0, Qt::AscendingOrder);
    EXPECT_EQ(selected.row(), 1);
    EXPECT_EQ(selected.data().toString(), "B2");

    Record stored = blast("A0", 9);
    stored.setRowId(42);
    model.setRecords({blast("Z", 1), stored, blast("M", 2)});
    EXPECT_EQ(column(model, 0), QStringList({"A0", "M", "Z"}));
    EXPECT_EQ(model.rowOf(42), 0);
    EXPECT_FALSE(model.rowOf(7));
}

} // namespace
} // namespace kilnova
