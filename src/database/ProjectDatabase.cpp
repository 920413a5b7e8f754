#include "database/ProjectDatabase.h"

#include "common/MessageTable.h"
#include "database/DatabaseError.h"
#include "database/Transaction.h"

#include <QAtomicInt>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryFile>

#include <sys/stat.h>

#include <atomic>

namespace kilnova {

namespace {

QString nextConnectionName()
{
    static QAtomicInt counter;
    return QStringLiteral("kilnova-%1").arg(counter.fetchAndAddRelaxed(1));
}

QString engineText(const QSqlError& error)
{
    QString text = error.databaseText();
    if (text.isEmpty())
        text = error.driverText();
    return text;
}

/// The engine's result codes, as the driver reports them, for the failures a user must hear about
/// in words of their own.
constexpr int kBusy = 5;
constexpr int kLocked = 6;
constexpr int kCorrupt = 11;
constexpr int kNotADatabase = 26;

std::atomic<int> busyTimeout{5000};

QString describeFor(const QString& path, const QSqlError& error)
{
    const int code = error.nativeErrorCode().toInt();
    const QString file = QDir::toNativeSeparators(path);
    if (code == kBusy || code == kLocked)
        return message(Msg::DatabaseInUse, {file});
    if (code == kCorrupt || code == kNotADatabase)
        return message(Msg::DatabaseDamaged, {file, engineText(error)});
    return engineText(error);
}

/// The tables a file must hold to be taken for a project database.
void checkSchema(ProjectDatabase& db)
{
    QSqlQuery query = db.exec(QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table'"));
    QStringList present;
    while (query.next())
        present << query.value(0).toString();
    for (const TableDef& t : Schema::tables()) {
        if (!present.contains(t.name, Qt::CaseInsensitive))
            throw DatabaseError(
                QStringLiteral("%1 is not a Kilnova project database (it has no table \"%2\").")
                    .arg(QDir::toNativeSeparators(db.path()), t.name));
    }
}

} // namespace

ProjectDatabase::ProjectDatabase(QString path, QSqlDatabase db)
    : mPath(std::move(path))
    , mIdentity(identityOf(mPath))
    , mDb(std::move(db))
{
}

std::optional<ProjectDatabase::FileIdentity> ProjectDatabase::identityOf(const QString& path)
{
    struct stat info;
    if (::stat(QFile::encodeName(path).constData(), &info) != 0)
        return std::nullopt;
    return FileIdentity{static_cast<quint64>(info.st_dev), static_cast<quint64>(info.st_ino)};
}

int ProjectDatabase::busyTimeoutMs()
{
    return busyTimeout.load();
}

void ProjectDatabase::setBusyTimeoutMs(int milliseconds)
{
    busyTimeout.store(milliseconds);
}

QString ProjectDatabase::describe(const QSqlError& error) const
{
    return describeFor(mPath, error);
}

ProjectDatabase::~ProjectDatabase()
{
    mPrepared.clear();
    const QString name = mDb.connectionName();
    mDb.close();
    mDb = QSqlDatabase();
    QSqlDatabase::removeDatabase(name);
}

QString ProjectDatabase::engineVersion()
{
    QString version;
    const QString name = nextConnectionName();
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(QStringLiteral(":memory:"));
        if (db.open()) {
            QSqlQuery query(db);
            if (query.exec(QStringLiteral("SELECT sqlite_version()")) && query.next())
                version = query.value(0).toString();
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
    return version;
}

QSqlDatabase ProjectDatabase::connect(const QString& path)
{
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), nextConnectionName());
    db.setDatabaseName(path);
    db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(busyTimeoutMs()));
    if (!db.open()) {
        const QString reason = describeFor(path, db.lastError());
        const QString name = db.connectionName();
        db = QSqlDatabase();
        QSqlDatabase::removeDatabase(name);
        throw DatabaseError(QStringLiteral("The database %1 cannot be opened: %2")
                                .arg(QDir::toNativeSeparators(path), reason));
    }
    return db;
}

