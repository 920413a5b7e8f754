#include "optimise/SourceUpdate.h"
#include "common/MessageTable.h"
#include "database/BackupRestore.h"
#include "database/DatabaseError.h"
#include "database/RecordTable.h"
#include "support/ScriptedPrompt.h"
#include "support/TempProject.h"

#include <QDir>
#include <QFile>

#include <functional>

namespace kilnova {
namespace {

class SourceUpdateTest : public test::TempProject {
protected:
    void SetUp() override
    {
        TempProject::SetUp();
        for (auto [name, quantity] : {std::pair{"B1", 1000.0}, {"B2", 100.1}, {"B3", 100.11}, {"B4", 50.0}}) {
            Record b(Table::Blast);
            b.setValue("Name", name);
            b.setValue("Quantity", quantity);
            b.setValue("SiO2", 12.5);
            RecordTable(*mDb, Table::Blast).add(b);
            Record d(Table::StdBlast);
            d.setValue("Name", name);
            d.setValue("SiO2", 0.75);
            RecordTable(*mDb, Table::StdBlast).add(d);
        }
    }

    SourceUpdate::Blend blend() const
    {
        SourceUpdate::Blend b{Table::Stockpile, "Pile 7", 300.0, {}};
        for (std::size_t k = 0; k < kElementCount; ++k)
            b.values[k] = 1.0 + static_cast<double>(k) / 10;
        return b;
    }

    SourceUpdate::Take take(const char* blast, double tonnes) const
    {
        return takeAsRead(Table::Blast, {blast, {}}, tonnes);
    }

    std::vector<SourceUpdate::Take> takes() const
    {
        return {take("B1", 200.0),    // leaves 800
                take("B2", 100.0),    // leaves 0.1: deleted
                take("B3", 100.0),    // leaves 0.11: kept
                take("B4", 0.00005)}; // negligible: untouched, no backup
    }

