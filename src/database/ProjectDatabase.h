#pragma once

#include "database/Schema.h"

#include <QSqlDatabase>
#include <QString>
#include <QVariantList>

#include <functional>
#include <map>
#include <memory>
#include <optional>

class QSqlQuery;

namespace kilnova {

/// An open project database: one SQLite file with the Kilnova schema, foreign keys enforced.
/// Closing happens on destruction; copying is not allowed because the object owns the connection.
class ProjectDatabase final {
public:
    /// Builds a new database at path with the whole schema and the four Actual stockpiles. An
    /// existing file of that name is replaced only once the new one is complete. Throws DatabaseError.
    static std::unique_ptr<ProjectDatabase> create(const QString& path);

    /// Opens an existing project database read-write. Refuses a missing, read-only, locked or foreign
    /// file, and a SQLite file without the Kilnova tables. Throws DatabaseError.
    static std::unique_ptr<ProjectDatabase> open(const QString& path);

    /// The version of the SQLite engine that Qt's driver runs in this process, as SQLite reports
    /// it ("3.40.1"), or an empty string when the driver is missing.
    static QString engineVersion();

    ~ProjectDatabase();
    ProjectDatabase(const ProjectDatabase&) = delete;
    ProjectDatabase& operator=(const ProjectDatabase&) = delete;

    const QString& path() const { return mPath; }
    QSqlDatabase& connection() { return mDb; }

    /// Runs one statement with bound values; returns the active query for reading. Throws DatabaseError.
    QSqlQuery exec(const QString& sql, const QVariantList& values = {});

    /// Runs a query through a statement prepared once per connection and hands every row to `row`
    /// before returning. `row` must not run the same statement again. Throws DatabaseError.
    void forEachRow(const QString& sql, const QVariantList& values,
                    const std::function<void(const QSqlQuery&)>& row);

    /// Number of records of a table.
    long count(Table table);

    /// SQLite goes on writing into a file deleted or replaced under it, and the work would be lost
    /// with it: every writing command asks this first, and every transaction before and after it
    /// commits. The message to show once the file at the path is gone or is another file, else
    /// nothing.
    std::optional<QString> missingFileMessage() const;

    /// How long a statement of a connection opened from now on waits for another program's lock
    /// before it gives up (5 s unless changed; tests that lock on purpose shorten it).
    static int busyTimeoutMs();
    static void setBusyTimeoutMs(int milliseconds);

    /// The engine's error in words that name this database: locked by another program, damaged, or
    /// the engine's own text.
    QString describe(const QSqlError& error) const;

private:
    /// The identity of a file (device and inode), to tell it from another file put at the same path.
    struct FileIdentity {
        quint64 device = 0;
        quint64 inode = 0;
        bool operator==(const FileIdentity&) const = default;
    };
    static std::optional<FileIdentity> identityOf(const QString& path);

    ProjectDatabase(QString path, QSqlDatabase db);
    static QSqlDatabase connect(const QString& path);

    QString mPath;
    std::optional<FileIdentity> mIdentity;
    QSqlDatabase mDb;
    /// Statements kept prepared for forEachRow; emptied before the connection closes.
    std::map<QString, std::unique_ptr<QSqlQuery>> mPrepared;
};

} // namespace kilnova
