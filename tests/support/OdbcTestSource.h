#pragma once

#include <QString>

namespace kilnova::test {

/// A plant database reached through the real SQLite ODBC driver, registered for this test process
/// alone: an odbcinst.ini and an odbc.ini in a temporary folder, named by ODBCSYSINI and ODBCINI
/// before the driver manager is first asked anything (it keeps those paths for the process).
///
/// Data sources: kPlant (the file plantPath(), written by writePlant), kBroken (a file in a folder
/// that does not exist, so the driver refuses the connection). kNowhere is registered nowhere.
class OdbcTestSource final {
public:
    static constexpr const char* kPlant = "Kilnova Plant";
    static constexpr const char* kBroken = "Kilnova Broken";
    static constexpr const char* kNowhere = "Kilnova Nowhere";
    static constexpr const char* kDriver = "Kilnova SQLite test";

    /// Registers the driver and the data sources once per process; false (with a test failure
    /// added) when the driver is not installed.
    static bool setUp();
    static QString plantPath();

    /// Replaces the plant database with one that runs the given SQL statements (a stkpiles table and
    /// its rows, or whatever a case needs).
    static void writePlant(const QStringList& statements);
    /// The standard stkpiles table, every column the refresh reads (and Cl, which it does not).
    static QString standardTable();
};

} // namespace kilnova::test
