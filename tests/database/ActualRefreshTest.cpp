#include "database/ActualRefresh.h"
#include "common/MessageTable.h"
#include "database/ExternalSourceError.h"
#include "database/OdbcCatalog.h"
#include "database/RecordTable.h"
#include "support/OdbcTestSource.h"
#include "support/ScriptedPrompt.h"
#include "support/TempProject.h"

#include <QFile>

namespace kilnova {
namespace {

using test::OdbcTestSource;

constexpr std::size_t at(Element e)
{
    return static_cast<std::size_t>(elementIndex(e));
}

/// Name, Source, Quantity, then Titration to C4AF, then Cl: one row of the standard stkpiles table.
QString row(const QString& name, const QString& source, const QString& quantity, const QString& SiO2,
            const QString& MS = "99")
{
    return QStringLiteral(
               "INSERT INTO stkpiles VALUES ('%1', '%2', %3, 77.5, %4, 3, 1.5, 44.25, 1.125, 35.5, "
               "0.25, 0.5, 0.125, 0.2, 0.0625, %5, 99, 99, 99, 99, 99, 99, 2.75, 99, 0.75)")
        .arg(name, source, quantity, SiO2, MS);
}

class ActualRefreshTest : public test::TempProject {
protected:
    void SetUp() override
    {
        TempProject::SetUp();
        ASSERT_TRUE(OdbcTestSource::setUp());
        // Cl is not read from the plant: the local value stays.
        RecordTable table(*mDb, Table::Stockpile);
        for (const Record& r : table.all()) {
            Record kept = r;
            Analysis a = kept.analysis();
            a[at(Element::Cl)] = 0.015f;
            kept.setAnalysis(a);
            table.update(kept);
        }
    }

    std::vector<Record> stockpiles() { return RecordTable(*mDb, Table::Stockpile).all(); }

