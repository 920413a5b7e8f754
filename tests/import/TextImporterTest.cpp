#include "ImportFixtures.h"

#include "import/LineReader.h"
#include "import/TextImporter.h"

#include "common/MessageTable.h"

#include <QBuffer>
#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <functional>

namespace kilnova {
namespace {

using test::Expected;

/// A line as the line reader gives it: padded with blanks to 254 characters.
QByteArray line(const QByteArray& text)
{
    return text.leftJustified(LineReader::kLineLength, ' ', true);
}

/// A line of the default blast layout: Name 1-6, East 7-14, then fields of 10 characters.
QByteArray blastLine(const char* name, const QList<QByteArray>& values)
{
    QByteArray text = QByteArray(name).leftJustified(6, ' ');
    for (int i = 0; i < values.size(); ++i)
        text += values[i].rightJustified(i == 0 ? 8 : 10, ' ');
    return line(text);
}

/// The oxides of the worked example: CaO 65, SiO2 21, Al2O3 5, Fe2O3 3, K2O 0.8, Na2O 0.2.
const Expected kWorkedExample = {
    {"MS", 2.625},   {"MA", 5.0 / 3}, {"LSF", 65 / 66.4}, {"C3S", 67.135},
    {"C2S", 9.5895}, {"C3A", 8.174},  {"C4AF", 9.12},     {"NaEq", 0.7264},
};

Expected merged(Expected a, const Expected& b)
{
    a.insert(b.begin(), b.end());
    return a;
}

class TextImporterTest : public test::ImportProject {
protected:
    ImportSpecification mBlastSpec = ImportSpecification::defaultBlast();
    ImportSpecification mStockpileSpec = ImportSpecification::defaultStockpile();

