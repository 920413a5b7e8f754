#include "ImportFixtures.h"
#include "ScriptedImportDialogs.h"

#include "common/MessageTable.h"
#include "import/FieldExtractor.h"
#include "import/ImportWorkflow.h"
#include "import/LineReader.h"
#include "import/TextImportCheck.h"
#include "support/ScriptedPrompt.h"

#include <QBuffer>
#include <QFile>

#include <gtest/gtest.h>

namespace kilnova {
namespace {

using Fit = FieldExtractor::NumberFit;
using Status = ImportOutcome::Status;

/// A line of the default blast layout: Name 1-6, East 7-14, then fields of 10 characters.
QByteArray blastLine(const char* name, const QList<QByteArray>& values)
{
    QByteArray text = QByteArray(name).leftJustified(6, ' ');
    for (int i = 0; i < values.size(); ++i)
        text += values[i].rightJustified(i == 0 ? 8 : 10, ' ');
    return text + '\n';
}

TEST(FieldExtractorFit, TellsWholeNumbersFromTextAndLeadingNumbers)
{
    struct Case {
        const char* field;
        Fit fit;
    };
    const Case cases[] = {
        {"  12.5    ", Fit::Whole}, {"-1.5e1", Fit::Whole},    {".5", Fit::Whole},     {"\t7\r", Fit::Whole},
        {"12abc", Fit::Leading},    {"-1.5e1x", Fit::Leading}, {"12,5", Fit::Leading}, {"1 2", Fit::Leading},
        {"1e", Fit::Leading},       {"abc", Fit::None},        {"NaN", Fit::None},     {"+", Fit::None},
        {"          ", Fit::Blank}, {"", Fit::Blank},
    };
    for (const Case& c : cases) {
        const QByteArray line = QByteArray("AB") + c.field + QByteArray(40, ' ');
        EXPECT_EQ(FieldExtractor::numberFit(line.constData(), 3, static_cast<int>(qstrlen(c.field))), c.fit)
            << c.field;
    }
    // Beyond the end of the line the field is blank, as the padded line reads.
    EXPECT_EQ(FieldExtractor::numberFit("B1", 10, 5), Fit::Blank);
}

TEST(ImportWarnings, CountsEveryKindAndShowsTheFirstFive)
{
    ImportWarnings w;
    w.add({1, "SiO2", "12.5", Fit::Whole, 12.5}); // a plain number is no warning
    w.add({1, "CaO", "abc", Fit::None, 0});
    w.add({2, "MgO", "", Fit::Blank, 0});
    w.add({2, "LOI", "3x", Fit::Leading, 3});
    for (long line = 3; line <= 5; ++line)
        w.add({line, "SO3", "-", Fit::None, 0});
    EXPECT_EQ(w.count(), 6);
    EXPECT_EQ(w.noNumberCount(), 4);
    EXPECT_EQ(w.blankCount(), 1);
    EXPECT_EQ(w.leadingCount(), 1);
    EXPECT_EQ(
        w.describe(),
        "Number fields that held no number or stopped early: 6. They were stored as 0 or as their "
        "leading number:\n"
        "  line 1, CaO: \"abc\", stored as 0\n"
        "  line 2, MgO: blank, stored as 0\n"
        "  line 2, LOI: \"3x\", stored as 3\n"
        "  line 3, SO3: \"-\", stored as 0\n"
        "  line 4, SO3: \"-\", stored as 0\n"
        "  and 1 more\n"
        "A field the file does not hold keeps its missing value (-1) when its length in the layout is 0.");

    ImportWarnings none;
    none.add({1, "SiO2", "1", Fit::Whole, 1});
    EXPECT_TRUE(none.empty());
    EXPECT_EQ(none.describe(), QString());
}

class TextImportCheckTest : public test::ImportProject {
protected:
    TextImportCheck::Inspection inspect(ImportTarget target, const QByteArray& content, long maxLines = 0)
    {
        QBuffer buffer;
        buffer.setData(content);
        buffer.open(QIODevice::ReadOnly);
        const TextImporter importer(target, mBlastSpec, mStockpileSpec);
        return TextImportCheck(importer, target).inspect(buffer, maxLines);
    }

    QString write(const char* name, const QByteArray& content)
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        return file.fileName();
    }

    ImportOutcome importText(ImportTarget target, const QString& file, bool strict = false)
    {
        mUi.fileAnswers = {file};
        ImportWorkflow workflow(*mDb, mBlastSpec, mStockpileSpec, mUi, mDialogs);
        workflow.setStrict(strict);
        return workflow.importText(target);
    }