std::unique_ptr<ProjectDatabase> ProjectDatabase::create(const QString& path)
{
    const QFileInfo target(path);
    if (target.fileName().isEmpty())
        throw DatabaseError(QStringLiteral("No database file name was given."));
    if (!target.dir().exists())
        throw DatabaseError(
            QStringLiteral("The folder %1 does not exist.").arg(QDir::toNativeSeparators(target.path())));
    if (target.exists() && !target.isWritable())
        throw DatabaseError(QStringLiteral("%1 is read-only.").arg(QDir::toNativeSeparators(path)));

    // Build the new database beside the target and put it in place only once it is complete, so a
    // failure never costs the user the file that was there. The name is a fresh one, so no file of
    // the user's is taken for a leftover.
    QString building;
    {
        QTemporaryFile reserved(path + QStringLiteral(".XXXXXX.new"));
        reserved.setAutoRemove(false);
        if (!reserved.open())
            throw DatabaseError(QStringLiteral("The database cannot be written as %1: %2")
                                    .arg(QDir::toNativeSeparators(path), reserved.errorString()));
        building = reserved.fileName();
    }
    try {
        std::unique_ptr<ProjectDatabase> db(new ProjectDatabase(building, connect(building)));
        db->exec(QStringLiteral("PRAGMA foreign_keys = ON"));
        Transaction transaction(*db);
        for (const QString& statement : Schema::creationStatements())
            db->exec(statement);
        transaction.commit();
    } catch (...) {
        // The connection is closed by now, so the half-built file can go.
        QFile::remove(building);
        throw;
    }
    if (QFile::exists(path) && !QFile::remove(path)) {
        QFile::remove(building);
        throw DatabaseError(QStringLiteral("%1 cannot be replaced.").arg(QDir::toNativeSeparators(path)));
    }
    if (!QFile::rename(building, path)) {
        QFile::remove(building);
        throw DatabaseError(
            QStringLiteral("The database cannot be written as %1.").arg(QDir::toNativeSeparators(path)));
    }
    return open(path);
}

std::unique_ptr<ProjectDatabase> ProjectDatabase::open(const QString& path)
{
    const QFileInfo file(path);
    if (path.isEmpty() || !file.exists() || !file.isFile())
        throw DatabaseError(
            QStringLiteral("The database file %1 does not exist.").arg(QDir::toNativeSeparators(path)));
    if (!file.isReadable() || !file.isWritable())
        throw DatabaseError(
            QStringLiteral("The database file %1 is read-only.").arg(QDir::toNativeSeparators(path)));

    // The driver would create a missing file; the checks above make sure there is one.
    std::unique_ptr<ProjectDatabase> db(
        new ProjectDatabase(file.absoluteFilePath(), connect(file.absoluteFilePath())));
    db->exec(QStringLiteral("PRAGMA foreign_keys = ON"));
    checkSchema(*db);
    // Reading is not enough to notice another program's write lock; a project we cannot write to
    // must not look connected.
    db->exec(QStringLiteral("BEGIN IMMEDIATE"));
    db->exec(QStringLiteral("ROLLBACK"));
    return db;
}

QSqlQuery ProjectDatabase::exec(const QString& sql, const QVariantList& values)
{
    QSqlQuery query(mDb);
    query.setForwardOnly(true);
    if (!query.prepare(sql))
        throw DatabaseError(describe(query.lastError()));
    for (const QVariant& value : values)
        query.addBindValue(value);
    if (!query.exec())
        throw DatabaseError(describe(query.lastError()));
    return query;
}

void ProjectDatabase::forEachRow(const QString& sql, const QVariantList& values,
                                 const std::function<void(const QSqlQuery&)>& row)
{
    std::unique_ptr<QSqlQuery>& query = mPrepared[sql];
    if (!query) {
        query = std::make_unique<QSqlQuery>(mDb);
        query->setForwardOnly(true);
        if (!query->prepare(sql)) {
            const QString error = describe(query->lastError());
            mPrepared.erase(sql);
            throw DatabaseError(error);
        }
    }
    for (qsizetype i = 0; i < values.size(); ++i)
        query->bindValue(static_cast<int>(i), values[i]);
    if (!query->exec()) {
        const QString error = describe(query->lastError());
        query->finish();
        throw DatabaseError(error);
    }
    while (query->next())
        row(*query);
    query->finish();
}

long ProjectDatabase::count(Table table)
{
    QSqlQuery query =
        exec(QStringLiteral("SELECT COUNT(*) FROM %1").arg(Schema::quoted(Schema::table(table).name)));
    return query.next() ? query.value(0).toLongLong() : 0;
}

std::optional<QString> ProjectDatabase::missingFileMessage() const
{
    const std::optional<FileIdentity> now = identityOf(mPath);
    if (!now)
        return message(Msg::DatabaseFileGone, {QDir::toNativeSeparators(mPath)});
    if (mIdentity && *now != *mIdentity)
        return message(Msg::DatabaseFileReplaced, {QDir::toNativeSeparators(mPath)});
    return std::nullopt;
}

} // namespace kilnova
