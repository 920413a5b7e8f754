#include "CliFixture.h"
#include "database/ProjectDatabase.h"
#include "project/ProjectFile.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace kilnova {
namespace {

TEST(DemoCli, BuildsTheDemoFromTheDataInsideTheProgramAndReplacesItOnlyWhenForced)
{
    QTemporaryDir dir;
    const QString folder = QDir::cleanPath(dir.filePath("demo"));
    const QString expected = QStringLiteral("Connected database name: %1/demo.kndb\n"
                                            "Number of records in Blast table: 44\n"
                                            "Number of records in Stockpile table: 10\n"
                                            "Number of records in Crude table: 6\n"
                                            "Number of records in Clinker table: 5\n"
                                            "Number of records in Additives table: 5\n"
                                            "Number of records in Coal table: 3\n"
                                            "Demo project: %1/demo.knv\n")
                                 .arg(folder);
    const CliRun built = runCli(dir.path(), {"demo", "demo"});
    EXPECT_EQ(built.status, 0) << built.err.toStdString();
    EXPECT_EQ(built.out, expected);
    EXPECT_EQ(built.err, "");
    EXPECT_EQ(ProjectFile::load(folder + "/demo.knv").settings.databasePath, folder + "/demo.kndb");

    const CliRun again = runCli(dir.path(), {"demo", "demo"});
    EXPECT_EQ(again.status, 1);
    EXPECT_EQ(again.err, folder + "/demo.knv already exists; add --force to replace it.\n");

    const CliRun forced = runCli(dir.path(), {"demo", folder, "--force"});
    EXPECT_EQ(forced.status, 0) << forced.err.toStdString();
    EXPECT_EQ(forced.out, expected);
}

TEST(DemoCli, BadDataOrCommandLineFailsWithoutWritingAnything)
{
    QTemporaryDir dir;
    QFile bad(dir.filePath("blasts.csv"));
    ASSERT_TRUE(bad.open(QIODevice::WriteOnly));
    bad.write("Name,Quantity\nB1,lots\n");
    bad.close();

    struct Case {
        QStringList args;
        int status;
        QString err;
    };
    const std::vector<Case> cases = {
        {{"demo", "out", "--data", dir.path()},
         1,
         "blasts.csv line 2: \"lots\" in column Quantity is not a number.\n"},
        {{"demo"}, 2, "kilnova-cli: demo needs one folder: demo DIR [--force] [--data FOLDER]\n"},
        {{"demo", "a", "b"}, 2, "kilnova-cli: demo needs one folder: demo DIR [--force] [--data FOLDER]\n"},
    };
    for (const Case& c : cases) {
        const CliRun r = runCli(dir.path(), c.args);
        EXPECT_EQ(r.status, c.status) << c.args.join(' ').toStdString();
        EXPECT_EQ(r.err, c.err);
        EXPECT_EQ(r.out, "");
    }
    EXPECT_FALSE(QFile::exists(dir.filePath("out/demo.kndb")));
    EXPECT_FALSE(QFile::exists(dir.filePath("out/demo.knv")));
}

} // namespace
} // namespace kilnova
