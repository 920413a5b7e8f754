#pragma once

#include "database/ProjectDatabase.h"
#include "project/ProjectFile.h"

#include <QTextStream>

#include <memory>
#include <optional>

namespace kilnova {

/// A project file opened for a command-line job: its settings and its connected database. Opening
/// reports a damaged project or an unreachable database on the error stream and gives nothing.
///
/// A project whose folder was moved or copied may name a database other than the one beside it: the
/// stored one is used, with a warning naming the other, unless --db names the database to use.
struct CliProject {
    QString path;
    ProjectSettings settings;
    std::unique_ptr<ProjectDatabase> db;

    static std::optional<CliProject> open(const QString& path, QTextStream& err);

    /// The database that --db names for this run, used in place of the stored one; the project file
    /// is not changed by it.
    static void setDatabaseOption(const std::optional<QString>& path);
    static const std::optional<QString>& databaseOption();
};

} // namespace kilnova
