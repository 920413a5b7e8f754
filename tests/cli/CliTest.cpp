#include "CliFixture.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "project/ProjectFile.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sqlite3.h>

namespace kilnova {
namespace {

class CliTest : public CliFixture {};

TEST_F(CliTest, CreateThenStatusPrintTheCounts)
{
    const QString expected =
        QStringLiteral("Connected database name: %1\nNumber of records in Blast table: 0\n"
                       "Number of records in Stockpile table: 4\nNumber of records in Crude "
                       "table: 0\nNumber of records in Clinker table: 0\nNumber of records in "
                       "Additives table: 0\nNumber of records in Coal table: 0\n")
            .arg(path("plant.kndb"));
    const CliRun created = run({"create", "plant.kndb"});
    EXPECT_EQ(created.status, 0) << created.err.toStdString();
    EXPECT_EQ(created.out, expected);
    const CliRun status = run({"status", "plant.kndb"});
    EXPECT_EQ(status.status, 0);
    EXPECT_EQ(status.out, expected);

    const CliRun again = run({"create", "plant.kndb"});
    EXPECT_EQ(again.status, 1) << "an existing database is not replaced without --force";
    EXPECT_TRUE(again.err.contains("--force"));
}

// The version scripts read is the project's; the libraries are the ones this machine runs.
TEST_F(CliTest, VersionIsTheProjectsAndNamesTheLibrariesInUse)
{
    for (const char* option : {"--version", "-v"}) {
        const CliRun r = run({option});
        EXPECT_EQ(r.status, 0) << option;
        const QStringList lines = r.out.split('\n');
        ASSERT_EQ(lines.size(), 6) << r.out.toStdString();
        EXPECT_EQ(lines[0], QStringLiteral("kilnova-cli " KILNOVA_EXPECTED_VERSION));
        EXPECT_EQ(lines[1], QStringLiteral("Qt %1, SQLite %2").arg(qVersion(), sqlite3_libversion()));
        EXPECT_TRUE(lines[2].startsWith("Copyright (C) 2"));
        EXPECT_EQ(lines[3], "Licence: GNU General Public License, version 3 or later (GPL-3.0-or-later).");
    }
    const CliRun help = run({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.out.contains("\n  --version  ")) << help.out.toStdString();
}

TEST_F(CliTest, FailuresPrintTheMessageAndExitNonZero)
{
    QFile junk(path("junk.kndb"));
    ASSERT_TRUE(junk.open(QIODevice::WriteOnly));
    junk.write("not a database at all");
    junk.close();

    struct Case {
        QStringList args;
        int status;
        const char* errorStart;
    };
    const std::vector<Case> cases = {
        {{"status", "junk.kndb"}, 1, "Error, cannot connect to the project database.\n"},
        {{"status", "missing.kndb"}, 1, "Error, cannot connect to the project database.\n"},
        {{"project", "show", "junk.kndb"}, 1, "The project "},
        {{"create", "no/such/dir/p.kndb"}, 1, "Error: This database cannot be overwritten.\n"},
        {{"frobnicate"}, 2, "kilnova-cli: unknown command"},
        {{"project", "new", "p.knv"}, 2, "kilnova-cli: project new needs"},
    };
    for (const Case& c : cases) {
        const CliRun r = run(c.args);
        EXPECT_EQ(r.status, c.status) << c.args.join(' ').toStdString();
        EXPECT_TRUE(r.err.startsWith(c.errorStart))
            << c.args.join(' ').toStdString() << ": " << r.err.toStdString();
        EXPECT_TRUE(r.out.isEmpty()) << c.args.join(' ').toStdString();
    }
    EXPECT_FALSE(QFile::exists(path("missing.kndb")));
    EXPECT_FALSE(QFile::exists(path("p.knv")));
}

TEST_F(CliTest, ProjectNewWritesADefaultDocumentThatShowPrints)
{
    const CliRun made = run({"project", "new", "plant.knv", "--db", "plant.kndb"});
    ASSERT_EQ(made.status, 0) << made.err.toStdString();
    const ProjectFile::Loaded loaded = ProjectFile::load(path("plant.knv"));
    ProjectSettings expected;
    expected.databasePath = path("plant.kndb");
    EXPECT_EQ(loaded.settings, expected);
    EXPECT_FALSE(loaded.chemistryDefaulted);

    const CliRun shown = run({"project", "show", "plant.knv"});
    ASSERT_EQ(shown.status, 0);
    QJsonParseError error;
    const QJsonDocument json = QJsonDocument::fromJson(shown.out.toUtf8(), &error);
    ASSERT_EQ(error.error, QJsonParseError::NoError) << shown.out.toStdString();
    EXPECT_EQ(json.object().value("databasePath").toString(), path("plant.kndb"));

    // An existing project keeps its settings unless --force says otherwise.
    const CliRun again = run({"project", "new", "plant.knv", "--db", "other.kndb"});
    EXPECT_EQ(again.status, 1);
    EXPECT_EQ(again.err, path("plant.knv") + " already exists; add --force to replace it.\n");
    EXPECT_EQ(ProjectFile::load(path("plant.knv")).settings.databasePath, path("plant.kndb"));
    const CliRun forced = run({"project", "new", "--force", "plant.knv", "--db", "other.kndb"});
    EXPECT_EQ(forced.status, 0) << forced.err.toStdString();
    EXPECT_EQ(ProjectFile::load(path("plant.knv")).settings.databasePath, path("other.kndb"));
}

} // namespace
} // namespace kilnova