    Record blast(const QByteArray& text) const
    {
        return TextImporter(ImportTarget::Blast, mBlastSpec, mStockpileSpec).recordFromLine(text.constData());
    }
    Record stockpile(const QByteArray& text) const
    {
        return TextImporter(ImportTarget::Stockpile, mBlastSpec, mStockpileSpec)
            .recordFromLine(text.constData());
    }
    ImportResult import(ImportTarget target, const QByteArray& content)
    {
        QBuffer buffer;
        buffer.setData(content);
        buffer.open(QIODevice::ReadOnly);
        return TextImporter(target, mBlastSpec, mStockpileSpec).import(*mDb, buffer);
    }
};

TEST_F(TextImporterTest, WritesEachFieldToTheColumnOfItsIndexAndDerivesTheModuli)
{
    struct Case {
        const char* what;
        QByteArray line;
        Expected expected;
    };
    // Titration SiO2 Al2O3 Fe2O3 CaO MgO LOI SO3 K2O Na2O TiO2 P2O5 CostFactor
    const Case cases[] = {
        {"a full line: the cost factor lands in MS and gives way to the computed MS",
         blastLine("B-201", {"1000.5", "2000.25", "310", "5000", "12", "21", "5", "3", "65", "1.2", "35.5",
                             "0.5", "0.8", "0.2", "0.25", "0.1", "4.75"}),
         merged(kWorkedExample, {{"Name", "B-201 "},
                                 {"East", 1000.5},
                                 {"North", 2000.25},
                                 {"Elevation", 310},
                                 {"Quantity", 5000},
                                 {"Titration", 12},
                                 {"SiO2", 21},
                                 {"MgO", 1.2},
                                 {"LOI", 35.5},
                                 {"SO3", 0.5},
                                 {"TiO2", 0.25},
                                 {"P2O5", 0.1},
                                 {"CostFactor", 0},
                                 {"Cl", -1}})},
        {"blank fields and text read as 0, never -1",
         blastLine("B-203", {"12abc", "-1.5e1x", "", "3000", "", "12.5", "3", "", "48", "n/a", "NaN", "",
                             "0.5", "0.1"}),
         {{"East", 12},
          {"North", -15},
          {"Elevation", 0},
          {"Titration", 0},
          {"Fe2O3", 0},
          {"MgO", 0},
          {"LOI", 0},
          {"TiO2", 0},
          {"MS", 12.5 / 3},
          {"MA", -1},
          {"C3A", 7.95},
          {"C4AF", 0},
          {"NaEq", 0.429}}},
        {"a short line is padded with blanks",
         line("B-9"),
         {{"Name", "B-9   "}, {"SiO2", 0}, {"MS", -1}, {"NaEq", 0}}},
    };
    for (const Case& c : cases)
        test::expectValues(blast(c.line), c.expected, c.what);
}

TEST_F(TextImporterTest, AFieldOfLengthZeroKeepsTheDefaultAndCountsAsMissing)
{
    mBlastSpec.setLength(6, 0); // SiO2
    mBlastSpec.setLength(2, 0); // North
    const Record r = blast(blastLine("B-1", {"1", "2", "3", "4", "12", "21", "5", "3", "65"}));
    // MS looks at Al2O3 and Fe2O3 only, so a missing SiO2 gives -1/8; LSF needs SiO2.
    test::expectValues(r, {{"SiO2", -1}, {"North", -1}, {"MS", -0.125}, {"LSF", -1}, {"MA", 5.0 / 3}},
                       "no SiO2");
}

TEST_F(TextImporterTest, AStockpileQuantityIsCutWhereTheBlastLayoutPutsItsFieldTwo)
{
    // Name 1-6, Source 7-14, Quantity 15-24, Titration 25-34, SiO2 35-44, and 77777 in columns 66-70.
    const QByteArray text = line((QByteArray("S-11  Pile A  ") + QByteArray("12000").rightJustified(10) +
                                  QByteArray("10").rightJustified(10) + QByteArray("21").rightJustified(10))
                                     .leftJustified(65) +
                                 "77777");
    test::expectValues(stockpile(text),
                       {{"Name", "S-11  "}, {"Source", "Pile A  "}, {"Quantity", 12000}, {"SiO2", 21}},
                       "default layouts agree");

    mBlastSpec.setPosition(2, 66);
    mBlastSpec.setLength(2, 5);
    test::expectValues(stockpile(text), {{"Quantity", 77777}}, "the blast layout decides");

    mStockpileSpec.setLength(2, 0);
    test::expectValues(stockpile(text), {{"Quantity", 0}}, "its own length 0 leaves the default");
}

TEST_F(TextImporterTest, AValueBeyondColumn254ReadsAsZero)
{
    mBlastSpec.setPosition(6, 250); // SiO2 in 250-259: only 250-254 are kept
    mBlastSpec.setPosition(9, 255); // CaO starts beyond the kept line
    const QByteArray text = QByteArray("B-1").leftJustified(249, ' ') + "1234567890";
    test::expectValues(blast(line(text)), {{"SiO2", 12345}, {"CaO", 0}}, "long line");
}

TEST_F(TextImporterTest, ImportsTheFixtureFilesWithCompanionsAndWithoutTheLastOpenLine)
{
    struct Case {
        const char* file;
        ImportTarget target;
        QStringList names;
    };
    const Case cases[] = {
        {"blasts.rsv", ImportTarget::Blast, {"B-201 ", "B-202 ", "B-203 "}},
        {"blasts-crlf.txt", ImportTarget::Blast, {"B-201 ", "B-202 "}},
        {"stockpiles.rsv", ImportTarget::Stockpile, {"S-11  ", "S-12  "}},
        {"empty.rsv", ImportTarget::Blast, {}},
    };
    for (const Case& c : cases) {
        RecordTable(*mDb, Table::Blast).removeAll();
        RecordTable(*mDb, Table::Stockpile).removeAll();
        QFile file(test::importFixture(c.file));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const ImportResult result = TextImporter(c.target, mBlastSpec, mStockpileSpec).import(*mDb, file);
        EXPECT_FALSE(result.stopped()) << c.file;
        EXPECT_EQ(result.count, c.names.size()) << c.file;
        EXPECT_EQ(names(tableOf(c.target)), c.names) << c.file;
        EXPECT_EQ(names(Table::StdBlast), c.target == ImportTarget::Blast ? c.names : QStringList())
            << c.file;
    }
}

TEST_F(TextImporterTest, ARefusedLineStopsTheImportAndKeepsTheLinesBeforeIt)
{
    const QByteArray content = blastLine("B1", {"1"}) + "\n" + blastLine("B2", {"2"}) + "\n" +
                               blastLine("b1", {"3"}) + "\n" + blastLine("B3", {"4"}) + "\n";
    const ImportResult result = import(ImportTarget::Blast, content);
    EXPECT_EQ(result.count, 2);
    EXPECT_EQ(result.stoppedAt, "line 3");
    EXPECT_EQ(result.reason, "The Blast table already holds a record named \"b1    \".");
    EXPECT_FALSE(result.nothingKept);
    EXPECT_EQ(names(Table::Blast), QStringList({"B1    ", "B2    "}));
    EXPECT_EQ(names(Table::StdBlast), QStringList({"B1    ", "B2    "}));
}

TEST_F(TextImporterTest, AnEmptyNameIsRefusedByTheDatabase)
{
    // A zero byte where the name starts leaves nothing of it.
    const QByteArray content = blastLine("B1", {"1"}) + "\n" + QByteArray(1, '\0') + "2345\n";
    const ImportResult result = import(ImportTarget::Blast, content);
    EXPECT_EQ(result.count, 1);
    EXPECT_EQ(result.stoppedAt, "line 2");
    EXPECT_TRUE(result.reason.contains("is empty or longer than 50 characters"))
        << result.reason.toStdString();
}

TEST_F(TextImporterTest, ALayoutWithMoreFieldsThanTheTableHasColumnsIsRefused)
{
    mStockpileSpec.setFieldCount(26); // Stockpile has 25 columns
    mStockpileSpec.setField(25, {"Extra", 1, 1, 0});
    const ImportResult result = import(ImportTarget::Stockpile, "S-1\n");
    EXPECT_EQ(result.count, 0);
    EXPECT_EQ(result.reason, "Field 26 of the layout has no column in the Stockpile table.");
    EXPECT_EQ(mDb->count(Table::Stockpile), 4) << "only the Actual stockpiles";
}

TEST(TextImporter, RecognisesABinaryFileByItsZeroBytes)
{
    for (const auto& [name, text] :
         {std::pair{"binary.rsv", false}, {"blasts.rsv", true}, {"empty.rsv", true}}) {
        QFile file(test::importFixture(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(TextImporter::looksLikeText(file), text) << name;
        EXPECT_EQ(file.pos(), 0) << "the check reads nothing away";
    }
}

} // namespace
} // namespace kilnova

namespace kilnova {
namespace {

/// A file whose reading goes on while, half-way through, the database file is deleted or replaced.
class PullingTheRug : public QBuffer {
public:
    PullingTheRug(const QByteArray& content, qint64 at, std::function<void()> rug)
        : mAt(at)
        , mRug(std::move(rug))
    {
        setData(content);
        open(QIODevice::ReadOnly);
    }

protected:
    qint64 readData(char* data, qint64 size) override
    {
        if (pos() >= mAt && mRug) {
            mRug();
            mRug = nullptr;
        }
        return QBuffer::readData(data, std::min<qint64>(size, 4096));
    }

private:
    qint64 mAt;
    std::function<void()> mRug;
};

TEST_F(TextImporterTest, ADatabaseFileDeletedOrReplacedDuringALongImportIsReportedAsLost)
{
    QByteArray content;
    for (int i = 0; i < 5000; ++i)
        content += QStringLiteral("L%1\n").arg(i, 5, 10, QLatin1Char('0')).toLatin1();
    const QString file = mDb->path();
    struct Case {
        const char* what;
        std::function<void()> rug;
        Msg message;
    };
    const Case cases[] = {
        {"deleted", [file] { QFile::remove(file); }, Msg::DatabaseFileGone},
        {"replaced",
         [file] {
             QFile::copy(file, file + ".old");
             QFile::remove(file);
             QFile::rename(file + ".old", file);
         },
         Msg::DatabaseFileReplaced},
    };
    for (const Case& c : cases) {
        SetUp(); // a database of its own
        PullingTheRug device(content, content.size() / 2, c.rug);
        const ImportResult result =
            TextImporter(ImportTarget::Blast, mBlastSpec, mStockpileSpec).import(*mDb, device);
        EXPECT_TRUE(result.nothingKept) << c.what;
        EXPECT_EQ(result.count, 0) << c.what;
        EXPECT_EQ(result.reason, message(c.message, {QDir::toNativeSeparators(mDb->path())})) << c.what;
    }
}

} // namespace
} // namespace kilnova
