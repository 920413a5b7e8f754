#include "common/MessageTable.h"
#include "database/RecordTable.h"
#include "optimise/SourceUpdate.h"
#include "support/ScriptedPrompt.h"
#include "support/TempProject.h"

namespace kilnova {
namespace {

/// Storing several new records at once (a clinker and its crude) with one subtraction.
class SourceUpdateRecordsTest : public test::TempProject {
protected:
    void SetUp() override
    {
        TempProject::SetUp();
        Record crude(Table::Crude);
        crude.setValue("Name", "Meal");
        crude.setValue("Source", "Mill 1");
        crude.setValue("Quantity", 1000.0);
        RecordTable(*mDb, Table::Crude).add(crude);
        Record clinker(Table::Clinker);
        clinker.setValue("Name", "K1");
        clinker.setValue("Source", "Kiln");
        RecordTable(*mDb, Table::Clinker).add(clinker);
    }

    std::vector<SourceUpdate::Named> records() const
    {
        return {{message(Msg::ClinkerNamePrompt), {Table::Clinker, {}, 650.0, {}}},
                {message(Msg::CrudeNamePrompt), {Table::Crude, {}, 1000.0, {}}}};
    }

    SourceUpdate::Take take() const { return takeAsRead(Table::Crude, {"Meal", "Mill 1"}, 400.0); }

    double crudeLeft() const
    {
        return RecordTable(*mDb, Table::Crude).find({"Meal", "Mill 1"})->number("Quantity");
    }
};

TEST_F(SourceUpdateRecordsTest, AsksEachNameInTurnAndWhatToDoWithOneTheTableHolds)
{
    // The clinker's name is taken (without regard to case): another is chosen.
    test::ScriptedPrompt ui;
    ui.textAnswers = {QStringLiteral("k1"), QStringLiteral("K2"), QStringLiteral("Meal 2")};
    ui.choiceAnswers = {2};
    ui.yesNoAnswers = {true};
    ASSERT_TRUE(SourceUpdate::storeAsking(*mDb, ui, records(), {take()}));
    EXPECT_EQ(ui.questions,
              QStringList({"Enter a name for this clinker",
                           message(Msg::NameTakenQuestion, {"Clinker", message(Msg::OneRecord), "k1"}),
                           "Enter a name for this clinker", "Enter a name for this Crude",
                           message(Msg::SubtractQuantities)}));
    EXPECT_EQ(
        ui.messageTexts(),
        QStringList({"Stored \"K2\" (650.00 t) in the Clinker table. Stored \"Meal 2\" (1000.00 t) in the "
                     "Crude table. Subtracted 400.00 t from 1 source record(s), 0 of them deleted. No "
                     "backup rows were made."}));
    EXPECT_EQ(RecordTable(*mDb, Table::Clinker).find({"K2", " "})->number("Quantity"), 650.0);
    EXPECT_EQ(RecordTable(*mDb, Table::Crude).find({"Meal 2", " "})->number("Quantity"), 1000.0);
    EXPECT_EQ(crudeLeft(), 600.0);
    EXPECT_EQ(mDb->count(Table::BackupStockpile), 0) << "crudes have no backup table";
}

TEST_F(SourceUpdateRecordsTest, ASecondStoreOnTheSameReadingStoresNothing)
{
    test::ScriptedPrompt ui;
    ui.textAnswers = {QStringLiteral("K2"), QStringLiteral("Meal 2"), QStringLiteral("K3"),
                      QStringLiteral("Meal 3")};
    ui.yesNoAnswers = {true, true};
    const std::vector<SourceUpdate::Take> read = {take()};
    ASSERT_TRUE(SourceUpdate::storeAsking(*mDb, ui, records(), read));
    EXPECT_FALSE(SourceUpdate::storeAsking(*mDb, ui, records(), read));
    EXPECT_EQ(ui.messageTexts().last(), message(Msg::DatabaseOperationFailed));
    EXPECT_FALSE(RecordTable(*mDb, Table::Clinker).find({"K3", " "}));
    EXPECT_EQ(crudeLeft(), 600.0) << "taken once";
}

TEST_F(SourceUpdateRecordsTest, CancellingTheSecondNameStoresNeither)
{
    test::ScriptedPrompt ui;
    ui.textAnswers = {QStringLiteral("K2"), std::nullopt};
    EXPECT_FALSE(SourceUpdate::storeAsking(*mDb, ui, records(), {take()}));
    EXPECT_EQ(mDb->count(Table::Clinker), 1);
    EXPECT_EQ(mDb->count(Table::Crude), 1);
    EXPECT_EQ(crudeLeft(), 1000.0);
}

TEST_F(SourceUpdateRecordsTest, AFailureOnTheLastWriteUndoesTheRecordsBeforeIt)
{
    ASSERT_EQ(
        rawExec("CREATE TRIGGER refuse BEFORE UPDATE ON [Crude] BEGIN SELECT RAISE(ABORT, 'disk full'); END"),
        "");
    test::ScriptedPrompt ui;
    ui.textAnswers = {QStringLiteral("K2"), QStringLiteral("Meal 2")};
    ui.yesNoAnswers = {true};
    EXPECT_FALSE(SourceUpdate::storeAsking(*mDb, ui, records(), {take()}));
    EXPECT_EQ(ui.messageTexts(), QStringList{message(Msg::DatabaseOperationFailed)});
    EXPECT_EQ(mDb->count(Table::Clinker), 1);
    EXPECT_EQ(mDb->count(Table::Crude), 1);
    EXPECT_EQ(crudeLeft(), 1000.0);
}

} // namespace
} // namespace kilnova