    std::optional<Record> blast(const char* name)
    {
        return RecordTable(*mDb, Table::Blast).find({QString::fromLatin1(name).leftJustified(6), {}});
    }

    /// B1 is clean; B2 holds text in SiO2, a number with a letter after it in CaO and "n/a" as its
    /// cost factor, which is never stored; B3 has no MgO.
    static QByteArray threeBlasts()
    {
        return blastLine("B1", {"100", "200", "300", "1000", "80", "13.5", "3", "2", "45", "1", "35", "0.5",
                                "0.6", "0.2", "0.1", "0.05", "4"}) +
               blastLine("B2", {"100", "200", "300", "1000", "80", "abc", "3", "2", "45.2x", "1", "35", "0.5",
                                "0.6", "0.2", "0.1", "0.05", "n/a"}) +
               blastLine("B3", {"100", "200", "300", "1000", "80", "13.5", "3", "2", "45", "", "35", "0.5",
                                "0.6", "0.2", "0.1", "0.05", "4"});
    }

    static QString threeBlastsWarnings()
    {
        return "Number fields that held no number or stopped early: 3. They were stored as 0 or as their "
               "leading number:\n"
               "  line 2, SiO2: \"abc\", stored as 0\n"
               "  line 2, CaO: \"45.2x\", stored as 45.2\n"
               "  line 3, MgO: blank, stored as 0\n"
               "A field the file does not hold keeps its missing value (-1) when its length in the layout "
               "is 0.";
    }

