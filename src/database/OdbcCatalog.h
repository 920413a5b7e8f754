#pragma once

#include <QSqlDatabase>
#include <QString>
#include <QStringList>

namespace kilnova {

/// What the ODBC driver manager (unixODBC) can tell beyond Qt's driver: the data sources it knows,
/// and the name of the database an open connection reached.
class OdbcCatalog final {
public:
    OdbcCatalog() = delete;

    /// The names of the user and system data sources, in the driver manager's order; empty when there
    /// are none or the driver manager cannot be asked.
    static QStringList dataSources();
    /// The database an open QODBC connection works on, as its driver names it; empty when the driver
    /// does not say.
    static QString databaseName(const QSqlDatabase& connection);
};

} // namespace kilnova