    std::optional<double> quantity(const QString& name) const
    {
        const std::optional<Record> r = RecordTable(*mDb, Table::Blast).find({name, {}});
        return r ? std::optional(r->number("Quantity")) : std::nullopt;
    }
};

TEST_F(SourceUpdateTest, StoresTheBlendAndSubtractsWithBackups)
{
    EXPECT_EQ(
        SourceUpdate::store(*mDb, blend(), takes(), true).describe(),
        "Stored \"Pile 7\" (300.00 t) in the Stockpile table. Subtracted 400.00 t from 3 source record(s), "
        "1 of them deleted. Backup rows made: 3 in backup-Blast, 3 in backup-stdBlast.");

    const Record pile = *RecordTable(*mDb, Table::Stockpile).find({"Pile 7", " "});
    EXPECT_EQ(pile.number("Quantity"), 300.0);
    EXPECT_EQ(pile.number("Titration"), 1.0);
    EXPECT_EQ(pile.number("Cl"), static_cast<double>(static_cast<float>(1.0 + 21.0 / 10)));

    EXPECT_EQ(quantity("B1"), 800.0);
    EXPECT_EQ(quantity("B2"), std::nullopt);
    EXPECT_NEAR(*quantity("B3"), 0.11, 1e-9);
    EXPECT_EQ(quantity("B4"), 50.0);
    EXPECT_EQ(RecordTable(*mDb, Table::BackupBlast).names(), QStringList({"B1", "B2", "B3"}));
    EXPECT_EQ(RecordTable(*mDb, Table::BackupBlast).find({"B2", {}})->number("Quantity"), 100.1);
    EXPECT_EQ(RecordTable(*mDb, Table::BackupStdBlast).names(), QStringList({"B1", "B2", "B3"}));
    EXPECT_FALSE(RecordTable(*mDb, Table::StdBlast).find({"B2", {}}))
        << "the relation takes a deleted blast's deviations";
}

TEST_F(SourceUpdateTest, NoStillStoresTheBlendAndChangesNoSource)
{
    test::ScriptedPrompt ui;
    ui.textAnswers = {QString(), QString(51, 'x'), QStringLiteral("Pile 7")};
    ui.yesNoAnswers = {false};
    EXPECT_TRUE(SourceUpdate::storeAsking(*mDb, ui, message(Msg::StockpileNamePrompt), blend(), takes()));
    EXPECT_EQ(ui.questions,
              QStringList({"Enter a name for this stockpile", "Enter a name for this stockpile",
                           "Enter a name for this stockpile", message(Msg::SubtractQuantities)}));
    EXPECT_EQ(
        ui.messageTexts(),
        QStringList({"A name must have between 1 and 50 characters.",
                     "A name must have between 1 and 50 characters.",
                     "Stored \"Pile 7\" (300.00 t) in the Stockpile table. The sources were left as they "
                     "were."}));
    EXPECT_TRUE(RecordTable(*mDb, Table::Stockpile).find({"Pile 7", " "}));
    EXPECT_EQ(quantity("B1"), 1000.0);
    EXPECT_EQ(mDb->count(Table::BackupBlast), 0);
}

TEST_F(SourceUpdateTest, CancelledNameChangesNothing)
{
    test::ScriptedPrompt ui;
    ui.textAnswers = {std::nullopt};
    EXPECT_FALSE(SourceUpdate::storeAsking(*mDb, ui, "Enter a name for this stockpile", blend(), takes()));
    EXPECT_EQ(mDb->count(Table::Stockpile), 4);
    EXPECT_EQ(quantity("B1"), 1000.0);
}

TEST_F(SourceUpdateTest, AFailureHalfWayLeavesEveryTableAsBefore)
{
    ASSERT_EQ(rawExec("CREATE TRIGGER refuse BEFORE UPDATE ON [Blast] WHEN NEW.[Name] = 'B3' "
                      "BEGIN SELECT RAISE(ABORT, 'disk I/O error'); END"),
              "");
    test::ScriptedPrompt ui;
    ui.textAnswers = {QStringLiteral("Pile 7")};
    ui.yesNoAnswers = {true};
    EXPECT_FALSE(SourceUpdate::storeAsking(*mDb, ui, "Enter a name for this stockpile", blend(), takes()));
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(ui.messages[0].text, "The database operation failed; nothing was changed.");
    EXPECT_TRUE(ui.messages[0].details.contains("disk I/O error"));

    EXPECT_EQ(mDb->count(Table::Stockpile), 4);
    EXPECT_EQ(quantity("B1"), 1000.0);
    EXPECT_EQ(quantity("B2"), 100.1);
    EXPECT_TRUE(RecordTable(*mDb, Table::StdBlast).find({"B2", {}}));
    EXPECT_EQ(mDb->count(Table::BackupBlast), 0);
    EXPECT_EQ(mDb->count(Table::BackupStdBlast), 0);
}

TEST_F(SourceUpdateTest, AVanishedDatabaseFileIsReportedAndNothingIsWritten)
{
    SourceUpdate::store(*mDb, blend(), {take("B1", 200.0)}, true);
    const std::vector<SourceUpdate::Take> later = takes();
    ASSERT_TRUE(QFile::remove(mDb->path()));
    const QString gone = message(Msg::DatabaseFileGone, {QDir::toNativeSeparators(mDb->path())});

    test::ScriptedPrompt ui;
    ui.textAnswers = {QStringLiteral("Pile 8")};
    ui.yesNoAnswers = {true};
    EXPECT_FALSE(SourceUpdate::storeAsking(*mDb, ui, "Enter a name for this stockpile", blend(), later));
    EXPECT_EQ(ui.messageTexts(), QStringList{gone});

    auto refuses = [&gone](const std::function<void()>& write) {
        try {
            write();
            ADD_FAILURE() << "wrote into a deleted file";
        } catch (const DatabaseError& e) {
            EXPECT_EQ(e.message(), gone);
        }
    };
    BackupRestore restore(*mDb, BackupRestore::Kind::Blasts);
    refuses([&] { restore.restore(restore.rows()); });
    refuses([&] { restore.deleteBackups(); });
    refuses([&] { SourceUpdate::store(*mDb, blend(), later, true); });
    // What the connection still sees is as it was.
    EXPECT_EQ(mDb->count(Table::Stockpile), 5);
    EXPECT_EQ(quantity("B1"), 800.0);
    EXPECT_EQ(mDb->count(Table::BackupBlast), 1);
}

TEST_F(SourceUpdateTest, RestoreChoosesTheBackupByQuantityAndRecreatesDeletedBlasts)
{
    // Two takes from B1 leave backups at 1000 and 800; B2 is deleted after its backup.
    SourceUpdate::store(*mDb, blend(), {take("B1", 200.0), take("B2", 100.0)}, true);
    SourceUpdate::store(*mDb, blend(), {take("B1", 300.0)}, true,
                        DuplicateNamePolicy::Choice::KeepBoth);
    ASSERT_EQ(quantity("B1"), 500.0);

    // Meanwhile B1 was renamed in another case and re-analysed: the restore puts every column back.
    Record changed = *RecordTable(*mDb, Table::Blast).find({"B1", {}});
    changed.setValue("Name", "b1");
    changed.setValue("SiO2", 30.0);
    RecordTable(*mDb, Table::Blast).update(changed);

    BackupRestore restore(*mDb, BackupRestore::Kind::Blasts);
    const std::vector<Record> rows = restore.rows();
    ASSERT_EQ(rows.size(), 3u); // B1 at 1000, B2 at 100.1, B1 at 800
    const std::vector<Record> restored = restore.restore({rows[2], rows[1]});
    EXPECT_EQ(restored.size(), 2u);

    EXPECT_EQ(quantity("B1"), 800.0) << "the row showing 800 restores that state";
    const Record b1 = *RecordTable(*mDb, Table::Blast).find({"B1", {}});
    EXPECT_EQ(b1.name(), "B1");
    EXPECT_EQ(b1.number("SiO2"), 12.5);
    ASSERT_EQ(restore.rows().size(), 1u);
    EXPECT_EQ(restore.rows()[0].number("Quantity"), 1000.0);
    EXPECT_EQ(quantity("B2"), 100.1);
    const std::optional<Record> deviations = RecordTable(*mDb, Table::StdBlast).find({"B2", {}});
    ASSERT_TRUE(deviations) << "a re-created blast gets its deviations back";
    EXPECT_EQ(deviations->number("SiO2"), 0.75);

    restore.deleteBackups();
    EXPECT_EQ(mDb->count(Table::BackupBlast), 0);
    EXPECT_EQ(mDb->count(Table::BackupStdBlast), 1) << "deleting blast backups keeps their deviations";
}

TEST_F(SourceUpdateTest, RestoreOfABackupThatIsNoLongerAsListedRestoresNothing)
{
    SourceUpdate::store(*mDb, blend(), {take("B1", 200.0), take("B2", 100.0)}, true);
    SourceUpdate::store(*mDb, blend(), {take("B1", 300.0)}, true,
                        DuplicateNamePolicy::Choice::KeepBoth);
    BackupRestore restore(*mDb, BackupRestore::Kind::Blasts);
    const std::vector<Record> listed = restore.rows();
    ASSERT_EQ(listed.size(), 3u);
    Record otherQuantity = listed[0];
    otherQuantity.setValue("Quantity", 900.0);

    // Another window restored B2 meanwhile; a list row shows a quantity no backup has.
    BackupRestore(*mDb, BackupRestore::Kind::Blasts).restore({listed[1]});
    const QString stale = message(Msg::BackupChanged, {"blast \"B2\""});
    struct Case {
        const char* what;
        std::vector<Record> rows;
        QString message;
    };
    const Case cases[] = {
        {"restored meanwhile, listed last", {listed[2], listed[1]}, stale},
        {"a quantity no backup has", {otherQuantity}, message(Msg::BackupChanged, {"blast \"B1\""})},
    };
    for (const Case& c : cases) {
        try {
            restore.restore(c.rows);
            ADD_FAILURE() << c.what << ": restored";
        } catch (const DatabaseError& e) {
            EXPECT_EQ(e.message(), c.message) << c.what;
        }
        EXPECT_EQ(quantity("B1"), 500.0) << c.what << ": nothing is restored, not even the rows still there";
        EXPECT_EQ(restore.rows().size(), 2u) << c.what;
    }
}

TEST_F(SourceUpdateTest, AStoreOnSourcesChangedSinceTheOptimisationReadThemWritesNothing)
{
    struct Case {
        const char* what;
        std::function<void()> change;
        QString message;
    };
    const Case cases[] = {
        {"another store took tonnes from B1",
         [this] {
             SourceUpdate::store(*mDb, {Table::Stockpile, "Other", 10.0, {}}, {take("B1", 10.0)}, true);
         },
         message(Msg::SourceChanged, {"blast \"B1\""})},
        {"B3 was analysed again",
         [this] {
             Record b = *RecordTable(*mDb, Table::Blast).find({"B3", {}});
             b.setValue("SiO2", 12.75);
             RecordTable(*mDb, Table::Blast).update(b);
         },
         message(Msg::SourceChanged, {"blast \"B3\""})},
        {"B4, of which the blend takes nothing, was deleted",
         [this] {
             RecordTable(*mDb, Table::Blast).remove({"B4", {}});
         },
         message(Msg::SourceGone, {"blast \"B4\""})},
    };
    for (const Case& c : cases) {
        const std::vector<SourceUpdate::Take> read = takes();
        c.change();
        const long stockpiles = mDb->count(Table::Stockpile);
        const long backups = mDb->count(Table::BackupBlast);
        const std::vector<Record> blasts = RecordTable(*mDb, Table::Blast).all();
        try {
            SourceUpdate::store(*mDb, blend(), read, true);
            ADD_FAILURE() << c.what << ": stored";
        } catch (const DatabaseError& e) {
            EXPECT_EQ(e.message(), c.message) << c.what;
        }
        EXPECT_EQ(mDb->count(Table::Stockpile), stockpiles) << c.what;
        EXPECT_EQ(mDb->count(Table::BackupBlast), backups) << c.what;
        EXPECT_EQ(RecordTable(*mDb, Table::Blast).all(), blasts) << c.what;
        // Run again on what is there now, the store goes through.
        EXPECT_NO_THROW(
            SourceUpdate::store(*mDb, {Table::Stockpile, c.what, 1.0, {}}, {take("B1", 1.0)}, true))
            << c.what;
    }
}

TEST_F(SourceUpdateTest, StockpileBackupsRestoreByNameAndSource)
{
    Record s(Table::Stockpile);
    s.setValue("Name", "North");
    s.setValue("Source", "Quarry");
    s.setValue("Quantity", 500.0);
    RecordTable(*mDb, Table::Stockpile).add(s);
    SourceUpdate::store(*mDb, {Table::Crude, "Meal 1", 400, {}},
                        {takeAsRead(Table::Stockpile, {"North", "Quarry"}, 499.95)}, true);
    EXPECT_FALSE(RecordTable(*mDb, Table::Stockpile).find({"North", "Quarry"}));

    BackupRestore restore(*mDb, BackupRestore::Kind::Stockpiles);
    ASSERT_EQ(restore.restore(restore.rows()).size(), 1u);
    EXPECT_EQ(RecordTable(*mDb, Table::Stockpile).find({"North", "Quarry"})->number("Quantity"), 500.0);
    EXPECT_EQ(mDb->count(Table::BackupStockpile), 0);
}

} // namespace
} // namespace kilnova