    ImportSpecification mBlastSpec = ImportSpecification::defaultBlast();
    ImportSpecification mStockpileSpec = ImportSpecification::defaultStockpile();
    test::ScriptedPrompt mUi;
    test::ScriptedImportDialogs mDialogs;
};

TEST_F(TextImportCheckTest, TheClosingMessageListsTheFieldsThatWereNotNumbersAndTheValuesStayAsRead)
{
    const QString file = write("three.rsv", threeBlasts());
    const ImportOutcome outcome = importText(ImportTarget::Blast, file);
    EXPECT_EQ(outcome.status, Status::Imported);
    EXPECT_EQ(outcome.warnings, threeBlastsWarnings());
    ASSERT_EQ(mUi.messages.size(), 1u);
    EXPECT_EQ(mUi.messages[0].text,
              "You have imported 3 data records from file " + file + "\n\n" + threeBlastsWarnings());
    EXPECT_EQ(mUi.messages[0].icon, UserPrompt::Icon::Warning);

    // The stored values are those the conversion gives: 0 for text, the leading number, 0 for blank.
    EXPECT_EQ(blast("B2")->number("SiO2"), 0.0);
    EXPECT_EQ(blast("B2")->number("CaO"), static_cast<double>(45.2f));
    EXPECT_EQ(blast("B3")->number("MgO"), 0.0);
    EXPECT_EQ(blast("B1")->number("SiO2"), 13.5);
    EXPECT_EQ(blast("B2")->number("CostFactor"), 0.0);
}

TEST_F(TextImportCheckTest, StrictRefusesTheFileBeforeWritingAndACleanFileStaysSilent)
{
    const QString file = write("three.rsv", threeBlasts());
    const ImportOutcome outcome = importText(ImportTarget::Blast, file, true);
    EXPECT_EQ(outcome.status, Status::Failed);
    EXPECT_EQ(mUi.messageTexts(),
              QStringList{"Nothing was imported from " + file +
                          ": not every number field holds a plain number.\n" + threeBlastsWarnings()});
    EXPECT_EQ(mDb->count(Table::Blast), 0);
    EXPECT_EQ(mDb->count(Table::StdBlast), 0);

    // Strict imports a file of plain numbers; a stockpile import of one ends without a word.
    mUi = {};
    QByteArray pile = QByteArray("S-1").leftJustified(6) + QByteArray("Pit 3").leftJustified(8);
    for (const char* value :
         {"1200", "80", "13.5", "3", "2", "45", "1", "35", "0.5", "0.6", "0.2", "0.1", "0.05"})
        pile += QByteArray(value).rightJustified(10);
    const QString clean = write("clean.rsv", pile + '\n');
    EXPECT_EQ(importText(ImportTarget::Stockpile, clean, true).status, Status::Imported);
    EXPECT_TRUE(mUi.messages.empty());
    EXPECT_EQ(RecordTable(*mDb, Table::Stockpile).find({"S-1   ", "Pit 3   "})->number("Quantity"), 1200);
}

TEST_F(TextImportCheckTest, TellsAFileWhoseLinesDoNotFitTheLayout)
{
    const QByteArray blastFile = blastLine("B-201", {"1000.5", "2000.25", "310", "5000", "12", "21"}) +
                                 blastLine("B-202", {"1010", "2010", "312", "4000", "11", "14"});
    struct Case {
        const char* what;
        ImportTarget target;
        QByteArray content;
        std::optional<QString> problem;
    };
    const Case cases[] = {
        {"a blast file read as stockpiles: its East lands in Source", ImportTarget::Stockpile, blastFile,
         "The lines of this file do not fit the Stockpile layout: on 2 of 2 lines the Source field holds a "
         "number (\"1000.5\" on line 1) where a name belongs."},
        {"comma-separated values", ImportTarget::Blast,
         "B1,100,200,300,1000,80,13.5,3,2,45\n"
         "B2,100,200,300,1000,80,13.5,3,2,45\n",
         "The lines of this file do not fit the Blast layout: on 2 of 2 lines most number fields hold no "
         "number (East holds \",200,300\" on line 1)."},
        {"blast names of digits are names", ImportTarget::Blast,
         blastLine("1205", {"1", "2", "3", "4"}) + blastLine("1206", {"1", "2", "3", "4"}), std::nullopt},
        {"a name with a decimal point on half of the lines is not enough", ImportTarget::Blast,
         blastLine("12.5", {"1", "2", "3", "4"}) + blastLine("B7", {"1", "2", "3", "4"}), std::nullopt},
        {"one field of text among numbers is a warning, not a misfit", ImportTarget::Blast,
         blastLine("B1", {"x", "2", "3", "4"}), std::nullopt},
        {"a stockpile file read as stockpiles", ImportTarget::Stockpile,
         "S-11  Pile A       12000        10        21\n", std::nullopt},
    };
    for (const Case& c : cases) {
        const TextImportCheck::Inspection seen = inspect(c.target, c.content);
        EXPECT_EQ(seen.layoutProblem, c.problem) << c.what;
        EXPECT_EQ(seen.lines, c.content.count('\n')) << c.what;
    }
}

TEST_F(TextImportCheckTest, AFileThatDoesNotFitIsImportedOnlyWhenTheUserSaysSo)
{
    const QString file = write("blasts.rsv", blastLine("B-201", {"1000.5", "2000.25", "310", "5000"}));
    const QString question = "The lines of this file do not fit the Stockpile layout: on 1 of 1 lines the "
                             "Source field holds a number (\"1000.5\" on line 1) where a name belongs.\n\n"
                             "Import the file anyway?";
    mUi.yesNoAnswers = {false};
    EXPECT_EQ(importText(ImportTarget::Stockpile, file).status, Status::Cancelled);
    EXPECT_EQ(mUi.questions, QStringList{question});
    EXPECT_TRUE(mUi.messages.empty());
    EXPECT_EQ(mDb->count(Table::Stockpile), 4) << "the Actual stockpiles only";

    mUi = {};
    mUi.yesNoAnswers = {true};
    EXPECT_EQ(importText(ImportTarget::Stockpile, file).status, Status::Imported);
    EXPECT_EQ(mUi.questions, QStringList{question});
    EXPECT_TRUE(RecordTable(*mDb, Table::Stockpile).find({"B-201 ", "  1000.5"}));
}

TEST_F(TextImportCheckTest, AnImportThatStopsTellsTheWarningsOfTheLinesItKept)
{
    // Only names: every number field is blank. The third line repeats a name and stops the import.
    const QString file = write("dup.rsv", "B1\nB2\nB1\nB3\n");
    for (int i = 1; i <= 4; ++i)
        mBlastSpec.setLength(i, 0); // no coordinates and no tonnage in this file
    EXPECT_EQ(importText(ImportTarget::Blast, file).status, Status::Failed);
    ASSERT_EQ(mUi.messages.size(), 1u);
    // Two kept lines of 12 analyses each; the lines after the refusal count for nothing.
    EXPECT_TRUE(mUi.messages[0].text.contains("Records imported before that point and kept: 2.\n\n"
                                              "Number fields that held no number or stopped early: 24."))
        << mUi.messages[0].text.toStdString();
    EXPECT_EQ(inspect(ImportTarget::Blast, "B1\nB2\nB1\nB3\n").warnings.count(), 48);
}

} // namespace
} // namespace kilnova
