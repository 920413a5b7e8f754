#include "ImportFixtures.h"
#include "ScriptedImportDialogs.h"

#include "common/MessageTable.h"
#include "import/FileFilter.h"
#include "import/ImportWorkflow.h"
#include "support/ScriptedPrompt.h"

#include <QFile>
#include <QSqlQuery>

#include <gtest/gtest.h>

namespace kilnova {
namespace {

using Icon = UserPrompt::Icon;
using Status = ImportOutcome::Status;

class ImportWorkflowTest : public test::ImportProject {
protected:
    ImportOutcome importText(ImportTarget target)
    {
        return ImportWorkflow(*mDb, mBlastSpec, mStockpileSpec, mUi, mDialogs).importText(target);
    }
    ImportOutcome importWorkbook(ImportTarget target, WorkbookSourceForm::Kind kind, const QString& typed,
                                 const QString& path)
    {
        mDialogs.onWorkbook = [=](WorkbookSourceForm& form, UserPrompt&) {
            form.setKind(kind);
            form.setWorksheet(typed);
            form.setNamedRange(typed);
            form.setCellRange(typed);
            form.setWorkbookPath(path);
            return true;
        };
        return ImportWorkflow(*mDb, mBlastSpec, mStockpileSpec, mUi, mDialogs).importWorkbook(target);
    }
    bool hasTable(const QString& name)
    {
        QSqlQuery q = mDb->exec("SELECT COUNT(*) FROM sqlite_master WHERE name = ?", {name});
        return q.next() && q.value(0).toInt() > 0;
    }

