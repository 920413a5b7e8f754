#pragma once

#include "database/Schema.h"

#include <QSqlDatabase>
#include <QString>
#include <QVariantList>

#include <memory>

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

    ~ProjectDatabase();
    ProjectDatabase(const ProjectDatabase&) = delete;
    ProjectDatabase& operator=(const ProjectDatabase&) = delete;

    const QString& path() const { return mPath; }
    QSqlDatabase& connection() { return mDb; }

    /// Runs one statement with bound values; returns the active query for reading. Throws DatabaseError.
    QSqlQuery exec(const QString& sql, const QVariantList& values = {});

    /// Number of records of a table.
    long count(Table table);

private:
    ProjectDatabase(QString path, QSqlDatabase db);
    static QSqlDatabase connect(const QString& path);

    QString mPath;
    QSqlDatabase mDb;
};

} // namespace kilnova
