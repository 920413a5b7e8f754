#pragma once

#include "database/ProjectDatabase.h"
#include "project/ProjectFile.h"

#include <QTextStream>

#include <memory>
#include <optional>

namespace kilnova {

/// A project file opened for a command-line job: its settings and its connected database. Opening
/// reports a damaged project or an unreachable database on the error stream and gives nothing.
struct CliProject {
    QString path;
    ProjectSettings settings;
    std::unique_ptr<ProjectDatabase> db;

    static std::optional<CliProject> open(const QString& path, QTextStream& err);
};

} // namespace kilnova