    ImportSpecification mBlastSpec = ImportSpecification::defaultBlast();
    ImportSpecification mStockpileSpec = ImportSpecification::defaultStockpile();
    test::ScriptedPrompt mUi;
    test::ScriptedImportDialogs mDialogs;
};

TEST_F(ImportWorkflowTest, TextImportAsksForTheFileAndTheLayoutWithTheirTitles)
{
    struct Case {
        ImportTarget target;
        const char* fileTitle;
        const char* filter;
        const char* specTitle;
    };
    const Case cases[] = {
        {ImportTarget::Blast, "Open a Blast data File", "Blast data files (*.rsv);;Blast data files (*.txt)",
         "Format of Blast data records"},
        {ImportTarget::Stockpile, "Open a Stockpile data File",
         "Stockpile data files (*.rsv);;Stockpile data files (*.txt)", "Format of Stockpile data records"},
    };
    for (const Case& c : cases) {
        mUi = {};
        mDialogs = {};
        mDialogs.onSpecification = [](ImportSpecEditor&) {
            return false;
        };
        mUi.fileAnswers = {test::importFixture("blasts.rsv")};
        const ImportOutcome outcome = importText(c.target);
        ASSERT_EQ(mUi.fileRequests.size(), 1u);
        EXPECT_EQ(mUi.fileRequests[0].title, c.fileTitle);
        EXPECT_EQ(mUi.fileRequests[0].filter, c.filter);
        EXPECT_EQ(mUi.fileRequests[0].defaultSuffix, "rsv");
        EXPECT_FALSE(mUi.fileRequests[0].forSaving);
        EXPECT_EQ(mDialogs.titles, QStringList{c.specTitle});
        EXPECT_TRUE(mDialogs.previews.value(0).contains("B-201   1000.5   2000.25"));
        EXPECT_EQ(outcome.status, Status::Cancelled);
        EXPECT_FALSE(outcome.documentModified);
    }
}

TEST_F(ImportWorkflowTest, CancelInEitherDialogWritesNothingAndKeepsTheLayout)
{
    mUi.fileAnswers = {std::nullopt};
    EXPECT_EQ(importText(ImportTarget::Blast).status, Status::Cancelled);
    EXPECT_TRUE(mDialogs.titles.isEmpty()) << "no layout dialog without a file";

    mUi.fileAnswers = {test::importFixture("blasts.rsv")};
    mDialogs.onSpecification = [](ImportSpecEditor& editor) {
        editor.setPosition(3);
        return false;
    };
    const ImportOutcome outcome = importText(ImportTarget::Blast);
    EXPECT_EQ(outcome.status, Status::Cancelled);
    EXPECT_FALSE(outcome.documentModified);
    EXPECT_EQ(mBlastSpec, ImportSpecification::defaultBlast());
    EXPECT_EQ(mDb->count(Table::Blast), 0);
    EXPECT_TRUE(mUi.messages.empty());
}

TEST_F(ImportWorkflowTest, OkReplacesTheLayoutAndTheBlastImportReportsItsCount)
{
    mUi.fileAnswers = {test::importFixture("blasts.rsv")};
    mDialogs.onSpecification = [](ImportSpecEditor& editor) {
        editor.setCurrentField(0);
        return editor.setLength(5); // names without their trailing blank
    };
    const ImportOutcome outcome = importText(ImportTarget::Blast);
    EXPECT_EQ(outcome.status, Status::Imported);
    EXPECT_EQ(outcome.count, 3);
    EXPECT_TRUE(outcome.documentModified);
    EXPECT_EQ(mBlastSpec.length(0), 5);
    EXPECT_EQ(names(Table::Blast), QStringList({"B-201", "B-202", "B-203"}));
    // The fixture has blank fields and text in number fields: the count comes with what was stored.
    ASSERT_EQ(mUi.messages.size(), 1u);
    EXPECT_TRUE(mUi.messages[0].text.startsWith(
        "You have imported 3 data records from file " + test::importFixture("blasts.rsv") +
        "\n\nNumber fields that held no number or stopped early: 11."));
    EXPECT_EQ(mUi.messages.at(0).icon, Icon::Warning);
}

TEST_F(ImportWorkflowTest, TheStockpileTextImportEndsSilently)
{
    for (int field = 8; field <= 14; ++field)
        mStockpileSpec.setLength(field, 0); // MgO to P2O5 are not in the file
    mUi.fileAnswers = {test::importFixture("stockpiles.rsv")};
    const ImportOutcome outcome = importText(ImportTarget::Stockpile);
    EXPECT_EQ(outcome.status, Status::Imported);
    EXPECT_EQ(outcome.count, 2);
    EXPECT_TRUE(mUi.messages.empty());
    EXPECT_EQ(mDb->count(Table::Stockpile), 6);

    // Except when the file had no line to import at all.
    mUi.fileAnswers = {test::importFixture("empty.rsv")};
    EXPECT_EQ(importText(ImportTarget::Stockpile).count, 0);
    EXPECT_EQ(mUi.messageTexts(), QStringList{"No records were imported: the file " +
                                              test::importFixture("empty.rsv") + " holds no complete line."});
}

TEST_F(ImportWorkflowTest, FilesThatCannotBeImportedAreReportedAfterTheLayoutWasTaken)
{
    struct Case {
        QString path;
        QString message;
    };
    const Case cases[] = {
        {test::importFixture("binary.rsv"),
         test::importFixture("binary.rsv") + " is not a text file. Nothing was imported."},
        {path("missing.rsv"),
         "The file " + path("missing.rsv") + " cannot be opened: No such file or directory"},
    };
    for (const Case& c : cases) {
        mUi = {};
        mUi.fileAnswers = {c.path};
        const ImportOutcome outcome = importText(ImportTarget::Blast);
        EXPECT_EQ(outcome.status, Status::Failed);
        EXPECT_TRUE(outcome.documentModified) << "the layout was confirmed";
        EXPECT_EQ(mUi.messageTexts(), QStringList{c.message});
        EXPECT_EQ(mUi.messages.at(0).icon, Icon::Error);
    }
    EXPECT_EQ(mDb->count(Table::Blast), 0);
}

TEST_F(ImportWorkflowTest, AFailureHalfWayIsReportedWithWhatWasKept)
{
    QFile file(path("dup.rsv"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("B1\nB2\nB1\nB3\n");
    file.close();
    for (int field = 1; field < mBlastSpec.fieldCount(); ++field)
        mBlastSpec.setLength(field, 0); // names only: no number field that could be blank
    mUi.fileAnswers = {file.fileName()};
    const ImportOutcome outcome = importText(ImportTarget::Blast);
    EXPECT_EQ(outcome.status, Status::Failed);
    EXPECT_EQ(outcome.count, 2);
    EXPECT_EQ(mUi.messageTexts(),
              QStringList{"The import from " + file.fileName() +
                          " stopped at line 3: The Blast table already holds a record named \"B1    \".\n"
                          "Records imported before that point and kept: 2."});
    EXPECT_EQ(names(Table::Blast), QStringList({"B1    ", "B2    "}));

    mUi = {};
    mBlastSpec.setLength(0, 0); // every blast would be NewBlast, which exists already after this
    RecordTable(*mDb, Table::Blast).removeAll();
    mUi.fileAnswers = {file.fileName()};
    importText(ImportTarget::Blast);
    mUi.fileAnswers = {file.fileName()};
    importText(ImportTarget::Blast);
    EXPECT_EQ(mUi.messageTexts().last(),
              "The import from " + file.fileName() +
                  " stopped at line 1: The Blast table already holds a record named \"NewBlast\".\n"
                  "Nothing was imported.");
}

TEST_F(ImportWorkflowTest, ADatabaseFileThatVanishedIsReportedBeforeAnythingIsWritten)
{
    const QString database = path("project.kndb");
    const QString gone = "The database file " + database +
                         " is no longer there, so nothing was written. Connect the project to its database "
                         "again.";
    auto removeDatabase = [&database] {
        return QFile::remove(database);
    };
    // Gone before the command, or while its dialog was open: the text import keeps the layout the
    // user confirmed, nothing reaches the tables.
    mUi.fileAnswers = {test::importFixture("blasts.rsv")};
    mDialogs.onSpecification = [&](ImportSpecEditor& editor) {
        editor.setLength(5);
        return removeDatabase();
    };
    ImportOutcome outcome = importText(ImportTarget::Blast);
    EXPECT_EQ(outcome.status, Status::Failed);
    EXPECT_TRUE(outcome.documentModified);
    EXPECT_EQ(mBlastSpec.length(0), 5);
    EXPECT_EQ(mUi.messageTexts(), QStringList{gone});

    mUi = {};
    mDialogs = {};
    outcome = importText(ImportTarget::Stockpile);
    EXPECT_EQ(outcome.status, Status::Failed);
    EXPECT_TRUE(mUi.fileRequests.empty()) << "no file is asked for";
    EXPECT_EQ(mUi.messageTexts(), QStringList{gone});

    mUi = {};
    outcome = importWorkbook(ImportTarget::Blast, WorkbookSourceForm::Kind::Worksheet, "Data",
                             test::importFixture("blasts.xls"));
    EXPECT_EQ(outcome.status, Status::Failed);
    EXPECT_EQ(mDialogs.workbookDialogs, 0);
    EXPECT_EQ(mUi.messageTexts(), QStringList{gone});

    EXPECT_EQ(mDb->count(Table::Blast), 0);
    EXPECT_EQ(mDb->count(Table::StdBlast), 0);
    EXPECT_EQ(mDb->count(Table::Stockpile), 4) << "only the Actual stockpiles";
}

TEST_F(ImportWorkflowTest, WorkbookImportReportsItsCountAndLeavesNoLinkedTable)
{
    // A project database that still holds a linked table from earlier days loses it.
    ASSERT_EQ(rawExec("CREATE TABLE [Input Blasts from Excel] (x)"), QString());
    const QString workbook = test::importFixture("blasts.xls");
    const ImportOutcome outcome =
        importWorkbook(ImportTarget::Blast, WorkbookSourceForm::Kind::Worksheet, "Data  ", workbook);
    EXPECT_EQ(outcome.status, Status::Imported);
    EXPECT_EQ(outcome.count, 3);
    EXPECT_FALSE(outcome.documentModified);
    EXPECT_EQ(mUi.messageTexts(), QStringList{"You have imported 3 data records from file " + workbook});
    EXPECT_FALSE(hasTable("Input Blasts from Excel"));

    mUi = {};
    EXPECT_EQ(importWorkbook(ImportTarget::Stockpile, WorkbookSourceForm::Kind::NamedRange, "Mixes", workbook)
                  .count,
              2);
    EXPECT_EQ(mUi.messageTexts(), QStringList{"You have imported 2 data records from file " + workbook})
        << "the stockpile workbook import reports its count too";
    EXPECT_FALSE(hasTable("Input Stockpile from Excel"));
}

TEST_F(ImportWorkflowTest, WorkbookFailuresSayWhyAndWriteNothingMore)
{
    const QString xls = test::importFixture("blasts.xls");
    using Kind = WorkbookSourceForm::Kind;
    struct Case {
        Kind kind;
        QString typed;
        QString path;
        QString message;
    };
    const Case cases[] = {
        {Kind::Worksheet, "   ", xls, "No valid data source was specified"},
        {Kind::NamedRange, "Quarry", "", "No valid data source was specified"},
        {Kind::Worksheet, "Data$", xls,
         "The workbook " + xls + " cannot be read: it has no worksheet named \"Data$\"."},
        {Kind::Worksheet, "Data", test::importFixture("protected.xls"),
         "The workbook " + test::importFixture("protected.xls") +
             " cannot be read: it is protected by a password. Save it without one and import it again."},
        {Kind::Worksheet, "Bad", xls,
         "The import from " + xls +
             " stopped at its headings: Unknown column \"Colour\": the Blast table has no column of that "
             "name.\n"
             "Nothing was imported."},
        {Kind::CellRange, "[Halfway$]A1:B4", xls,
         "The import from " + xls +
             " stopped at row 3 of [Halfway$]A1:B4: The value \"n/a\" of column SiO2 is not a number.\n"
             "Records imported before that point and kept: 1."},
    };
    for (const Case& c : cases) {
        mUi = {};
        const ImportOutcome outcome = importWorkbook(ImportTarget::Blast, c.kind, c.typed, c.path);
        EXPECT_EQ(outcome.status, Status::Failed) << c.message.toStdString();
        EXPECT_EQ(mUi.messageTexts(), QStringList{c.message});
        EXPECT_EQ(mUi.messages.at(0).icon, Icon::Error);
    }
    EXPECT_EQ(names(Table::Blast), QStringList{"H-1"});
    EXPECT_FALSE(hasTable("Input Blasts from Excel"));
}

TEST(FileFilter, TurnsTheStoredPairsIntoTheDialogsFilter)
{
    struct Case {
        QString pairs;
        QString filter;
    };
    const Case cases[] = {
        {message(Msg::BlastFileFilter), "Blast data files (*.rsv);;Blast data files (*.txt)"},
        {message(Msg::StockpileFileFilter), "Stockpile data files (*.rsv);;Stockpile data files (*.txt)"},
        {message(Msg::WorkbookFilter), "Excel 95/97 workbooks (*.xls)"},
        {"Workbooks|*.xls;*.xlsx||", "Workbooks (*.xls *.xlsx)"},
        {"A (*.a)|*.a||B (*.b)|*.b||", "A (*.a)"},
        {"", ""},
    };
    for (const Case& c : cases)
        EXPECT_EQ(FileFilter::fromPairs(c.pairs), c.filter) << c.pairs.toStdString();
    // The table keeps the texts in the form plants' files have always been described by.
    EXPECT_EQ(message(Msg::BlastFileFilter),
              "Blast data files (*.rsv)|*.rsv|Blast data files (*.txt)|*.txt||");
    EXPECT_EQ(message(Msg::StockpileFileFilter),
              "Stockpile data files (*.rsv)|*.rsv|Stockpile data files (*.txt)|*.txt||");
    EXPECT_EQ(message(Msg::WorkbookFilter), "Excel 95/97 workbooks (*.xls)|*.xls||");
}

TEST_F(ImportWorkflowTest, BrowseAsksWithTheWorkbookTitleAndFilter)
{
    WorkbookSourceForm form;
    form.setWorkbookPath("/data/old.xls");
    mUi.fileAnswers = {QStringLiteral("/data/new.xlsx"), std::nullopt};
    EXPECT_TRUE(form.browse(mUi));
    EXPECT_EQ(form.workbookPath(), "/data/new.xlsx");
    EXPECT_FALSE(form.browse(mUi));
    EXPECT_EQ(form.workbookPath(), "/data/new.xlsx") << "Cancel keeps the path";
    ASSERT_EQ(mUi.fileRequests.size(), 2u);
    EXPECT_EQ(mUi.fileRequests[0].title, "Import blast data from an Excel workbook");
    EXPECT_EQ(mUi.fileRequests[0].filter,
              "Excel 95/97 workbooks (*.xls);;Excel workbooks (*.xlsx);;Comma-separated values (*.csv)");
    EXPECT_EQ(mUi.fileRequests[0].defaultSuffix, "xls");
    EXPECT_EQ(mUi.fileRequests[0].initialPath, "/data/old.xls");
    EXPECT_EQ(mUi.fileRequests[1].initialPath, "/data/new.xlsx");
}

} // namespace
} // namespace kilnova
