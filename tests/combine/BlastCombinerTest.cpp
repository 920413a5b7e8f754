#include "BlastRows.h"

#include "combine/BlastCombiner.h"

#include "CombinationRun.h"
#include "common/MessageTable.h"
#include "support/ScriptedPrompt.h"
#include "support/TempProject.h"

#include <QDir>
#include <QFile>

namespace kilnova {
namespace {

/// Combine, the report collected.
std::optional<test::CombinationRun> combined(BlastCombiner& combiner,
                                             const CombinationProgress& progress = {})
{
    return test::collect([&](ReportSink& sink) { return combiner.combine(sink, progress); });
}

using test::addBlasts;
using Source = WorkingBlastTables::Source;

class BlastCombinerTest : public test::TempProject {
protected:
    QStringList names(Table table) { return RecordTable(*mDb, table).names(); }
    double quantity(Table table, const QString& name)
    {
        return RecordTable(*mDb, table).find({name, {}})->number("Quantity");
    }

    /// Four blasts; at SiO2 14 from 600 t the possible pairs are (B1, B2) 360/240, (B1, B3) 200/400
    /// and (B3, O'Neill) 300/300, which empties O'Neill.
    void addSeries()
    {
        addBlasts(*mDb, {{"B1", 1000, {{"SiO2", 10}, {"CaO", 50}}},
                         {"B2", 800, {{"SiO2", 20}, {"CaO", 40}}},
                         {"B3", 500, {{"SiO2", 16}, {"CaO", 45}}},
                         {"O'Neill", 300, {{"SiO2", 12}, {"CaO", 48}}}});
    }

    static CCombinationParameters sio2Target()
    {
        CCombinationParameters p;
        p.targetTonnage = 600;
        p.targets[static_cast<std::size_t>(elementIndex(Element::SiO2))] = {14, "SiO2", 1};
        p.combinedGradeProperty = "CaO";
        p.combinedGradeTarget = 46.5f;
        return p;
    }

