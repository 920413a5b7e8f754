#include "database/BackupRestore.h"
#include "database/ProjectDatabase.h"
#include "database/RecordTable.h"
#include "database/Transaction.h"
#include "optimise/SourceUpdate.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <functional>
#include <random>

namespace kilnova {
namespace {

constexpr int kBlasts = 300;
constexpr int kKills = 6;

/// Kills a command at random moments while it writes, then checks that the database is sound and
/// holds the command's work completely or not at all.
class CrashSafetyTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(mDir.isValid()); }

    QString path(const QString& name) const { return mDir.filePath(name); }

    /// Blasts B0000... of 100 t each, with their deviations.
    void addBlasts(ProjectDatabase& db)
    {
        Transaction transaction(db);
        RecordTable blasts(db, Table::Blast);
        RecordTable deviations(db, Table::StdBlast);
        for (int i = 0; i < kBlasts; ++i) {
            Record b(Table::Blast);
            b.setValue("Name", QStringLiteral("B%1").arg(i, 4, 10, QLatin1Char('0')));
            b.setValue("Quantity", 100.0);
            b.setValue("SiO2", 12.5);
            blasts.add(b);
            Record d(Table::StdBlast);
            d.setValue("Name", b.name());
            deviations.add(d);
        }
        transaction.commit();
    }

    /// Runs the worker on a copy of `original`, killed after `delayMs` from its "begin" (never when
    /// negative); returns the copy's path and the time from "begin" to the worker's end.
    std::pair<QString, qint64> runWorker(const QString& original, const QStringList& args, int delayMs,
                                         int run)
    {
        const QString copy = path(QStringLiteral("run%1.kndb").arg(run));
        EXPECT_TRUE(QFile::copy(original, copy));
        QProcess worker;
        QStringList all = args;
        all.insert(1, copy);
        worker.start(QStringLiteral(KILNOVA_CRASH_WORKER), all);
        EXPECT_TRUE(worker.waitForStarted());
        while (!worker.canReadLine() && worker.waitForReadyRead(30000)) {
        }
        EXPECT_EQ(worker.readLine().trimmed(), "begin") << worker.readAllStandardError().toStdString();
        QElapsedTimer timer;
        timer.start();
        if (delayMs >= 0) {
            QThread::msleep(static_cast<unsigned long>(delayMs));
            worker.kill();
        }
        EXPECT_TRUE(worker.waitForFinished(60000));
        if (delayMs < 0) {
            EXPECT_EQ(worker.exitCode(), 0) << worker.readAllStandardError().toStdString();
        }
        return {copy, timer.elapsed()};
    }

    /// The database after a kill: the engine finds it sound, and `check` finds the command's work
    /// whole or absent (it returns true when whole).
    void expectAllOrNothing(const QString& original, const QStringList& args,
                            const std::function<bool(ProjectDatabase&)>& check)
    {
        // The whole command once, to learn how long it writes.
        const auto [complete, duration] = runWorker(original, args, -1, 0);
        {
            auto db = ProjectDatabase::open(complete);
            ASSERT_TRUE(check(*db)) << "the command's work is there when it is not killed";
        }
        std::mt19937 random(static_cast<unsigned>(args.size() * 7919 + duration));
        std::uniform_int_distribution<int> moment(0, static_cast<int>(duration));
        int whole = 0;
        for (int run = 1; run <= kKills; ++run) {
            const int delay = moment(random);
            const QString killed = runWorker(original, args, delay, run).first;
            auto db = ProjectDatabase::open(killed); // rolls back what the kill left unfinished
            QSqlQuery integrity = db->exec("PRAGMA integrity_check");
            ASSERT_TRUE(integrity.next());
            EXPECT_EQ(integrity.value(0).toString(), "ok") << "killed after " << delay << " ms";
            whole += check(*db) ? 1 : 0;
        }
        std::printf("[          ] %s: %d of %d kills came after the commit\n", qPrintable(args[0]), whole,
                    kKills);
    }

    QTemporaryDir mDir;
};

TEST_F(CrashSafetyTest, AKilledImportKeepsAllItsRecordsOrNone)
{
    ProjectDatabase::create(path("start.kndb"));
    QFile file(path("blasts.rsv"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    for (int i = 0; i < 20 * kBlasts; ++i)
        file.write(
            QStringLiteral(
                "X%1    1000.5  2000.25   310       5000      0         21        5         3         65\n")
                .arg(i, 5, 10, QLatin1Char('0'))
                .toLatin1());
    file.close();
    expectAllOrNothing(path("start.kndb"), {"import", path("blasts.rsv")}, [](ProjectDatabase& db) {
        const long blasts = db.count(Table::Blast);
        EXPECT_TRUE(blasts == 0 || blasts == 20 * kBlasts) << blasts;
        EXPECT_EQ(db.count(Table::StdBlast), blasts);
        return blasts > 0;
    });
}

TEST_F(CrashSafetyTest, AKilledStoreWithSubtractionTakesEveryTonneOrNone)
{
    addBlasts(*ProjectDatabase::create(path("start.kndb")));
    expectAllOrNothing(path("start.kndb"), {"store"}, [](ProjectDatabase& db) {
        const bool stored = RecordTable(db, Table::Stockpile).find({"Crash", " "}).has_value();
        QSqlQuery q = db.exec("SELECT COUNT(*), MIN([Quantity]), MAX([Quantity]) FROM [Blast]");
        EXPECT_TRUE(q.next());
        EXPECT_EQ(q.value(0).toInt(), kBlasts);
        EXPECT_EQ(q.value(1).toDouble(), stored ? 99.0 : 100.0);
        EXPECT_EQ(q.value(2).toDouble(), stored ? 99.0 : 100.0);
        EXPECT_EQ(db.count(Table::BackupBlast), stored ? kBlasts : 0);
        EXPECT_EQ(db.count(Table::BackupStdBlast), stored ? kBlasts : 0);
        return stored;
    });
}

TEST_F(CrashSafetyTest, AKilledRestoreRestoresEveryBackupOrNone)
{
    {
        auto db = ProjectDatabase::create(path("start.kndb"));
        addBlasts(*db);
        std::vector<SourceUpdate::Take> takes;
        for (const Record& blast : RecordTable(*db, Table::Blast).all())
            takes.push_back({Table::Blast, blast.key(), 40.0, 100.0, blast.analysis()});
        SourceUpdate::store(*db, {Table::Stockpile, "Taken", 1.0, {}}, takes, true);
    }
    expectAllOrNothing(path("start.kndb"), {"restore"}, [](ProjectDatabase& db) {
        const bool restored = db.count(Table::BackupBlast) == 0;
        EXPECT_EQ(db.count(Table::BackupBlast), restored ? 0 : kBlasts);
        QSqlQuery q = db.exec("SELECT COUNT(*), MIN([Quantity]), MAX([Quantity]) FROM [Blast]");
        EXPECT_TRUE(q.next());
        EXPECT_EQ(q.value(0).toInt(), kBlasts);
        EXPECT_EQ(q.value(1).toDouble(), restored ? 100.0 : 60.0);
        EXPECT_EQ(q.value(2).toDouble(), restored ? 100.0 : 60.0);
        return restored;
    });
}

} // namespace
} // namespace kilnova
