#include "database/ProjectDatabase.h"
#include "database/DatabaseError.h"
#include "database/RecordTable.h"

#include <QDir>
#include <QFile>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

namespace kilnova {
namespace {

class ProjectDatabaseTest : public testing::Test {
protected:
    QString path(const QString& name) const { return mDir.filePath(name); }
    void write(const QString& name, const QByteArray& bytes)
    {
        QFile f(path(name));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(bytes);
    }
    QTemporaryDir mDir;
};

TEST_F(ProjectDatabaseTest, OpenRefusesWhatIsNotAProjectDatabase)
{
    write("notes.kndb", "These are not the tables you are looking for.\n");
    write("empty.kndb", "");
    {
        QSqlDatabase other = QSqlDatabase::addDatabase("QSQLITE", "foreign");
        other.setDatabaseName(path("foreign.kndb"));
        ASSERT_TRUE(other.open());
        QSqlQuery(other).exec("CREATE TABLE Customers (Name TEXT)");
        other.close();
    }
    QSqlDatabase::removeDatabase("foreign");

    for (const char* name : {"missing.kndb", "notes.kndb", "empty.kndb", "foreign.kndb"}) {
        EXPECT_THROW(ProjectDatabase::open(path(name)), DatabaseError) << name;
    }
    EXPECT_FALSE(QFile::exists(path("missing.kndb"))) << "opening must never create a file";
}

TEST_F(ProjectDatabaseTest, CreateReplacesAnExistingFileWithAFreshDatabase)
{
    write("p.kndb.new", "a file of the user's that only looks like a leftover");
    {
        auto db = ProjectDatabase::create(path("p.kndb"));
        Record b(Table::Blast);
        b.setValue("Name", "B1");
        RecordTable(*db, Table::Blast).add(b);
    }
    auto db = ProjectDatabase::create(path("p.kndb"));
    EXPECT_EQ(db->count(Table::Blast), 0);
    EXPECT_EQ(db->count(Table::Stockpile), 4);
    EXPECT_EQ(QDir(mDir.path()).entryList(QDir::Files), QStringList({"p.kndb", "p.kndb.new"}))
        << "nothing left behind, nothing of the user's taken";
    QFile user(path("p.kndb.new"));
    ASSERT_TRUE(user.open(QIODevice::ReadOnly));
    EXPECT_EQ(user.readAll(), "a file of the user's that only looks like a leftover");
}

TEST_F(ProjectDatabaseTest, CreateInAMissingFolderFailsAndWritesNothing)
{
    EXPECT_THROW(ProjectDatabase::create(path("no/such/folder/p.kndb")), DatabaseError);
    EXPECT_FALSE(QFile::exists(path("no")));
}

TEST_F(ProjectDatabaseTest, LockedDatabaseIsRefusedAtOpenAndWritesFailCleanly)
{
    auto db = ProjectDatabase::create(path("p.kndb"));
    QSqlDatabase other = QSqlDatabase::addDatabase("QSQLITE", "locker");
    other.setDatabaseName(path("p.kndb"));
    other.setConnectOptions("QSQLITE_BUSY_TIMEOUT=0");
    ASSERT_TRUE(other.open());
    {
        QSqlQuery lock(other);
        ASSERT_TRUE(lock.exec("BEGIN EXCLUSIVE"));
        EXPECT_THROW(ProjectDatabase::open(path("p.kndb")), DatabaseError);
        Record b(Table::Blast);
        b.setValue("Name", "B1");
        EXPECT_THROW(RecordTable(*db, Table::Blast).add(b), DatabaseError);
        ASSERT_TRUE(lock.exec("ROLLBACK"));
    }
    other.close();
    other = QSqlDatabase();
    QSqlDatabase::removeDatabase("locker");
    EXPECT_EQ(db->count(Table::Blast), 0);
}

TEST_F(ProjectDatabaseTest, ReadOnlyFileIsRefused)
{
    if (geteuid() == 0)
        GTEST_SKIP() << "root may write to any file, so a read-only file cannot be made here";
    ProjectDatabase::create(path("p.kndb"));
    ASSERT_TRUE(QFile::setPermissions(path("p.kndb"), QFile::ReadOwner));
    EXPECT_THROW(ProjectDatabase::open(path("p.kndb")), DatabaseError);
}

} // namespace
} // namespace kilnova
