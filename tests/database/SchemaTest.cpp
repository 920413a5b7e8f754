#include "database/RecordTable.h"
#include "support/TempProject.h"

#include <QSqlQuery>

#include <algorithm>

namespace kilnova {
namespace {

using test::TempProject;
using SchemaTest = TempProject;

QStringList columnsOf(ProjectDatabase& db, const QString& table)
{
    QSqlQuery q = db.exec(QStringLiteral("PRAGMA table_info([%1])").arg(table));
    QStringList names;
    while (q.next())
        names << q.value(1).toString();
    return names;
}

TEST_F(SchemaTest, FreshDatabaseHoldsOnlyTheFourActualStockpiles)
{
    for (const TableDef& t : Schema::tables())
        EXPECT_EQ(mDb->count(t.id), t.id == Table::Stockpile ? 4 : 0) << t.name.toStdString();

    const std::vector<Record> stockpiles = RecordTable(*mDb, Table::Stockpile).all();
    ASSERT_EQ(stockpiles.size(), 4u);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(stockpiles[i].name(), QStringLiteral("Actual %1").arg(i + 1));
        EXPECT_EQ(stockpiles[i].text("Source"), "Actual");
        EXPECT_EQ(stockpiles[i].number("Quantity"), 0.0);
        for (float v : stockpiles[i].analysis())
            EXPECT_EQ(v, -1.0f); // CostFactor of a stockpile defaults to -1 too
    }
}

TEST_F(SchemaTest, NamesAreOrderedAsTheDatabaseOrdersThem)
{
    // Letters fold to lower case before they are compared, so "[" and "_" come before "Z"; letters
    // beyond ASCII keep their case and follow every ASCII character.
    QStringList names = {"b", "Z", "[pit]", "A2", "a10", "_x", "ä", "Ä", "O'Brien", "o", "1", "é"};
    RecordTable blasts(*mDb, Table::Blast);
    for (const QString& name : names) {
        Record b(Table::Blast);
        b.setValue("Name", name);
        blasts.add(b);
    }
    QSqlQuery q = mDb->exec("SELECT [Name] FROM [Blast] ORDER BY [Name]");
    QStringList byDatabase;
    while (q.next())
        byDatabase << q.value(0).toString();
    std::sort(names.begin(), names.end(), Schema::nameLess);
    EXPECT_EQ(names, byDatabase);
    EXPECT_EQ(byDatabase.first(), "1");
}

TEST_F(SchemaTest, TablesAndColumnsAreInCreationOrder)
{
    QSqlQuery q = mDb->exec("SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY rowid");
    QStringList tables;
    while (q.next())
        tables << q.value(0).toString();
    EXPECT_EQ(tables,
              QStringList({"Blast", "backup-Blast", "temp-Blast", "Stockpile", "backup-Stockpile", "Crude",
                           "Clinker", "Additives", "stdBlast", "backup-stdBlast", "temp-stdBlast", "Coal"}));

    const QStringList blast = columnsOf(*mDb, "Blast");
    ASSERT_EQ(blast.size(), 27);
    EXPECT_EQ(blast.mid(0, 6), QStringList({"Name", "East", "North", "Elevation", "Quantity", "Titration"}));
    EXPECT_EQ(blast.mid(23, 4), QStringList({"NaEq", "CostFactor", "C4AF", "Cl"}));
    EXPECT_EQ(columnsOf(*mDb, "backup-Blast"), blast);
    EXPECT_EQ(columnsOf(*mDb, "Stockpile").mid(0, 4),
              QStringList({"Name", "Source", "Quantity", "Titration"}));
    EXPECT_EQ(columnsOf(*mDb, "Additives").size(), 23);
    EXPECT_EQ(columnsOf(*mDb, "stdBlast"),
              QStringList({"Name", "Titration", "SiO2", "Al2O3", "Fe2O3", "CaO", "MgO", "LOI", "SO3", "K2O",
                           "Na2O", "TiO2", "P2O5", "Cl"}));
    const QStringList coal = columnsOf(*mDb, "Coal");
    ASSERT_EQ(coal.size(), 28);
    EXPECT_EQ(coal.mid(0, 8),
              QStringList({"Name", "Quantity", "BTU", "Ash", "Humidity", "Volatiles", "Sulfur", "SiO2"}));
    EXPECT_EQ(coal.mid(25), QStringList({"CostFactor", "C4AF", "Cl"}));
}

struct DefaultCase {
    const char* table;
    const char* insert; // only the key columns are given
    std::vector<std::pair<const char*, double>> expected;
};

TEST_F(SchemaTest, EngineFillsTheDefaultsOfEachTable)
{
    ASSERT_EQ(rawExec("INSERT INTO [Blast] ([Name]) VALUES ('B1')"), "");
    const std::vector<DefaultCase> cases = {
        {"Blast",
         nullptr,
         {{"East", -1},
          {"North", -1},
          {"Elevation", -1},
          {"Quantity", 0},
          {"CostFactor", 0},
          {"SiO2", -1},
          {"Cl", -1}}},
        {"Stockpile",
         "INSERT INTO [Stockpile] ([Name]) VALUES ('S1')",
         {{"Quantity", 0}, {"CostFactor", -1}, {"CaO", -1}}},
        {"Crude", "INSERT INTO [Crude] ([Name]) VALUES ('C1')", {{"Quantity", 0}, {"CostFactor", -1}}},
        {"Clinker",
         "INSERT INTO [Clinker] ([Name]) VALUES ('K1')",
         {{"Quantity", -1}, {"CostFactor", 0}, {"C3S", -1}}},
        {"Additives",
         "INSERT INTO [Additives] ([Name]) VALUES ('A1')",
         {{"CostFactor", 0}, {"Titration", -1}}},
        {"stdBlast", "INSERT INTO [stdBlast] ([Name]) VALUES ('B1')", {{"Titration", 0}, {"Cl", 0}}},
        {"Coal",
         "INSERT INTO [Coal] ([Name]) VALUES ('Coal1')",
         {{"Quantity", -1},
          {"BTU", -1},
          {"Ash", -1},
          {"NaEq", -1},
          {"CostFactor", 0},
          {"C4AF", 0},
          {"Cl", 0}}},
    };
    for (const DefaultCase& c : cases) {
        if (c.insert) {
            ASSERT_EQ(rawExec(c.insert), "") << c.table;
        }
        for (const auto& [column, value] : c.expected) {
            QSqlQuery q = mDb->exec(QStringLiteral("SELECT [%1] FROM [%2]").arg(column, c.table));
            ASSERT_TRUE(q.next()) << c.table;
            EXPECT_EQ(q.value(0).toDouble(), value) << c.table << "." << column;
        }
    }
    QSqlQuery q = mDb->exec("SELECT [Source] FROM [Crude]");
    ASSERT_TRUE(q.next());
    EXPECT_EQ(q.value(0).toString(), "unknown");
}

TEST_F(SchemaTest, EngineRefusesWhatTheSchemaForbids)
{
    ASSERT_EQ(rawExec("INSERT INTO [Blast] ([Name], [Quantity]) VALUES ('B1', 100)"), "");
    const std::vector<std::pair<const char*, const char*>> refused = {
        {"duplicate name", "INSERT INTO [Blast] ([Name]) VALUES ('B1')"},
        {"duplicate name in another case", "INSERT INTO [Blast] ([Name]) VALUES ('b1')"},
        {"null name", "INSERT INTO [Blast] ([Name]) VALUES (NULL)"},
        {"empty name", "INSERT INTO [Blast] ([Name]) VALUES ('')"},
        {"51 characters",
         "INSERT INTO [Blast] ([Name]) VALUES ('123456789012345678901234567890123456789012345678901')"},
        {"null number", "INSERT INTO [Blast] ([Name], [East]) VALUES ('B2', NULL)"},
        {"text in a Double column", "INSERT INTO [Blast] ([Name], [East]) VALUES ('B3', 'far east')"},
        {"text in a Single column", "INSERT INTO [Additives] ([Name], [SiO2]) VALUES ('A', 'n/a')"},
        {"empty source", "INSERT INTO [Stockpile] ([Name], [Source]) VALUES ('S', '')"},
        {"deviations of no blast", "INSERT INTO [stdBlast] ([Name]) VALUES ('Nowhere')"},
        {"duplicate working copy", "INSERT INTO [temp-Blast] ([Name]) VALUES ('T'), ('T')"},
        {"working deviations of no working blast", "INSERT INTO [temp-stdBlast] ([Name]) VALUES ('B1')"},
        {"update to null", "UPDATE [Blast] SET [Quantity] = NULL"},
        {"beyond a Single", "INSERT INTO [Blast] ([Name], [SiO2]) VALUES ('B5', -3.5e38)"},
        {"infinite Double", "INSERT INTO [Blast] ([Name], [North]) VALUES ('B6', 1e999)"},
    };
    for (const auto& [what, sql] : refused)
        EXPECT_NE(rawExec(sql), "") << what;
    EXPECT_EQ(mDb->count(Table::Blast), 1);
    EXPECT_EQ(mDb->count(Table::StdBlast), 0);

    const std::vector<std::pair<const char*, const char*>> accepted = {
        {"50 characters",
         "INSERT INTO [Blast] ([Name]) VALUES ('12345678901234567890123456789012345678901234567890')"},
        {"a single blank is text", "INSERT INTO [Stockpile] ([Name], [Source]) VALUES ('S', ' ')"},
        {"duplicate stockpile pair",
         "INSERT INTO [Stockpile] ([Name], [Source]) VALUES ('Actual 1', 'Actual')"},
        {"integer into a Double column", "INSERT INTO [Blast] ([Name], [East]) VALUES ('B4', 5)"},
        {"the largest Single", "INSERT INTO [Coal] ([Name], [Ash]) VALUES ('C', 3.4028234663852886e38)"},
        {"backups are not related", "INSERT INTO [backup-stdBlast] ([Name]) VALUES ('Gone')"},
        {"backups have no unique index", "INSERT INTO [backup-Blast] ([Name]) VALUES ('B1'), ('B1')"},
    };
    for (const auto& [what, sql] : accepted)
        EXPECT_EQ(rawExec(sql), "") << what;
}

TEST_F(SchemaTest, BlastRelationsCascadeRenamesAndDeletes)
{
    for (const char* prefix : {"", "temp-"}) {
        const QString blast = QStringLiteral("[%1Blast]").arg(prefix);
        const QString std = QStringLiteral("[%1stdBlast]").arg(prefix);
        ASSERT_EQ(rawExec(QStringLiteral("INSERT INTO %1 ([Name]) VALUES ('B1'), ('B2')").arg(blast)), "");
        ASSERT_EQ(
            rawExec(
                QStringLiteral("INSERT INTO %1 ([Name], [SiO2]) VALUES ('B1', 0.5), ('B2', 0.7)").arg(std)),
            "");
        ASSERT_EQ(
            rawExec(QStringLiteral("UPDATE %1 SET [Name] = 'B1 renamed' WHERE [Name] = 'B1'").arg(blast)),
            "");
        ASSERT_EQ(rawExec(QStringLiteral("DELETE FROM %1 WHERE [Name] = 'B2'").arg(blast)), "");

        QSqlQuery q = mDb->exec(QStringLiteral("SELECT [Name], [SiO2] FROM %1").arg(std));
        ASSERT_TRUE(q.next()) << prefix;
        EXPECT_EQ(q.value(0).toString(), "B1 renamed") << prefix;
        EXPECT_FLOAT_EQ(q.value(1).toFloat(), 0.5f);
        EXPECT_FALSE(q.next()) << prefix << ": the deviations of a deleted blast must go with it";
    }
}

} // namespace
} // namespace kilnova
