#include "project/BackupCommands.h"
#include "common/MessageTable.h"
#include "database/RecordTable.h"
#include "optimise/SourceUpdate.h"
#include "support/ScriptedPrompt.h"
#include "support/TempProject.h"

#include <gtest/gtest.h>

namespace kilnova {
namespace {

using Kind = BackupRestore::Kind;

/// Blasts B1 and B2, stockpile North from the Quarry; one store took tonnes from all three and backed
/// them up, a second one took from B1 again.
class BackupCommandsTest : public test::TempProject {
protected:
    void SetUp() override
    {
        TempProject::SetUp();
        for (const char* name : {"B1", "B2"}) {
            Record b(Table::Blast);
            b.setValue("Name", name);
            b.setValue("Quantity", 1000.0);
            RecordTable(*mDb, Table::Blast).add(b);
            Record d(Table::StdBlast);
            d.setValue("Name", name);
            RecordTable(*mDb, Table::StdBlast).add(d);
        }
        Record s(Table::Stockpile);
        s.setValue("Name", "North");
        s.setValue("Source", "Quarry");
        s.setValue("Quantity", 500.0);
        RecordTable(*mDb, Table::Stockpile).add(s);
    }

    void takeSome()
    {
        SourceUpdate::store(*mDb, {Table::Crude, "Meal", 100, {}},
                            {takeAsRead(Table::Blast, {"B1", {}}, 100.0),
                             takeAsRead(Table::Blast, {"B2", {}}, 999.95),
                             takeAsRead(Table::Stockpile, {"North", "Quarry"}, 50.0)},
                            true);
        SourceUpdate::store(*mDb, {Table::Crude, "Meal 2", 100, {}}, {takeAsRead(Table::Blast, {"B1", {}}, 100.0)},
                            true);
    }

    double quantity(const char* name)
    {
        const std::optional<Record> r = RecordTable(*mDb, Table::Blast).find({name, {}});
        return r ? r->number("Quantity") : -1;
    }

    test::ScriptedPrompt mUi;
};

TEST_F(BackupCommandsTest, DeletingABackupTableSaysHowManyRowsWent)
{
    struct Case {
        Kind kind;
        Table table;
        long rows;
        QString told;
    };
    const Case cases[] = {
        {Kind::Blasts, Table::BackupBlast, 3, "3 row(s) were deleted from the backup-Blast table."},
        {Kind::Stockpiles, Table::BackupStockpile, 1, "1 row(s) were deleted from the backup-Stockpile table."},
    };
    for (const Case& c : cases) {
        // An empty table: nothing asked, nothing said.
        mUi = {};
        EXPECT_EQ(BackupCommands::deleteBackups(*mDb, c.kind, mUi), 0);
        EXPECT_TRUE(mUi.questions.isEmpty());
        EXPECT_TRUE(mUi.messages.empty());
    }
    takeSome();
    for (const Case& c : cases) {
        mUi = {};
        EXPECT_EQ(mDb->count(c.table), c.rows);
        EXPECT_EQ(BackupCommands::deleteBackups(*mDb, c.kind, mUi), c.rows);
        EXPECT_TRUE(mUi.questions.isEmpty());
        EXPECT_EQ(mUi.messageTexts(), QStringList{c.told});
        EXPECT_EQ(mDb->count(c.table), 0);
    }
    EXPECT_EQ(mDb->count(Table::BackupStdBlast), 3) << "the blasts' deviations stay";
}

TEST_F(BackupCommandsTest, RestoreAsksFirstAndSaysWhatCameBack)
{
    takeSome();
    BackupRestore backups(*mDb, Kind::Blasts);
    std::vector<Record> rows = backups.rows(); // B1 at 1000, B2 at 1000, B1 at 900
    ASSERT_EQ(rows.size(), 3u);
    const QString question =
        "Restore the 2 selected row(s) of the backup-Blast table? Each one overwrites the "
        "Blast record of the same name, or brings it back if it was deleted.";

    mUi.yesNoAnswers = {false};
    EXPECT_TRUE(BackupCommands::restore(*mDb, Kind::Blasts, {rows[1], rows[2]}, mUi).empty());
    EXPECT_EQ(mUi.questions, QStringList{question});
    EXPECT_EQ(quantity("B2"), -1) << "No restores nothing";
    EXPECT_EQ(mDb->count(Table::BackupBlast), 3);

    // A list older than the table (the second B1 row shows a quantity no backup has now) restores
    // nothing at all and says why.
    Record stale = rows[2];
    stale.setValue("Quantity", 750.0);
    mUi = {};
    mUi.yesNoAnswers = {true};
    EXPECT_TRUE(BackupCommands::restore(*mDb, Kind::Blasts, {rows[1], stale}, mUi).empty());
    ASSERT_EQ(mUi.messages.size(), 1u);
    EXPECT_EQ(mUi.messages[0].text, "The database operation failed; nothing was changed.");
    EXPECT_EQ(mUi.messages[0].details,
              "The backup of blast \"B1\" has changed since the list was shown (restored or deleted "
              "meanwhile), so nothing was restored. Open the list again.");
    EXPECT_EQ(quantity("B2"), -1);
    EXPECT_EQ(mDb->count(Table::BackupBlast), 3);

    mUi = {};
    mUi.yesNoAnswers = {true};
    EXPECT_EQ(BackupCommands::restore(*mDb, Kind::Blasts, {rows[1], rows[2]}, mUi).size(), 2u);
    EXPECT_EQ(mUi.messageTexts(), QStringList{"2 of the 2 selected row(s) were restored into the Blast table."});
    EXPECT_EQ(quantity("B2"), 1000.0);
    EXPECT_EQ(quantity("B1"), 900.0);

    mUi = {};
    mUi.yesNoAnswers = {true};
    const std::vector<Record> piles = BackupRestore(*mDb, Kind::Stockpiles).rows();
    EXPECT_EQ(BackupCommands::restore(*mDb, Kind::Stockpiles, piles, mUi).size(), 1u);
    EXPECT_EQ(mUi.messageTexts(),
              QStringList{"1 of the 1 selected row(s) were restored into the Stockpile table."});
    EXPECT_EQ(RecordTable(*mDb, Table::Stockpile).find({"North", "Quarry"})->number("Quantity"), 500.0);
}

} // namespace
} // namespace kilnova
