#include "CliFixture.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace kilnova {
namespace {

QString fixture(const char* name)
{
    return QStringLiteral(KILNOVA_IMPORT_DATA "/") + QString::fromLatin1(name);
}

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// What blasts.rsv holds besides plain numbers, worked out from its columns: line 2 has no MgO, TiO2
/// and P2O5; line 3 has "12abc" as East, "-1.5e1x" as North, and no Elevation, Titration, Fe2O3, LOI,
/// TiO2 or P2O5. Its blank cost factor is never stored, so it is not counted.
const QString kBlastWarnings =
    "Number fields that held no number or stopped early: 11. They were stored as 0 or as their leading "
    "number:\n"
    "  line 2, MgO: blank, stored as 0\n"
    "  line 2, TiO2: blank, stored as 0\n"
    "  line 2, P2O5: blank, stored as 0\n"
    "  line 3, East: \"12abc\", stored as 12\n"
    "  line 3, North: \"-1.5e1x\", stored as -15\n"
    "  and 6 more\n"
    "A field the file does not hold keeps its missing value (-1) when its length in the layout is 0.\n";

class ImportCliTest : public CliFixture {
protected:
    void SetUp() override
    {
        ASSERT_EQ(run({"create", "plant.kndb"}).status, 0);
        ASSERT_EQ(run({"project", "new", "plant.knv", "--db", "plant.kndb"}).status, 0);
    }

    QStringList names(Table table)
    {
        const std::unique_ptr<ProjectDatabase> db = ProjectDatabase::open(mDir.filePath("plant.kndb"));
        return RecordTable(*db, table).names();
    }
};

TEST_F(ImportCliTest, ImportsTextWithTheProjectLayoutAndLeavesTheProjectFileAlone)
{
    const QByteArray project = contents(mDir.filePath("plant.knv"));
    const CliRun blasts = run({"import", "blasts", "plant.knv", fixture("blasts.rsv")});
    EXPECT_EQ(blasts.status, 0) << blasts.err.toStdString();
    EXPECT_EQ(blasts.out, "You have imported 3 data records from file " + fixture("blasts.rsv") + "\n");
    EXPECT_EQ(blasts.err, kBlastWarnings);
    EXPECT_EQ(names(Table::Blast), QStringList({"B-201 ", "B-202 ", "B-203 "}));

    // The window imports stockpiles from text silently; the command line says how many all the same.
    const CliRun piles = run({"import", "stockpiles", "plant.knv", fixture("stockpiles.rsv")});
    EXPECT_EQ(piles.status, 0);
    EXPECT_EQ(piles.out, "You have imported 2 data records from file " + fixture("stockpiles.rsv") + "\n");
    EXPECT_TRUE(piles.err.startsWith("Number fields that held no number or stopped early: 14."))
        << "MgO to P2O5 are blank on both lines";
    EXPECT_EQ(contents(mDir.filePath("plant.knv")), project);
}

TEST_F(ImportCliTest, StrictRefusesAFileWithFieldsThatAreNotNumbersAndForceTakesAMisfit)
{
    const CliRun strict = run({"import", "blasts", "plant.knv", fixture("blasts.rsv"), "--strict"});
    EXPECT_EQ(strict.status, 1);
    EXPECT_EQ(strict.out, "");
    EXPECT_EQ(strict.err, "Nothing was imported from " + fixture("blasts.rsv") +
                              ": not every number field holds a plain number.\n" + kBlastWarnings);
    EXPECT_EQ(names(Table::Blast), QStringList());

    // The blast file's East sits where a stockpile's Source belongs.
    const QString misfit =
        "The lines of this file do not fit the Stockpile layout: on 2 of 3 lines the Source "
        "field holds a number (\"1000.5\" on line 1) where a name belongs.\n";
    const CliRun refused = run({"import", "stockpiles", "plant.knv", fixture("blasts.rsv")});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.out, "");
    EXPECT_EQ(refused.err, misfit + "Nothing was imported; add --force to import the file all the same.\n");
    EXPECT_EQ(names(Table::Stockpile), QStringList({"Actual 1", "Actual 2", "Actual 3", "Actual 4"}));

