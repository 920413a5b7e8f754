#include "CliFixture.h"
#include "common/MessageTable.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "project/ProjectFile.h"
#include "support/OdbcTestSource.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace kilnova {
namespace {

constexpr std::size_t kSiO2 = static_cast<std::size_t>(elementIndex(Element::SiO2));
constexpr std::size_t kCaO = static_cast<std::size_t>(elementIndex(Element::CaO));

/// Two quarry piles of 100 t (SiO2 10 and 20, CaO 50 and 40), sand, Actual 1 with 300 t at SiO2 14,
/// and stored settings that maximise the CaO of 100 t of crude from the two piles.
class StockpileCliTest : public CliFixture {
protected:
    void SetUp() override
    {
        auto db = ProjectDatabase::create(mDir.filePath("plant.kndb"));
        RecordTable piles(*db, Table::Stockpile);
        auto add = [&](Table table, const QString& name, const QString& source, double quantity, float SiO2,
                       float CaO) {
            Record r(table);
            r.setValue("Name", name);
            if (table == Table::Stockpile) {
                r.setValue("Source", source);
                r.setValue("Quantity", quantity);
            }
            Analysis a = missingAnalysis();
            a[kSiO2] = SiO2;
            a[kCaO] = CaO;
            r.setAnalysis(a);
            RecordTable(*db, table).add(r);
        };
        add(Table::Stockpile, "Pile A", "Quarry", 100, 10, 50);
        add(Table::Stockpile, "Pile B", "Quarry", 100, 20, 40);
        add(Table::Additives, "Sand", {}, 0, 90, 1);
        Record actual = *piles.find({"Actual 1", "Actual"});
        actual.setValue("Quantity", 300.0);
        Analysis a = actual.analysis();
        a[kSiO2] = 14;
        a[kCaO] = 44;
        actual.setAnalysis(a);
        piles.update(actual);

        ProjectSettings s;
        s.databasePath = mDir.filePath("plant.kndb");
        CSTKOptParameters& p = s.stockpileOptimization;
        p.mode = 1;
        p.optimizedElement = "CaO";
        p.requestedTonnage = 100;
        p.stockpileCount = 2;
        p.sources = {"Pile A", "Quarry", "Pile B", "Quarry"};
        ProjectFile::save(s, mDir.filePath("plant.knv"));
    }

    std::optional<Record> pile(const RecordKey& key)
    {
        auto db = ProjectDatabase::open(mDir.filePath("plant.kndb"));
        return RecordTable(*db, Table::Stockpile).find(key);
    }

