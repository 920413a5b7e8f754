#include "database/RecordTable.h"
#include "database/DatabaseError.h"
#include "database/Transaction.h"
#include "support/TempProject.h"

#include <cmath>
#include <limits>

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

TEST_F(RecordTableTest, RefusalsNameTheValueAtFaultAndWriteNothing)
{
    RecordTable blasts(*mDb, Table::Blast);
    blasts.add(blast("B1", 10));
    struct Case {
        const char* what;
        Table table;
        const char* column;
        QVariant value;
        QString expected;
    };
    const double infinity = std::numeric_limits<double>::infinity();
    const std::vector<Case> cases = {
        {"duplicate name in another case", Table::Blast, "Name", "b1",
         "The Blast table already holds a record named \"b1\"."},
        {"empty name", Table::Blast, "Name", "",
         "The Name of the Blast record \"\" is empty or longer than 50 characters."},
        {"51 characters", Table::Blast, "Name", QString(51, u'x'),
         QStringLiteral("The Name of the Blast record \"%1\" is empty or longer than 50 characters.")
             .arg(QString(51, u'x'))},
        {"empty source", Table::Stockpile, "Source", "",
         "The Source of the Stockpile record \"B2\" is empty or longer than 50 characters."},
        {"beyond a Single", Table::Blast, "SiO2", 1e39,
         "The SiO2 of the Blast record \"B2\" is beyond the range of a single-precision number."},
        {"infinite Single", Table::Additives, "CaO", -infinity,
         "The CaO of the Additives record \"B2\" is beyond the range of a single-precision number."},
        {"infinite Double", Table::Blast, "East", infinity,
         "The East of the Blast record \"B2\" is not a finite number."},
        {"not a number", Table::Coal, "BTU", std::nan(""), "The BTU of the Coal record \"B2\" has no value."},
    };
    for (const Case& c : cases) {
        RecordTable table(*mDb, c.table);
        const long before = table.count();
        Record r(c.table);
        r.setValue("Name", "B2");
        r.setValue(c.column, c.value);
        try {
            table.add(r);
            ADD_FAILURE() << c.what << ": accepted";
        } catch (const DatabaseError& e) {
            EXPECT_EQ(e.message(), c.expected) << c.what;
        }
        EXPECT_EQ(table.count(), before) << c.what;
    }
    EXPECT_EQ(blasts.find({"B1", {}})->number("Quantity"), 10.0);

    // The largest float is still a Single.
    Record largest = blast("B3", 1);
    largest.setValue("SiO2", static_cast<double>(std::numeric_limits<float>::max()));
    blasts.add(largest);
    EXPECT_EQ(blasts.find({"B3", {}})->analysis()[elementIndex(Element::SiO2)],
              std::numeric_limits<float>::max());
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
