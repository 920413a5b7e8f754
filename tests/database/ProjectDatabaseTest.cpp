#include "database/ProjectDatabase.h"
#include "common/MessageTable.h"
#include "database/DatabaseError.h"
#include "database/RecordTable.h"
#include "database/Transaction.h"

#include <QDir>
#include <QFile>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

#include <functional>

namespace kilnova {
namespace {

class ProjectDatabaseTest : public testing::Test {
protected:
    // Locks are taken on purpose here: waiting the user's few seconds for them proves nothing more.
    void SetUp() override { ProjectDatabase::setBusyTimeoutMs(100); }
    void TearDown() override { ProjectDatabase::setBusyTimeoutMs(5000); }

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

TEST_F(ProjectDatabaseTest, LockedOrDamagedDatabasesAreNamedInTheMessage)
{
    ProjectDatabase::setBusyTimeoutMs(5000);
    {
        auto db = ProjectDatabase::create(path("p.kndb"));
        QSqlQuery timeout = db->exec("PRAGMA busy_timeout");
        ASSERT_TRUE(timeout.next());
        EXPECT_EQ(timeout.value(0).toInt(), 5000) << "a second writer waits a few seconds for the first";
    }
    ProjectDatabase::setBusyTimeoutMs(100);
    QFile real(path("p.kndb"));
    ASSERT_TRUE(real.open(QIODevice::ReadOnly));
    const QByteArray bytes = real.readAll();
    write("garbage.kndb", QByteArray(8192, 'x'));
    write("truncated.kndb", bytes.left(bytes.size() / 2));

    QSqlDatabase other = QSqlDatabase::addDatabase("QSQLITE", "holder");
    other.setDatabaseName(path("p.kndb"));
    ASSERT_TRUE(other.open());
    QSqlQuery lock(other);
    ASSERT_TRUE(lock.exec("BEGIN EXCLUSIVE"));

    auto shown = [this](const char* name) {
        return QDir::toNativeSeparators(path(name));
    };
    struct Case {
        const char* file;
        QString message;
    };
    const Case cases[] = {
        {"p.kndb", message(Msg::DatabaseInUse, {shown("p.kndb")})},
        {"garbage.kndb", message(Msg::DatabaseDamaged, {shown("garbage.kndb"), "file is not a database"})},
        {"truncated.kndb",
         message(Msg::DatabaseDamaged, {shown("truncated.kndb"), "database disk image is malformed"})},
    };
    for (const Case& c : cases) {
        try {
            ProjectDatabase::open(path(c.file));
            ADD_FAILURE() << c.file << " was opened";
        } catch (const DatabaseError& e) {
            EXPECT_EQ(e.message(), c.message) << c.file;
        }
    }
    lock.exec("ROLLBACK");
    lock = QSqlQuery();
    other.close();
    other = QSqlDatabase();
    QSqlDatabase::removeDatabase("holder");
}

TEST_F(ProjectDatabaseTest, AWriteIntoAFileDeletedOrReplacedMeanwhileIsNeverASuccess)
{
    struct Case {
        const char* what;
        std::function<void(const QString&)> change;
        Msg message;
    };
    const Case cases[] = {
        {"deleted", [](const QString& file) { QFile::remove(file); }, Msg::DatabaseFileGone},
        {"replaced",
         [](const QString& file) {
             QFile::copy(file, file + ".copy");
             QFile::remove(file);
             QFile::rename(file + ".copy", file);
         },
         Msg::DatabaseFileReplaced},
    };
    for (const Case& c : cases) {
        const QString file = path(QStringLiteral("%1.kndb").arg(c.what));
        auto db = ProjectDatabase::create(file);
        Transaction transaction(*db);
        Record b(Table::Blast);
        b.setValue("Name", "B1");
        RecordTable(*db, Table::Blast).add(b);
        c.change(file);
        try {
            transaction.commit();
            ADD_FAILURE() << c.what << ": committed";
        } catch (const DatabaseError& e) {
            EXPECT_EQ(e.message(), message(c.message, {QDir::toNativeSeparators(file)})) << c.what;
        }
        EXPECT_TRUE(db->missingFileMessage()) << c.what;
    }
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
