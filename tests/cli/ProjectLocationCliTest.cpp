#include "CliFixture.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

namespace kilnova {
namespace {

/// A project folder "plant" and a copy of it made with the file manager: the copy's project still
/// names the database in "plant".
class ProjectLocationCliTest : public CliFixture {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QDir().mkpath(path("plant")));
        ASSERT_EQ(run({"create", "plant/plant.kndb"}).status, 0);
        ASSERT_EQ(run({"project", "new", "plant/plant.knv", "--db", "plant/plant.kndb"}).status, 0);
        ASSERT_TRUE(QDir().mkpath(path("copy")));
        for (const char* file : {"plant.knv", "plant.kndb"})
            ASSERT_TRUE(
                QFile::copy(path(QStringLiteral("plant/") + file), path(QStringLiteral("copy/") + file)));
        QByteArray line = QByteArray("B1").leftJustified(6) + QByteArray("100").rightJustified(8);
        for (int field = 2; field < 18; ++field)
            line += QByteArray::number(field).rightJustified(10);
        QFile file(path("b.rsv"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(line + '\n');
    }

    long blasts(const QString& db) const { return ProjectDatabase::open(path(db))->count(Table::Blast); }
};

TEST_F(ProjectLocationCliTest, WarnsAndUsesTheStoredDatabaseUnlessDbNamesOne)
{
    const CliRun stored = run({"import", "blasts", "copy/plant.knv", "b.rsv"});
    EXPECT_EQ(stored.status, 0) << stored.err.toStdString();
    EXPECT_EQ(stored.err, "Warning: this project names the database " + path("plant/plant.kndb") +
                              ", outside the project's folder, while a database of the same name lies beside "
                              "the project: " +
                              path("copy/plant.kndb") + ". Add --db " + path("copy/plant.kndb") +
                              " to use that one.\n");
    EXPECT_EQ(blasts("plant/plant.kndb"), 1);
    EXPECT_EQ(blasts("copy/plant.kndb"), 0);

    const CliRun chosen = run({"import", "blasts", "copy/plant.knv", "b.rsv", "--db", "copy/plant.kndb"});
    EXPECT_EQ(chosen.status, 0) << chosen.err.toStdString();
    EXPECT_EQ(chosen.err, "");
    EXPECT_EQ(blasts("copy/plant.kndb"), 1);

    // The original moved away: the stored path is not there and the command says what to do.
    ASSERT_TRUE(QDir(path("plant")).removeRecursively());
    const CliRun moved = run({"import", "blasts", "copy/plant.knv", "b.rsv"});
    EXPECT_EQ(moved.status, 1);
    EXPECT_TRUE(moved.err.startsWith(
        "Warning: this project names the database " + path("plant/plant.kndb") +
        ", which is not there, while a database of the same name lies beside the project: " +
        path("copy/plant.kndb") + ". Add --db " + path("copy/plant.kndb") + " to use that one.\n" +
        "The project database " + path("plant/plant.kndb") +
        " cannot be opened; name the one to use with --db PATH.\n"))
        << moved.err.toStdString();
    EXPECT_EQ(run({"import", "blasts", "copy/plant.knv", "b.rsv", "--db"}).status, 2);
    EXPECT_EQ(blasts("copy/plant.kndb"), 1);
}

} // namespace
} // namespace kilnova
