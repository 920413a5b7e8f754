#include "database/RecordTable.h"
#include "database/DatabaseError.h"
#include "database/Transaction.h"
#include "support/TempProject.h"

namespace kilnova {
namespace {

using RecordTableTest = test::TempProject;

Record blast(const QString& name, double quantity)
{
    Record r(Table::Blast);
    r.setValue("Name", name);
    r.setValue("Quantity", quantity);
    return r;
}

TEST_F(RecordTableTest, NamesWithQuotesAreAddedFoundAndDeleted)
{
    RecordTable blasts(*mDb, Table::Blast);
    RecordTable deviations(*mDb, Table::StdBlast);
    for (const QString& name : {QStringLiteral("O'Brien"), QStringLiteral("'; DROP TABLE [Blast]; --"),
                                QStringLiteral("Zürich \"North\"")}) {
        blasts.add(blast(name, 10));
        Record dev(Table::StdBlast);
        dev.setValue("Name", name);
        deviations.add(dev);
        const std::optional<Record> found = blasts.find({name, {}});
        ASSERT_TRUE(found) << name.toStdString();
        EXPECT_EQ(found->name(), name);
        EXPECT_EQ(blasts.remove({name, {}}), 1);
        EXPECT_FALSE(blasts.find({name, {}}));
        EXPECT_FALSE(deviations.find({name, {}})) << "the relation deletes the deviations too";
    }
    EXPECT_EQ(blasts.count(), 0);
}

TEST_F(RecordTableTest, SingleColumnsHoldFloatRoundedValuesAndDoublesStayExact)
{
    RecordTable blasts(*mDb, Table::Blast);
    Record r = blast("B1", 0.1);
    Analysis a = missingAnalysis();
    a[elementIndex(Element::SiO2)] = 0.1f;
    r.setAnalysis(a);
    r.setValue("CaO", 45.123456789);
    blasts.add(r);

    const Record stored = *blasts.find({"B1", {}});
    EXPECT_EQ(stored.number("Quantity"), 0.1); // Double keeps every bit
    EXPECT_EQ(stored.number("SiO2"), static_cast<double>(0.1f));
    EXPECT_EQ(stored.number("CaO"), static_cast<double>(45.123456789f));
    EXPECT_EQ(stored.analysis()[elementIndex(Element::CaO)], 45.123456789f);
}

TEST_F(RecordTableTest, DuplicateNameIsRefusedWithAReadableMessageAndNothingWritten)
{
    RecordTable blasts(*mDb, Table::Blast);
    blasts.add(blast("B1", 10));
    try {
        blasts.add(blast("B1", 20));
        FAIL() << "a second blast B1 was accepted";
    } catch (const DatabaseError& e) {
        EXPECT_EQ(e.message(), "The Blast table already holds a record named \"B1\".");
    }
    EXPECT_EQ(blasts.count(), 1);
    EXPECT_EQ(blasts.find({"B1", {}})->number("Quantity"), 10.0);
}

TEST_F(RecordTableTest, StockpilesAreKeyedByNameAndSourceAndDeletedWithTheirDuplicates)
{
    RecordTable stockpiles(*mDb, Table::Stockpile);
    for (const char* source : {"Quarry", "Quarry", "Port"}) {
        Record s(Table::Stockpile);
        s.setValue("Name", "North pile");
        s.setValue("Source", source);
        stockpiles.add(s);
    }
    EXPECT_EQ(stockpiles.findAll({"North pile", "Quarry"}).size(), 2u);
    EXPECT_EQ(stockpiles.remove({"North pile", "Quarry"}), 2);
    EXPECT_EQ(stockpiles.count(), 5); // four Actual stockpiles and the Port one
    EXPECT_TRUE(stockpiles.find({"North pile", "Port"}));
}

TEST_F(RecordTableTest, UpdateRewritesOneRecordAndARenameCarriesTheDeviations)
{
    RecordTable blasts(*mDb, Table::Blast);
    RecordTable deviations(*mDb, Table::StdBlast);
    blasts.add(blast("B1", 10));
    Record dev(Table::StdBlast);
    dev.setValue("Name", "B1");
    dev.setValue("CaO", 1.5);
    deviations.add(dev);

    Record r = *blasts.find({"B1", {}});
    r.setValue("Name", "B1-east");
    r.setValue("Quantity", 7.5);
    blasts.update(r);

    EXPECT_FALSE(blasts.find({"B1", {}}));
    EXPECT_EQ(blasts.find({"B1-east", {}})->number("Quantity"), 7.5);
    ASSERT_TRUE(deviations.find({"B1-east", {}}));
    EXPECT_EQ(deviations.find({"B1-east", {}})->number("CaO"), 1.5);

    blasts.remove({"B1-east", {}});
    EXPECT_THROW(blasts.update(r), DatabaseError) << "a record deleted meanwhile cannot be updated";
}

TEST_F(RecordTableTest, CoalAnalysisHasNoTitrationAndKeepsElementOrder)
{
    RecordTable coal(*mDb, Table::Coal);
    Record c(Table::Coal);
    c.setValue("Name", "Coal A");
    c.setValue("SiO2", 45.0);
    c.setValue("CostFactor", 3.0);
    c.setValue("Cl", 0.02);
    coal.add(c);
    const Analysis a = coal.find({"Coal A", {}})->analysis();
    EXPECT_EQ(a[elementIndex(Element::Titration)], -1.0f);
    EXPECT_EQ(a[elementIndex(Element::SiO2)], 45.0f);
    EXPECT_EQ(a[elementIndex(Element::CostFactor)], 3.0f);
    EXPECT_EQ(a[elementIndex(Element::C4AF)], 0.0f);
    EXPECT_EQ(a[elementIndex(Element::Cl)], 0.02f);
}

TEST_F(RecordTableTest, TransactionRollsBackEverythingWhenNotCommitted)
{
    RecordTable blasts(*mDb, Table::Blast);
    blasts.add(blast("Kept", 1));
    try {
        Transaction transaction(*mDb);
        blasts.add(blast("B1", 1));
        blasts.add(blast("B2", 2));
        blasts.add(blast("B1", 3)); // refused: the whole command must leave no trace
        transaction.commit();
    } catch (const DatabaseError&) {
    }
    EXPECT_EQ(blasts.names(), QStringList({"Kept"}));

    {
        Transaction transaction(*mDb);
        blasts.add(blast("B3", 1));
        transaction.commit();
    }
    EXPECT_EQ(blasts.names(), QStringList({"Kept", "B3"}));
}

TEST_F(RecordTableTest, ListsInTableOrderOrByName)
{
    RecordTable blasts(*mDb, Table::Blast);
    for (const char* name : {"C", "a", "B"})
        blasts.add(blast(name, 1));
    QStringList byName;
    for (const Record& r : blasts.all(true))
        byName << r.name();
    EXPECT_EQ(blasts.names(), QStringList({"C", "a", "B"}));
    EXPECT_EQ(byName, QStringList({"a", "B", "C"}));
}

} // namespace
} // namespace kilnova
