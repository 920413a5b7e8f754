#pragma once

#include <QString>
#include <QVariant>

#include <array>
#include <vector>

namespace kilnova {

/// The stockpile table ("stkpiles") of another plant database, reached read-only through an ODBC data
/// source (Qt's ODBC driver over unixODBC). Only SELECT statements are ever sent to it; the
/// connection also asks the driver for read-only access, which drivers may or may not enforce.
class ExternalStockpiles final {
public:
    /// The columns read after Name, Source and Quantity: Titration to C4AF in the table's order.
    static constexpr int kValueCount = 21;

    /// One Actual stockpile as stkpiles holds it; a value the source leaves empty is -1.
    struct Row {
        QString name;
        QString source;
        double quantity = 0.0;
        std::array<double, kValueCount> values{};
    };

    /// `connection` is the name of a data source the driver manager knows, or a connection string
    /// ("DRIVER={...};DATABASE=...", "DSN=name;..."). Throws ExternalSourceError when it cannot be opened.
    explicit ExternalStockpiles(const QString& connection);
    ~ExternalStockpiles();
    ExternalStockpiles(const ExternalStockpiles&) = delete;
    ExternalStockpiles& operator=(const ExternalStockpiles&) = delete;

    /// The database the source reached, as its driver names it (else the data source's name).
    const QString& databaseName() const { return mDatabaseName; }
    /// "ODBC;DSN=name" or "ODBC;" and the connection string, as the user is shown it.
    const QString& connectString() const { return mConnectString; }

    /// The rows of Actual 1 to Actual 4, in the order the source gives them. Throws
    /// ExternalSourceError for a missing table or column, or text where a number belongs.
    std::vector<Row> readActual() const;

    /// One row as the source gave it, Name to C4AF in the order the query names them (a column
    /// beyond the values given reads as empty). Text is read in the C locale; a value that is not a
    /// finite number, or an analysis value beyond what the analysis keeps, throws ExternalSourceError.
    static Row rowFrom(const std::vector<QVariant>& values);

    /// What Qt's ODBC driver is to be given for a chosen connection: a data source's bare name, or a
    /// connection string it passes on as it stands.
    static QString driverConnection(const QString& connection);

private:
    QString mName;
    QString mDatabaseName;
    QString mConnectString;
};

} // namespace kilnova
