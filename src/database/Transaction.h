#pragma once

namespace kilnova {

class ProjectDatabase;

/// Everything between construction and commit() happens completely or not at all: a guard that is
/// destroyed without commit() rolls back.
class Transaction final {
public:
    explicit Transaction(ProjectDatabase& db);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    /// Throws DatabaseError when the engine refuses (disk full, locked) or the database file is no
    /// longer the one the project names; the guard then rolls back. Throws DatabaseError too when the
    /// file went in the moment of the commit: what was written is lost with it, never a success.
    void commit();

private:
    ProjectDatabase& mDb;
    bool mOpen = true;
};

} // namespace kilnova