    QString question(const QString& connect)
    {
        return message(Msg::ReplaceActualStockpiles, {OdbcTestSource::plantPath(), connect});
    }
};

TEST_F(ActualRefreshTest, ReplacesTheLocalActualStockpilesFromTheDataSource)
{
    OdbcTestSource::writePlant({
        OdbcTestSource::standardTable(), row("Actual 2", "Actual", "12500.5", "13.5"),
        row("Bed A", "Pre-blending", "900", "11"), // not an Actual stockpile
        row("Actual 3", "Pit", "700", "12"),       // another pile with an Actual name
        "INSERT INTO stkpiles (Name, Source, Quantity) VALUES ('Actual 1', 'Actual', 40)", // nothing measured
    });
    test::ScriptedPrompt ui;
    ui.yesNoAnswers = {true};
    const std::vector<Record> before = stockpiles();
    EXPECT_EQ(ActualRefresh::run(*mDb, ui, OdbcTestSource::kPlant), 2);
    EXPECT_EQ(ui.questions, QStringList{question("ODBC;DSN=Kilnova Plant")});
    EXPECT_TRUE(ui.messages.empty()) << ui.messageTexts().join('\n').toStdString();

    const Record a2 = *RecordTable(*mDb, Table::Stockpile).find({"Actual 2", "Actual"});
    EXPECT_EQ(a2.number("Quantity"), 12500.5);
    const Analysis v = a2.analysis();
    struct Expected {
        Element element;
        float value;
    };
    const Expected expected[] = {
        {Element::Titration, 77.5f},
        {Element::SiO2, 13.5f},
        {Element::Al2O3, 3},
        {Element::Fe2O3, 1.5f},
        {Element::CaO, 44.25f},
        {Element::MgO, 1.125f},
        {Element::P2O5, 0.0625f},
        {Element::CostFactor, 2.75f},
        {Element::MS, 3}, // 13.5 / (3 + 1.5), not the 99 of the plant
        {Element::MA, 2}, // 3 / 1.5
        {Element::Cl, 0.015f},
    };
    for (const Expected& e : expected)
        EXPECT_EQ(v[at(e.element)], e.value) << elementIndex(e.element);

    const Record a1 = *RecordTable(*mDb, Table::Stockpile).find({"Actual 1", "Actual"});
    EXPECT_EQ(a1.number("Quantity"), 40.0);
    EXPECT_EQ(a1.analysis()[at(Element::SiO2)], -1.0f) << "an empty value is a missing one";
    EXPECT_EQ(a1.analysis()[at(Element::MS)], -1.0f);
    // Actual 3 and Actual 4 and every other record are as they were.
    const std::vector<Record> after = stockpiles();
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t i = 2; i < after.size(); ++i)
        EXPECT_EQ(after[i], before[i]) << after[i].name().toStdString();
}

TEST_F(ActualRefreshTest, AnsweringNoOrFailingChangesNothing)
{
    const QString missingColumn =
        QStringLiteral("CREATE TABLE stkpiles (Name TEXT, Source TEXT, Quantity DOUBLE)");
    struct Case {
        const char* name;
        QStringList plant;
        QString connection;
        std::deque<bool> answers;
        QString messageStart; ///< empty: no message
    };
    const QString plantString =
        QStringLiteral("DRIVER={%1};Database=%2").arg(OdbcTestSource::kDriver, OdbcTestSource::plantPath());
    const Case cases[] = {
        {"No",
         {OdbcTestSource::standardTable(), row("Actual 1", "Actual", "5", "13")},
         OdbcTestSource::kPlant,
         {false},
         {}},
        {"data source unknown",
         {},
         OdbcTestSource::kNowhere,
         {},
         "The data source Kilnova Nowhere cannot be opened: "},
        {"connection refused",
         {},
         OdbcTestSource::kBroken,
         {},
         "The data source Kilnova Broken cannot be opened: "},
        {"nothing chosen",
         {},
         "  ",
         {},
         "The data source  cannot be opened: No valid data source was specified"},
        {"no stkpiles table",
         {"CREATE TABLE other (Name TEXT)"},
         OdbcTestSource::kPlant,
         {true},
         QStringLiteral("The Actual stockpiles cannot be read from %1: ").arg(OdbcTestSource::plantPath())},
        {"a column lacking",
         {missingColumn, "INSERT INTO stkpiles VALUES ('Actual 1', 'Actual', 5)"},
         OdbcTestSource::kPlant,
         {true},
         QStringLiteral("The Actual stockpiles cannot be read from %1: ").arg(OdbcTestSource::plantPath())},
        {"text for a number",
         {OdbcTestSource::standardTable(), row("Actual 1", "Actual", "5", "13"),
          row("Actual 2", "Actual", "5", "'12,5'")},
         plantString,
         {true},
         "The row of Actual 2 in stkpiles holds \"12,5\" in SiO2, which is not a number.\nNothing was "
         "changed."},
        {"no Actual stockpile",
         {OdbcTestSource::standardTable(), row("Actual 1", "Pit", "5", "13")},
         "DSN=Kilnova Plant;",
         {true},
         QStringLiteral(
             "The table stkpiles of %1 holds none of the four Actual stockpiles.\nNothing was changed.")
             .arg(OdbcTestSource::plantPath())},
    };
    const std::vector<Record> before = stockpiles();
    for (const Case& c : cases) {
        if (!c.plant.isEmpty())
            OdbcTestSource::writePlant(c.plant);
        test::ScriptedPrompt ui;
        ui.yesNoAnswers = c.answers;
        EXPECT_FALSE(ActualRefresh::run(*mDb, ui, c.connection)) << c.name;
        EXPECT_TRUE(ui.yesNoAnswers.empty()) << c.name << ": the question was not asked";
        if (c.messageStart.isEmpty()) {
            EXPECT_TRUE(ui.messages.empty()) << c.name;
        } else {
            ASSERT_EQ(ui.messages.size(), 1u) << c.name;
            EXPECT_TRUE(ui.messages[0].text.startsWith(c.messageStart))
                << c.name << ": " << ui.messages[0].text.toStdString();
            EXPECT_TRUE(ui.messages[0].text.endsWith("Nothing was changed.")) << c.name;
        }
        EXPECT_EQ(stockpiles(), before) << c.name;
    }
}

TEST_F(ActualRefreshTest, TypedConnectionStringsAndTheDataSourceList)
{
    OdbcTestSource::writePlant({OdbcTestSource::standardTable(), row("Actual 4", "Actual", "10", "13.5")});
    const QString typed =
        QStringLiteral("DRIVER={%1};Database=%2").arg(OdbcTestSource::kDriver, OdbcTestSource::plantPath());
    test::ScriptedPrompt ui;
    ui.yesNoAnswers = {true};
    EXPECT_EQ(ActualRefresh::run(*mDb, ui, typed), 1);
    EXPECT_EQ(ui.questions, QStringList{question("ODBC;" + typed)});
    EXPECT_EQ(RecordTable(*mDb, Table::Stockpile).find({"Actual 4", "Actual"})->number("Quantity"), 10.0);

    const QStringList sources = OdbcCatalog::dataSources();
    EXPECT_TRUE(sources.contains(OdbcTestSource::kPlant)) << sources.join(", ").toStdString();
    EXPECT_TRUE(sources.contains(OdbcTestSource::kBroken));
    EXPECT_FALSE(sources.contains(OdbcTestSource::kNowhere));

    struct Form {
        const char* given;
        const char* driver;
    };
    const Form forms[] = {{"Plant", "Plant"},
                          {" DSN=Plant;UID=me ", "Plant;UID=me"},
                          {"dsn=Plant", "Plant"},
                          {"DSN=Plant;DRIVER={x}", "DSN=Plant;DRIVER={x}"},
                          {"DRIVER={x};Database=/a.db", "DRIVER={x};Database=/a.db"}};
    for (const Form& f : forms)
        EXPECT_EQ(ExternalStockpiles::driverConnection(f.given), f.driver) << f.given;
}

TEST_F(ActualRefreshTest, AVanishedDatabaseFileIsToldAfterTheQuestion)
{
    OdbcTestSource::writePlant({OdbcTestSource::standardTable(), row("Actual 1", "Actual", "5", "13")});
    const std::vector<Record> before = stockpiles();
    ASSERT_TRUE(QFile::remove(path("project.kndb")));
    test::ScriptedPrompt ui;
    ui.yesNoAnswers = {true};
    EXPECT_FALSE(ActualRefresh::run(*mDb, ui, OdbcTestSource::kPlant));
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(ui.messages[0].text, message(Msg::DatabaseOperationFailed));
    EXPECT_EQ(stockpiles(), before);
}

TEST(ExternalRowTest, ValuesAsTheDriverGivesThemBecomeNumbersOrARefusal)
{
    // The driver hands over text, numbers or NULL; whatever it is, the row holds finite numbers the
    // analysis can keep, or nothing is read.
    auto refusal = [](const char* value, const char* column) {
        return message(Msg::ExternalNotANumber, {"Actual 1", value, column});
    };
    auto tooLarge = [](const char* value, const char* column, const char* most) {
        return message(Msg::ExternalOutOfRange, {"Actual 1", value, column, most});
    };
    struct Case {
        const char* name;
        std::vector<QVariant> values; // Name, Source, Quantity, Titration, SiO2, ...
        double quantity;
        double titration;
        double SiO2;
        QString message; // empty: read
    };
    const QVariant null(QMetaType::fromType<double>());
    const Case cases[] = {
        {"text with blanks", {"Actual 1", "Actual", " 1250.5 ", "0.5", "1e2"}, 1250.5, 0.5, 100, {}},
        {"numbers", {"Actual 1", "Actual", 980.0, qlonglong(3), 14.25}, 980, 3, 14.25, {}},
        {"NULL and missing columns", {"Actual 1", "Actual", null}, -1, -1, -1, {}},
        {"a tonnage beyond any analysis value", {"Actual 1", "Actual", 1e300}, 1e300, -1, -1, {}},
        {"nan as text", {"Actual 1", "Actual", "nan"}, 0, 0, 0, refusal("nan", "Quantity")},
        {"inf as a number",
         {"Actual 1", "Actual", 1.0, std::numeric_limits<double>::infinity()},
         0,
         0,
         0,
         tooLarge("inf", "Titration", "3.40282347e+38")},
        {"inf as text",
         {"Actual 1", "Actual", "-inf"},
         0,
         0,
         0,
         tooLarge("-inf", "Quantity", "1.79769313e+308")},
        {"beyond what the analysis keeps",
         {"Actual 1", "Actual", 1.0, 0.0, "4e38"},
         0,
         0,
         0,
         tooLarge("4e38", "SiO2", "3.40282347e+38")},
        {"decimal comma", {"Actual 1", "Actual", 1.0, 0.0, "12,5"}, 0, 0, 0, refusal("12,5", "SiO2")},
    };
    for (const Case& c : cases) {
        try {
            const ExternalStockpiles::Row row = ExternalStockpiles::rowFrom(c.values);
            EXPECT_TRUE(c.message.isEmpty()) << c.name;
            EXPECT_EQ(row.name, "Actual 1") << c.name;
            EXPECT_EQ(row.quantity, c.quantity) << c.name;
            EXPECT_EQ(row.values[0], c.titration) << c.name;
            EXPECT_EQ(row.values[1], c.SiO2) << c.name;
            EXPECT_EQ(row.values[20], -1.0) << c.name << ": C4AF not given";
        } catch (const ExternalSourceError& e) {
            EXPECT_EQ(e.message(), c.message) << c.name;
        }
    }
}

} // namespace
} // namespace kilnova