    test::ScriptedPrompt mUi;
};

TEST_F(BlastCombinerTest, OpeningRefreshesBothWorkingCopiesAndListsOnlyBlastsWithTonnes)
{
    addBlasts(*mDb, {{"Stale", 10}}, Table::TempBlast, Table::TempStdBlast);
    addBlasts(*mDb, {{"B1", 100}, {"Empty", 0}, {"B3", 50.5}});
    BlastCombiner combiner(*mDb, CCombinationParameters{}, mUi);
    ASSERT_TRUE(combiner.open());
    EXPECT_EQ(names(Table::TempBlast), QStringList({"B1", "Empty", "B3"}));
    EXPECT_EQ(names(Table::TempStdBlast), QStringList({"B1", "Empty", "B3"}));
    EXPECT_EQ(combiner.sources(), (std::vector<Source>{{"B1", 100}, {"B3", 50.5}}));
    EXPECT_EQ(BlastCombiner::sourceText(combiner.sources()[1]), "B3   (50.50 t)");
    EXPECT_EQ(combiner.period(), 1);

    ASSERT_TRUE(combiner.close());
    EXPECT_EQ(names(Table::TempBlast), QStringList());
    EXPECT_EQ(names(Table::TempStdBlast), QStringList({"B1", "Empty", "B3"})) << "the deviations stay";
    EXPECT_EQ(names(Table::Blast), QStringList({"B1", "Empty", "B3"}));
    RecordTable(*mDb, Table::Blast).remove({"Empty", {}});
    EXPECT_EQ(names(Table::StdBlast), QStringList({"B1", "B3"})) << "the cascade is on again";

    ASSERT_TRUE(combiner.open());
    EXPECT_EQ(names(Table::TempStdBlast), QStringList({"B1", "B3"}));
    EXPECT_TRUE(mUi.messages.empty());
}

TEST_F(BlastCombinerTest, CoordinateFilterBoundsAreInclusiveAsPrintedWithSixDecimals)
{
    addBlasts(*mDb, {{"Origin", 1, {}, 0, 0, 0},
                     {"Corner", 1, {}, 10, 20, 30},
                     {"Inside", 1, {}, 5, 5, 5},
                     {"EastOf", 1, {}, 10.5, 5, 5},
                     {"Hair", 1, {}, 10.0000003, 5, 5}});
    struct Case {
        const char* what;
        bool on;
        double eastMaximum;
        double northMaximum;
        double elevationMaximum;
        QStringList listed;
    };
    const Case cases[] = {
        {"filter off", false, 0, 0, 0, {"Origin", "Corner", "Inside", "EastOf", "Hair"}},
        {"all bounds 0", true, 0, 0, 0, {"Origin"}},
        {"bounds on the corner", true, 10, 20, 30, {"Origin", "Corner", "Inside"}},
        // 10.0000004 is printed as 10.000000 and so still leaves out 10.0000003.
        {"bound rounded to six decimals", true, 10.0000004, 20, 30, {"Origin", "Corner", "Inside"}},
        {"bound at the sixth decimal", true, 10.000001, 20, 30, {"Origin", "Corner", "Inside", "Hair"}},
        {"north bound one short", true, 10, 19.99, 30, {"Origin", "Inside"}},
    };
    BlastCombiner combiner(*mDb, CCombinationParameters{}, mUi);
    ASSERT_TRUE(combiner.open());
    for (const Case& c : cases) {
        CCombinationParameters& p = combiner.parameters();
        p.coordinateFilter = c.on;
        p.eastMaximum = c.eastMaximum;
        p.northMaximum = c.northMaximum;
        p.elevationMaximum = c.elevationMaximum;
        ASSERT_TRUE(combiner.refreshSources());
        QStringList listed;
        for (const Source& s : combiner.sources())
            listed << s.name;
        EXPECT_EQ(listed, c.listed) << c.what;
    }
}

TEST_F(BlastCombinerTest, RefreshSelectsAgainTheNamesStillListed)
{
    addBlasts(*mDb, {{"B1", 1, {}, 0, 0, 0}, {"B10", 1, {}, 0, 0, 0}, {"B3", 1, {}, 9, 0, 0}});
    BlastCombiner combiner(*mDb, CCombinationParameters{}, mUi);
    ASSERT_TRUE(combiner.open());
    combiner.setSelected("B3", true);
    combiner.setSelected("B1", true);
    combiner.setSelected("Nowhere", true);
    EXPECT_EQ(combiner.selectedNames(), QStringList({"B1", "B3"})) << "in list order";

    combiner.parameters().coordinateFilter = 1; // all bounds 0: B3 drops out
    ASSERT_TRUE(combiner.refreshSources());
    EXPECT_EQ(combiner.selectedNames(), QStringList({"B1"})) << "B10 starts with B1 but is another blast";
    combiner.parameters().coordinateFilter = 0;
    ASSERT_TRUE(combiner.refreshSources());
    EXPECT_EQ(combiner.selectedNames(), QStringList({"B1"}));
}

TEST_F(BlastCombinerTest, CombineRefusesWhatCannotRunWithItsMessage)
{
    addSeries();
    addBlasts(*mDb, {{"Twin", 100, {{"SiO2", 10}}}});
    struct Case {
        const char* what;
        QStringList selected;
        void (*change)(CCombinationParameters&);
        QString message;
    };
    const Case cases[] = {
        {"one source", {"B1"}, [](CCombinationParameters&) {}, "Please, select at least 2 sources"},
        {"no tonnage",
         {"B1", "B2"},
         [](CCombinationParameters& p) { p.targetTonnage = 0; },
         "Enter a target tonnage greater than 0, then combine again."},
        {"two targets",
         {"B1", "B2"},
         [](CCombinationParameters& p) {
             p.targets[4] = {46, "CaO", 1};
         },
         message(Msg::TooManyCombinationTargets)},
        {"ranking without a property",
         {"B1", "B2"},
         [](CCombinationParameters& p) { p.combinedGradeProperty.clear(); },
         "Choose a property for \"Combined blasts grade closest to\", then combine again."},
        {"restriction without a property",
         {"B1", "B2"},
         [](CCombinationParameters& p) { p.inventoryRestriction = 1; },
         "Choose a property for \"Inventory grade\", then combine again."},
        {"identical SiO2: no pair",
         {"B1", "Twin"},
         [](CCombinationParameters&) {},
         "0 successful combinations of 2 blasts were found"},
    };
    for (const Case& c : cases) {
        test::ScriptedPrompt ui;
        CCombinationParameters p = sio2Target();
        c.change(p);
        BlastCombiner combiner(*mDb, p, ui);
        ASSERT_TRUE(combiner.open());
        for (const QString& name : c.selected)
            combiner.setSelected(name, true);
        EXPECT_FALSE(combined(combiner)) << c.what;
        EXPECT_EQ(ui.messageTexts(), QStringList{c.message}) << c.what;
    }
}

// Every pair of a selection may succeed and is then kept: a selection whose pairs could take more
// than half of the machine's memory is refused with the largest selection that fits. Here a
// "machine" of 3000 bytes: three blasts may need 3 x 24 + 3 x 512 = 1608 bytes, over its 1500;
// two need 24 + 1024 = 1048.
TEST_F(BlastCombinerTest, SelectionsBeyondHalfTheMemoryAreRefused)
{
    addSeries();
    BlastCombiner combiner(*mDb, sio2Target(), mUi);
    ASSERT_TRUE(combiner.open());
    combiner.setMemoryGuard(MemoryGuard(3000));
    for (const char* name : {"B1", "B2", "B3"})
        combiner.setSelected(name, true);
    EXPECT_FALSE(combined(combiner));
    EXPECT_EQ(
        mUi.messageTexts(),
        QStringList{"Trying every pair of 3 blasts could take 1 MB of memory, more than half of the 1 MB of "
                    "this computer. Select at most 2 blasts, then combine again."});
    mUi.messages.clear();
    combiner.setSelected("B3", false);
    const std::optional<test::CombinationRun> two = combined(combiner);
    ASSERT_TRUE(two) << "two blasts are not refused";
    EXPECT_EQ(two->successes, (std::vector<CSuccessfulComb>{{{"B1", "B2"}, {360, 240}}}));
    EXPECT_TRUE(mUi.messages.empty());
}

TEST_F(BlastCombinerTest, CancelledRunShowsNothingAndWritesNothing)
{
    addSeries();
    BlastCombiner combiner(*mDb, sio2Target(), mUi);
    ASSERT_TRUE(combiner.open());
    combiner.selectAll();
    EXPECT_FALSE(combined(combiner, [](long long, long long) { return false; }));
    EXPECT_TRUE(mUi.messages.empty()) << "not even the count of no successful pairs";
    EXPECT_EQ(names(Table::TempBlast), QStringList({"B1", "B2", "B3", "O'Neill"}));
    EXPECT_EQ(combiner.period(), 1);
}

TEST_F(BlastCombinerTest, TooFewBlastsLoadedShowsItsTextWithThePrintfFieldUnfilled)
{
    addSeries();
    BlastCombiner combiner(*mDb, sio2Target(), mUi);
    ASSERT_TRUE(combiner.open());
    combiner.setSelected("B1", true);
    combiner.setSelected("B2", true);
    RecordTable(*mDb, Table::TempBlast).remove({"B2", {}}); // gone since the list was filled
    EXPECT_FALSE(combined(combiner));
    EXPECT_EQ(mUi.messageTexts(),
              QStringList{"The number of blasts selected is insufficient, given the number  "
                          "of constraints, at least %d blasts are needed"});
}

TEST_F(BlastCombinerTest, BlastWithoutDeviationsTakesPartInNoPair)
{
    // Without its deviations B2 is loaded with no tonnes: (B1, B2) would otherwise succeed.
    addBlasts(*mDb, {{"B1", 1000, {{"SiO2", 10}}},
                     {"B2", 1000, {{"SiO2", 20}}, 0, 0, 0, false},
                     {"B3", 1000, {{"SiO2", 16}}}});
    BlastCombiner combiner(*mDb, sio2Target(), mUi);
    ASSERT_TRUE(combiner.open());
    combiner.selectAll();
    const std::optional<test::CombinationRun> outcome = combined(combiner);
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->seriesSize, 3);
    EXPECT_TRUE(outcome->report.contains("from a series of 3 blasts\r\n"));
    EXPECT_EQ(outcome->successes, (std::vector<CSuccessfulComb>{{{"B1", "B3"}, {200, 400}}}));
}

TEST_F(BlastCombinerTest, UpdateBlastsTakesThePairOutOfTheWorkingCopyAndAdvancesThePeriod)
{
    addSeries();
    BlastCombiner combiner(*mDb, sio2Target(), mUi);
    ASSERT_TRUE(combiner.open());
    combiner.selectAll();
    const std::optional<test::CombinationRun> first = combined(combiner);
    ASSERT_TRUE(first);
    ASSERT_EQ(first->successes.size(), 3u);
    EXPECT_EQ(first->bestIndex, 2);
    const CSuccessfulComb chosen = first->successes[2];
    ASSERT_EQ(chosen, (CSuccessfulComb{{"B3", "O'Neill"}, {300, 300}}));

    EXPECT_FALSE(combiner.applyResults(chosen, 1)) << "OK: the period did not go up";
    EXPECT_EQ(quantity(Table::TempBlast, "O'Neill"), 300);

    ASSERT_TRUE(combiner.applyResults(chosen, 2));
    EXPECT_EQ(combiner.period(), 2);
    EXPECT_EQ(names(Table::TempBlast), QStringList({"B1", "B2", "B3"})) << "O'Neill had exactly 0 t left";
    EXPECT_EQ(quantity(Table::TempBlast, "B3"), 200);
    EXPECT_EQ(combiner.sources(), (std::vector<Source>{{"B1", 1000}, {"B2", 800}, {"B3", 200}}));
    EXPECT_EQ(combiner.selectedNames(), QStringList({"B1", "B2", "B3"}));
    EXPECT_EQ(names(Table::Blast), QStringList({"B1", "B2", "B3", "O'Neill"})) << "Blast is not touched";
    EXPECT_EQ(quantity(Table::Blast, "B3"), 500);

    // The next run works on what is left and says which period it is.
    const std::optional<test::CombinationRun> second = combined(combiner);
    ASSERT_TRUE(second);
    EXPECT_TRUE(second->report.contains("\r\n\r\nResults for Period #2\r\n"));
    EXPECT_EQ(second->successes, (std::vector<CSuccessfulComb>{{{"B1", "B2"}, {360, 240}}}))
        << "(B1, B3) would need 400 t of the 200 t left in B3";
    EXPECT_TRUE(mUi.messages.empty());
}

TEST_F(BlastCombinerTest, UpdateBlastTableAsksThenWritesTheWorkingCopiesBack)
{
    addSeries();
    BlastCombiner combiner(*mDb, sio2Target(), mUi);
    ASSERT_TRUE(combiner.open());
    ASSERT_TRUE(combiner.applyResults(CSuccessfulComb{{"B3", "O'Neill"}, {300, 300}}, 2));

    mUi.yesNoAnswers = {false, true};
    EXPECT_FALSE(combiner.updateBlastTable());
    EXPECT_EQ(mUi.questions,
              QStringList{"This operation will PERMANENTLY update the records of the Blast table "
                          "with the current blast data that may have been modified by previous "
                          "Combination operations.\n\n Are you sure you want to proceed ?"});
    EXPECT_EQ(names(Table::Blast), QStringList({"B1", "B2", "B3", "O'Neill"}));
    EXPECT_EQ(quantity(Table::Blast, "B3"), 500);

    EXPECT_TRUE(combiner.updateBlastTable());
    EXPECT_EQ(names(Table::Blast), QStringList({"B1", "B2", "B3"}));
    EXPECT_EQ(quantity(Table::Blast, "B3"), 200);
    EXPECT_EQ(names(Table::StdBlast), QStringList({"B1", "B2", "B3"}));
    const Record b1 = *RecordTable(*mDb, Table::Blast).find({"B1", {}});
    EXPECT_EQ(b1.number("SiO2"), 10);
    EXPECT_EQ(b1.number("CaO"), 50);
    // B3 lost 300 t, O'Neill all of it.
    EXPECT_EQ(mUi.messageTexts(),
              QStringList{"The Blast table now holds the working copies: 1 blast(s) changed, "
                          "1 deleted, 0 added. The records they replaced were not backed up."});
}

TEST_F(BlastCombinerTest, UpdateBlastTableThatFailsLeavesBlastAsItWas)
{
    addSeries();
    BlastCombiner combiner(*mDb, sio2Target(), mUi);
    ASSERT_TRUE(combiner.open());
    ASSERT_TRUE(combiner.applyResults(CSuccessfulComb{{"B3", "O'Neill"}, {300, 300}}, 2));
    // The engine refuses the third row copied back, after Blast has been emptied.
    ASSERT_EQ(rawExec("CREATE TRIGGER refuse AFTER INSERT ON [Blast] WHEN NEW.[Name] = 'B3' "
                      "BEGIN SELECT RAISE(ABORT, 'disk full'); END"),
              QString());
    mUi.yesNoAnswers = {true};
    EXPECT_FALSE(combiner.updateBlastTable());
    EXPECT_EQ(names(Table::Blast), QStringList({"B1", "B2", "B3", "O'Neill"}));
    EXPECT_EQ(names(Table::StdBlast), QStringList({"B1", "B2", "B3", "O'Neill"}));
    EXPECT_EQ(quantity(Table::Blast, "B3"), 500);
    ASSERT_EQ(mUi.messages.size(), 1u);
    EXPECT_EQ(mUi.messages[0].text, "The database operation failed; nothing was changed.");
    EXPECT_EQ(mUi.messages[0].icon, UserPrompt::Icon::Error);
    EXPECT_TRUE(mUi.messages[0].details.contains("disk full"));
}

TEST_F(BlastCombinerTest, UpdateBlastTableRefusesWhenBlastChangedSinceItWasCopied)
{
    struct Case {
        const char* what;
        const char* sql;
        const char* changed;
    };
    // Each a change another program makes while the dialog is open; writing the working copy back
    // would undo it unseen.
    const Case cases[] = {
        {"a store took tonnes", "UPDATE [Blast] SET [Quantity] = 400 WHERE [Name] = 'B2'", "blast \"B2\""},
        {"an import added a blast", "INSERT INTO [Blast] ([Name]) VALUES ('B9')", "blast \"B9\""},
        {"a blast was deleted", "DELETE FROM [Blast] WHERE [Name] = 'B1'", "blast \"B1\""},
        {"deviations were restored", "UPDATE [stdBlast] SET [SiO2] = 2 WHERE [Name] = 'B3'",
         "deviations of blast \"B3\""},
    };
    for (const Case& c : cases) {
        rawExec("DELETE FROM [Blast]");
        mUi = {};
        addSeries();
        BlastCombiner combiner(*mDb, sio2Target(), mUi);
        ASSERT_TRUE(combiner.open());
        ASSERT_TRUE(combiner.applyResults(CSuccessfulComb{{"B3", "O'Neill"}, {300, 300}}, 2));
        ASSERT_EQ(rawExec(c.sql), QString()) << c.what;
        const std::vector<Record> before = RecordTable(*mDb, Table::Blast).all();

        mUi.yesNoAnswers = {true};
        EXPECT_FALSE(combiner.updateBlastTable()) << c.what;
        ASSERT_EQ(mUi.messages.size(), 1u) << c.what;
        EXPECT_EQ(mUi.messages[0].details, message(Msg::BlastTableChanged, {c.changed})) << c.what;
        EXPECT_EQ(RecordTable(*mDb, Table::Blast).all(), before) << c.what;
    }
}

TEST_F(BlastCombinerTest, VanishedDatabaseFileIsToldAndNothingIsWrittenIntoIt)
{
    addSeries();
    BlastCombiner combiner(*mDb, sio2Target(), mUi);
    ASSERT_TRUE(combiner.open());
    ASSERT_TRUE(combiner.applyResults(CSuccessfulComb{{"B3", "O'Neill"}, {300, 300}}, 2));
    ASSERT_TRUE(QFile::remove(mDb->path()));

    EXPECT_FALSE(combiner.applyResults(CSuccessfulComb{{"B1", "B2"}, {360, 240}}, 3));
    EXPECT_EQ(combiner.period(), 2);
    mUi.yesNoAnswers = {true};
    EXPECT_FALSE(combiner.updateBlastTable());
    EXPECT_FALSE(combiner.close());
    const QString gone = "The database file " + QDir::toNativeSeparators(mDb->path()) +
                         " is no longer there, so nothing was written. Connect the project to its "
                         "database again.";
    EXPECT_EQ(mUi.messageTexts(), QStringList(3, gone));
    // The connection still reads the deleted file: none of the three wrote into it.
    EXPECT_EQ(quantity(Table::TempBlast, "B1"), 1000);
    EXPECT_EQ(names(Table::TempBlast), QStringList({"B1", "B2", "B3"}));
    EXPECT_EQ(names(Table::Blast), QStringList({"B1", "B2", "B3", "O'Neill"}));
}

TEST_F(BlastCombinerTest, ViewSourceShowsTheWorkingRecordAndItsDeviations)
{
    addSeries();
    addBlasts(*mDb, {{"Bare", 10, {{"SiO2", 1}}, 0, 0, 0, false}});
    BlastCombiner combiner(*mDb, sio2Target(), mUi);
    ASSERT_TRUE(combiner.open());
    ASSERT_TRUE(combiner.applyResults(CSuccessfulComb{{"B3", "O'Neill"}, {100, 0}}, 2));

    const QString b3 = combiner.describeSource("B3");
    EXPECT_TRUE(b3.startsWith(
        "Blast B3\r\n       East       0.00\r\n      North       0.00\r\n  Elevation       0.00\r\n"
        "   Quantity     400.00\r\n  Titration       0.00\r\n       SiO2      16.00\r\n"))
        << b3.toStdString();
    EXPECT_TRUE(b3.contains("Cost Factor       0.00\r\n       C4AF       0.00\r\n         Cl       0.00\r\n"
                            "Standard deviations\r\n  Titration       0.00\r\n"));
    EXPECT_TRUE(b3.endsWith("         Cl       0.00\r\n"));
    EXPECT_TRUE(
        combiner.describeSource("Bare").endsWith("No standard deviations are recorded for this blast.\r\n"));
    EXPECT_EQ(combiner.describeSource("Nobody"), QString());
}

TEST_F(BlastCombinerTest, TargetListSetsModifiesAndRemovesOnePropertyAtATime)
{
    BlastCombiner combiner(*mDb, CCombinationParameters{}, mUi);
    constexpr int SiO2 = elementIndex(Element::SiO2);
    constexpr int LSF = elementIndex(Element::LSF);
    EXPECT_TRUE(combiner.setTarget(LSF, 0.95));
    EXPECT_TRUE(combiner.setTarget(SiO2, 14));
    EXPECT_FALSE(combiner.setTarget(SiO2, 15));
    EXPECT_FALSE(combiner.modifyTarget(elementIndex(Element::CaO), 1));
    EXPECT_TRUE(combiner.modifyTarget(SiO2, 13.5));
    EXPECT_EQ(combiner.targetProperties(), (std::vector<int>{SiO2, LSF}));
    EXPECT_EQ(combiner.parameters().targets[SiO2], (CCombinationParameters::Target{13.5, "SiO2", 1}));
    EXPECT_TRUE(combiner.removeTarget(LSF));
    EXPECT_FALSE(combiner.removeTarget(LSF));
    EXPECT_EQ(combiner.parameters().targets[LSF], CCombinationParameters::Target{});
    EXPECT_EQ(combiner.targetProperties(), std::vector<int>{SiO2});
    EXPECT_EQ(mUi.messageTexts(),
              QStringList({"A target on SiO2 is already set; use Modify to change its value.",
                           "No target is set on CaO.", "No target is set on LSF."}));
}

} // namespace
} // namespace kilnova