    /// The tonnes of each source of a --json run, by "NAME (SOURCE)" or additive name.
    static std::map<QString, double> tonnes(const QString& json)
    {
        std::map<QString, double> t;
        for (const QJsonValue& v : QJsonDocument::fromJson(json.toUtf8()).object()["tonnes"].toArray()) {
            const QJsonObject o = v.toObject();
            const QString key =
                o.contains("stockpile")
                    ? QStringLiteral("%1 (%2)").arg(o["stockpile"].toString(), o["source"].toString())
                    : o["additive"].toString();
            t[key] = o["tonnes"].toDouble();
        }
        return t;
    }
};

TEST_F(StockpileCliTest, LeftLimitsOnTheCommandLine)
{
    // Without a left limit Pile A gives all 100 t; with the SiO2 left at 16 or below only 60 t of it
    // can go (10 (100 - a) + 20 (100 - b) <= 1600 with a + b = 100).
    struct Case {
        QStringList options;
        double a, b;
    };
    const Case cases[] = {{{}, 100, 0}, {{"--left", "0 <= SiO2 <= 16"}, 60, 40}};
    for (const Case& c : cases) {
        const CliRun r = run(QStringList{"optimize", "stockpiles", "plant.knv", "--json"} + c.options);
        ASSERT_EQ(r.status, 0) << r.err.toStdString();
        const std::map<QString, double> t = tonnes(r.out);
        EXPECT_NEAR(t.count("Pile A (Quarry)") ? t.at("Pile A (Quarry)") : 0.0, c.a, 1e-3)
            << r.out.toStdString();
        EXPECT_NEAR(t.count("Pile B (Quarry)") ? t.at("Pile B (Quarry)") : 0.0, c.b, 1e-3)
            << r.out.toStdString();
        EXPECT_NEAR(QJsonDocument::fromJson(r.out.toUtf8()).object()["leftTonnage"].toDouble(), 100, 1e-3);
    }

    const CliRun report = run({"optimize", "stockpiles", "plant.knv", "--left", "0 <= SiO2 <= 16"});
    ASSERT_EQ(report.status, 0);
    EXPECT_TRUE(report.out.startsWith("Stockpile Optimization Results\n\nsuccessfully maximized CaO\n\n"
                                      "List of Constraints applied:\nnone\n\n"
                                      "List of Constraints on material left in the stockpiles:\n"
                                      "0.00 <= SiO2 <= 16.00\n\n\nOptimized crude results\n\n"))
        << report.out.toStdString();

    const struct {
        QStringList options;
        int status;
        QString err;
    } failures[] = {
        {{"--left", "0 <= SiO2 <= 5"},
         1,
         "The system cannot reach an optimum, it is infeasible given the set of constraints\n"},
        {{"--left", "0 <= Silica <= 5"},
         2,
         "kilnova-cli: --left \"0 <= Silica <= 5\": \"Silica\" is not an element\n"},
        {{"--select", "Pile A (Bed)", "Sand"},
         1,
         "\"Pile A (Bed)\" is neither a stockpile, written NAME (SOURCE), nor an additive of this "
         "database.\n"},
        {{"--select", "Pile A (Quarry)"}, 1, "Please, select at least 2 sources\n"},
    };
    for (const auto& f : failures) {
        const CliRun r = run(QStringList{"optimize", "stockpiles", "plant.knv"} + f.options);
        EXPECT_EQ(r.status, f.status) << f.options.join(' ').toStdString();
        EXPECT_TRUE(r.err.startsWith(f.err)) << r.err.toStdString();
    }
}

TEST_F(StockpileCliTest, StoreTheCrudeAndSubtractItFromThePilesOnly)
{
    const CliRun r =
        run({"optimize", "stockpiles", "plant.knv", "--mode", "minimize", "--select", "Pile A (Quarry)",
             "Sand", "--constraint", "0 <= SiO2 <= 18", "--store", "Crude 1", "--subtract"});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    // 90 t of the pile (backed up) and 10 t of sand, which is bought and not subtracted.
    EXPECT_TRUE(
        r.out.endsWith("Stored \"Crude 1\" (100.00 t) in the Crude table. Subtracted 90.00 t from 1 "
                       "source record(s), 0 of them deleted. Backup rows made: 1 in backup-Stockpile.\n"))
        << r.out.toStdString();
    // Least CaO with SiO2 at 18 at most: as much sand as 10 a + 90 s <= 18 (a + s), a + s = 100
    // allows: s = 10, a = 90.
    auto db = ProjectDatabase::open(mDir.filePath("plant.kndb"));
    const std::optional<Record> crude = RecordTable(*db, Table::Crude).find({"Crude 1", " "});
    ASSERT_TRUE(crude);
    EXPECT_NEAR(crude->number("Quantity"), 100, 1e-3);
    EXPECT_NEAR(crude->analysis()[kSiO2], 18, 1e-4);
    EXPECT_NEAR(RecordTable(*db, Table::Stockpile).find({"Pile A", "Quarry"})->number("Quantity"), 10, 1e-3);
    EXPECT_EQ(RecordTable(*db, Table::BackupStockpile).count(), 1);
    EXPECT_EQ(RecordTable(*db, Table::Additives).all().size(), 1u);
    db.reset();

    const CliRun again = run({"optimize", "stockpiles", "plant.knv", "--store", "crude 1"});
    EXPECT_EQ(again.status, 1);
    EXPECT_EQ(again.err, "The Crude table already holds a record named \"crude 1\"; nothing was stored.\n"
                         "Add --allow-duplicate to store a second record of that name.\n");
    EXPECT_EQ(again.out, "") << "refused before the run";
}

TEST_F(StockpileCliTest, ActualUpdate)
{
    const CliRun r = run({"actual", "update", "plant.knv", "--into", "Actual 1", "--from", "Pile A (Quarry)",
                          "--delete-sources"});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(r.out, "Blended 1 stockpile(s) into Actual 1 (Actual) and deleted them.\n");
    // (300·14 + 100·10) / 400 = 13
    const Record actual = *pile({"Actual 1", "Actual"});
    EXPECT_EQ(actual.number("Quantity"), 400.0);
    EXPECT_EQ(actual.analysis()[kSiO2], 13.0f);
    EXPECT_FALSE(pile({"Pile A", "Quarry"}));

    const struct {
        QStringList args;
        int status;
        QString err;
    } failures[] = {
        {{"--into", "Pile B (Quarry)", "--from", "pile b (quarry)"},
         1,
         "The stockpile \"Pile B (Quarry)\" cannot be added to itself: nothing was blended.\n"},
        {{"--into", "Actual 1", "--from", "Pile A (Quarry)"},
         1,
         "The stockpile \"Pile A (Quarry)\" is no longer in the Stockpile table: nothing was blended.\n"},
        {{"--into", "Actual 1", "--from", "Pile B"},
         2,
         "kilnova-cli: --from \"Pile B\" is not \"NAME (SOURCE)\"\n"},
        {{"--into", "Actual 1"},
         2,
         "kilnova-cli: actual update needs --into NAME and --from \"NAME (SOURCE)\"\n"},
    };
    for (const auto& f : failures) {
        const CliRun bad = run(QStringList{"actual", "update", "plant.knv"} + f.args);
        EXPECT_EQ(bad.status, f.status) << f.args.join(' ').toStdString();
        EXPECT_TRUE(bad.err.startsWith(f.err)) << bad.err.toStdString();
    }
    EXPECT_EQ(pile({"Actual 1", "Actual"})->number("Quantity"), 400.0);
}

TEST_F(StockpileCliTest, ActualRefreshAsksAndAnswersNoUnlessTold)
{
    ASSERT_TRUE(test::OdbcTestSource::setUp()); // the program inherits the registration
    test::OdbcTestSource::writePlant({test::OdbcTestSource::standardTable(),
                                      "INSERT INTO stkpiles (Name, Source, Quantity, SiO2, CaO) "
                                      "VALUES ('Actual 1', 'Actual', 750, 13.25, 44)"});
    const QString question =
        message(Msg::ReplaceActualStockpiles, {test::OdbcTestSource::plantPath(), "ODBC;DSN=Kilnova Plant"});

    const CliRun no = run({"actual", "refresh", "plant.knv", "--dsn", "Kilnova Plant"});
    EXPECT_EQ(no.status, 1);
    EXPECT_EQ(no.out, question + " no\n");
    EXPECT_EQ(pile({"Actual 1", "Actual"})->number("Quantity"), 300.0);

    const CliRun yes = run({"actual", "refresh", "plant.knv", "--dsn", "Kilnova Plant", "--yes"});
    ASSERT_EQ(yes.status, 0) << yes.err.toStdString();
    EXPECT_EQ(yes.out, question + " yes\n1 Actual stockpiles were replaced from Kilnova Plant.\n");
    const Record actual = *pile({"Actual 1", "Actual"});
    EXPECT_EQ(actual.number("Quantity"), 750.0);
    EXPECT_EQ(actual.analysis()[kSiO2], 13.25f);

    const CliRun missing =
        run({"actual", "refresh", "plant.knv", "--connect", "DSN=Kilnova Nowhere", "--yes"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(missing.err.startsWith("The data source DSN=Kilnova Nowhere cannot be opened: "))
        << missing.err.toStdString();
    EXPECT_EQ(pile({"Actual 1", "Actual"})->number("Quantity"), 750.0);
}

} // namespace
} // namespace kilnova