namespace kilnova {
namespace {

TEST_F(SourceUpdateTest, OfTwoProgramsThatOptimisedOnTheSameBlastsOnlyTheFirstStores)
{
    // A window and a nightly command line on one project, each with its own connection.
    std::unique_ptr<ProjectDatabase> other = ProjectDatabase::open(mDb->path());
    const std::vector<SourceUpdate::Take> readHere = takes();
    std::vector<SourceUpdate::Take> readThere = readHere;
    for (SourceUpdate::Take& t : readThere)
        t.available = RecordTable(*other, Table::Blast).find(t.key)->number("Quantity");

    SourceUpdate::store(*other, {Table::Stockpile, "Night", 400.0, {}}, readThere, true);
    try {
        SourceUpdate::store(*mDb, blend(), readHere, true);
        ADD_FAILURE() << "the tonnes were taken twice";
    } catch (const DatabaseError& e) {
        EXPECT_EQ(e.message(), message(Msg::SourceChanged, {"blast \"B1\""}));
    }
    EXPECT_EQ(quantity("B1"), 800.0);
    EXPECT_FALSE(RecordTable(*mDb, Table::Stockpile).find({"Pile 7", " "}));
    EXPECT_EQ(mDb->count(Table::BackupBlast), 3);
}

} // namespace
} // namespace kilnova
