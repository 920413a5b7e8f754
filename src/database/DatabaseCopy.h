#pragma once

#include <QString>

namespace kilnova {

class ProjectDatabase;

/// Copies an open project database into a new file, whole and consistent, as a project folder
/// saved elsewhere takes its data with it.
class DatabaseCopy final {
public:
    DatabaseCopy() = delete;

    /// Writes the copy under a temporary name beside target and renames it into place, so a failure
    /// leaves no half-written database. Refuses an existing target. Throws DatabaseError.
    static void copy(ProjectDatabase& db, const QString& target);
};

} // namespace kilnova