    const CliRun forced = run({"import", "stockpiles", "plant.knv", fixture("blasts.rsv"), "--force"});
    EXPECT_EQ(forced.status, 0) << forced.err.toStdString();
    EXPECT_EQ(forced.out, "You have imported 3 data records from file " + fixture("blasts.rsv") + "\n");
    EXPECT_EQ(names(Table::Stockpile).size(), 7);
}

TEST_F(ImportCliTest, ReadsTheWorkbookSourceTheOptionsName)
{
    struct Case {
        QStringList options;
        int count;
    };
    const Case cases[] = {
        {{}, 3}, // the first worksheet, Data
        {{"--range", "Quarry"}, 2},
        {{"--cells", "[Ranges$]B3:E4"}, 1},
    };
    for (const Case& c : cases) {
        ASSERT_EQ(run({"create", "plant.kndb", "--force"}).status, 0);
        const CliRun r =
            run(QStringList{"import", "blasts", "plant.knv", fixture("blasts.xlsx")} + c.options);
        EXPECT_EQ(r.status, 0) << r.err.toStdString();
        EXPECT_EQ(r.out, QStringLiteral("You have imported %1 data records from file %2\n")
                             .arg(c.count)
                             .arg(fixture("blasts.xlsx")));
    }
}

TEST_F(ImportCliTest, FailuresGoToStandardErrorWithStatusOne)
{
    ASSERT_EQ(run({"import", "blasts", "plant.knv", fixture("blasts.xls"), "--sheet", "Halfway"}).status, 1);
    struct Case {
        QStringList args;
        int status;
        QString err;
    };
    const Case cases[] = {
        {{"import", "blasts", "plant.knv", fixture("blasts.xls"), "--sheet", "Halfway"},
         1,
         "The import from " + fixture("blasts.xls") +
             " stopped at row 2 of Halfway: The Blast table already holds a record named \"H-1\".\nNothing "
             "was "
             "imported.\n"},
        {{"import", "blasts", "plant.knv", fixture("blasts.xls"), "--sheet", "  "},
         1,
         "No valid data source was specified\n"},
        {{"import", "blasts", "plant.knv", fixture("corrupt.xlsx")},
         1,
         "The workbook " + fixture("corrupt.xlsx") +
             " cannot be read: it is damaged or not an Excel workbook.\n"},
        {{"import", "blasts", "plant.knv", fixture("binary.rsv")},
         1,
         fixture("binary.rsv") + " is not a text file. Nothing was imported.\n"},
        {{"import", "coal", "plant.knv", fixture("blasts.rsv")},
         2,
         "kilnova-cli: import reads blasts or stockpiles"},
        {{"import", "blasts", "plant.knv"}, 2, "kilnova-cli: import needs blasts or stockpiles"},
        {{"import", "blasts", "plant.knv", fixture("blasts.rsv"), "--sheet", "Data"},
         2,
         "kilnova-cli: --sheet is for workbooks"},
        {{"import", "blasts", "plant.knv", fixture("blasts.xls"), "--tab", "Data"},
         2,
         "kilnova-cli: unknown option"},
        {{"import", "blasts", "missing.knv", fixture("blasts.rsv")}, 1, "The project "},
    };
    for (const Case& c : cases) {
        const CliRun r = run(c.args);
        EXPECT_EQ(r.status, c.status) << c.args.join(' ').toStdString();
        EXPECT_EQ(r.out, "") << c.args.join(' ').toStdString();
        if (c.status == 2 || c.err.endsWith(' '))
            EXPECT_TRUE(r.err.startsWith(c.err)) << r.err.toStdString();
        else
            EXPECT_EQ(r.err, c.err);
    }
    EXPECT_EQ(names(Table::Blast), QStringList{"H-1"});
}

} // namespace
} // namespace kilnova
