#include "optimise/DuplicateNamePolicy.h"
#include "common/MessageTable.h"
#include "database/RecordTable.h"
#include "optimise/SourceUpdate.h"
#include "optimise/StoreRefused.h"
#include "support/ScriptedPrompt.h"
#include "support/TempProject.h"

namespace kilnova {
namespace {

using Choice = DuplicateNamePolicy::Choice;

/// A stockpile "Pile 7" from the quarry and a blast B1 to take tonnes from.
class DuplicateNamePolicyTest : public test::TempProject {
protected:
    void SetUp() override
    {
        TempProject::SetUp();
        Record pile(Table::Stockpile);
        pile.setValue("Name", "Pile 7");
        pile.setValue("Source", "Quarry");
        pile.setValue("Quantity", 120.0);
        RecordTable(*mDb, Table::Stockpile).add(pile);
        Record b(Table::Blast);
        b.setValue("Name", "B1");
        b.setValue("Quantity", 1000.0);
        RecordTable(*mDb, Table::Blast).add(b);
        Record d(Table::StdBlast);
        d.setValue("Name", "B1");
        RecordTable(*mDb, Table::StdBlast).add(d);
    }

    static SourceUpdate::Blend blend() { return {Table::Stockpile, {}, 300.0, {}}; }
    std::vector<SourceUpdate::Take> takes() const { return {takeAsRead(Table::Blast, {"B1", {}}, 300.0)}; }

    /// (Source, Quantity) of every stockpile named like "pile 7", in table order.
    std::vector<std::pair<QString, double>> piles7() const
    {
        std::vector<std::pair<QString, double>> found;
        for (const Record& r : RecordTable(*mDb, Table::Stockpile).findNamed("pile 7"))
            found.emplace_back(r.text("Source"), r.number("Quantity"));
        return found;
    }
    double b1() const { return RecordTable(*mDb, Table::Blast).find({"B1", {}})->number("Quantity"); }

    static QString question(const QString& name)
    {
        return "The Stockpile table already holds a record named \"" + name +
               "\". Replace, keep both, or choose another name?";
    }
};

TEST_F(DuplicateNamePolicyTest, ANameThatIsTakenAsksAndEachAnswerDoesWhatItSays)
{
    const QString prompt = message(Msg::StockpileNamePrompt);
    struct Case {
        const char* what;
        std::deque<std::optional<QString>> names;
        std::deque<int> choices;
        std::vector<std::pair<QString, double>> piles7;
        long backupStockpiles;
        QString told;
    };
    const Case cases[] = {
        {"replace: the quarry's Pile 7 is backed up and gives way",
         {"pile 7"},
         {0},
         {{" ", 300.0}},
         1,
         "Stored \"pile 7\" (300.00 t) in the Stockpile table in place of the 1 record(s) of that name. "
         "Subtracted 300.00 t from 1 source record(s), 0 of them deleted. Backup rows made: 1 in "
         "backup-Blast, "
         "1 in backup-Stockpile, 1 in backup-stdBlast."},
        {"keep both",
         {"pile 7"},
         {1},
         {{"Quarry", 120.0}, {" ", 300.0}},
         0,
         "Stored \"pile 7\" (300.00 t) in the Stockpile table. Subtracted 300.00 t from 1 source record(s), "
         "0 of "
         "them deleted. Backup rows made: 1 in backup-Blast, 1 in backup-stdBlast."},
        {"choose another name: the prompt comes back with the name typed",
         {"pile 7", "Pile 8"},
         {2},
         {{"Quarry", 120.0}},
         0,
         "Stored \"Pile 8\" (300.00 t) in the Stockpile table. Subtracted 300.00 t from 1 source record(s), "
         "0 of "
         "them deleted. Backup rows made: 1 in backup-Blast, 1 in backup-stdBlast."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        mDb.reset();
        SetUp();
        test::ScriptedPrompt ui;
        ui.textAnswers = c.names;
        ui.choiceAnswers = c.choices;
        ui.yesNoAnswers = {true};
        EXPECT_TRUE(SourceUpdate::storeAsking(*mDb, ui, prompt, blend(), takes()));
        QStringList asked{prompt, question("pile 7")};
        if (c.names.size() > 1)
            asked << prompt;
        asked << message(Msg::SubtractQuantities);
        EXPECT_EQ(ui.questions, asked);
        ASSERT_EQ(ui.choices.size(), 1u);
        EXPECT_EQ(ui.choices[0], QStringList({"Replace", "Keep both", "Choose another name"}));
        EXPECT_EQ(piles7(), c.piles7);
        EXPECT_EQ(mDb->count(Table::BackupStockpile), c.backupStockpiles);
        EXPECT_EQ(ui.messageTexts(), QStringList{c.told});
        EXPECT_EQ(b1(), 700.0);
    }
}

TEST_F(DuplicateNamePolicyTest, AnActualStockpileIsNeverReplaced)
{
    test::ScriptedPrompt ui;
    ui.textAnswers = {QStringLiteral("ACTUAL 1"), QStringLiteral("ACTUAL 1")};
    ui.choiceAnswers = {0, 1};
    ui.yesNoAnswers = {false};
    EXPECT_TRUE(SourceUpdate::storeAsking(*mDb, ui, "Name?", blend(), takes()));
    EXPECT_EQ(ui.messageTexts().first(), message(Msg::ActualNotReplaced));
    const std::vector<Record> actual = RecordTable(*mDb, Table::Stockpile).findNamed("Actual 1");
    ASSERT_EQ(actual.size(), 2u) << "kept both at the second asking";
    EXPECT_EQ(actual[0].text("Source"), "Actual");
    EXPECT_EQ(actual[1].text("Source"), " ");
    EXPECT_EQ(b1(), 1000.0);

    // Asked to replace all the same, the store itself refuses and writes nothing.
    SourceUpdate::Blend named = blend();
    named.name = "Actual 2";
    EXPECT_THROW(SourceUpdate::store(*mDb, named, takes(), true, Choice::Replace), StoreRefused);
    EXPECT_EQ(RecordTable(*mDb, Table::Stockpile).findNamed("Actual 2").size(), 1u);
    EXPECT_EQ(b1(), 1000.0);
}

TEST_F(DuplicateNamePolicyTest, RefuseWritesNothingAndSaysWhy)
{
    SourceUpdate::Blend named = blend();
    named.name = "PILE 7";
    try {
        SourceUpdate::store(*mDb, named, takes(), true);
        ADD_FAILURE() << "stored under a name that is taken";
    } catch (const StoreRefused& e) {
        EXPECT_EQ(e.message(),
                  "The Stockpile table already holds a record named \"PILE 7\"; nothing was stored.");
    }
    EXPECT_EQ(piles7().size(), 1u);
    EXPECT_EQ(b1(), 1000.0);
    EXPECT_EQ(mDb->count(Table::BackupBlast), 0);

    // Another name in another table is no clash; the same name twice more counts them.
    named.table = Table::Crude;
    EXPECT_EQ(SourceUpdate::store(*mDb, named, {}, false).records.at(0).replaced, 0);
    named.table = Table::Stockpile;
    SourceUpdate::store(*mDb, named, {}, false, Choice::KeepBoth);
    EXPECT_EQ(DuplicateNamePolicy::refusal(Table::Stockpile, "Pile 7", 2),
              "The Stockpile table already holds 2 records named \"Pile 7\"; nothing was stored.");
    EXPECT_EQ(DuplicateNamePolicy::holders(*mDb, Table::Stockpile, "pile 7").size(), 2u);
}

} // namespace
} // namespace kilnova
