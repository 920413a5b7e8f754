#include "database/ExternalStockpiles.h"

#include "common/MessageTable.h"
#include "database/ExternalSourceError.h"
#include "database/OdbcCatalog.h"

#include <QAtomicInt>
#include <QLocale>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include <cmath>
#include <limits>

namespace kilnova {

namespace {

const char* const kColumns[] = {"Titration", "SiO2", "Al2O3", "Fe2O3", "CaO",  "MgO",        "LOI",
                                "SO3",       "K2O",  "Na2O",  "TiO2",  "P2O5", "MS",         "MA",
                                "LSF",       "C3S",  "C2S",   "C3A",   "NaEq", "CostFactor", "C4AF"};
static_assert(std::size(kColumns) == ExternalStockpiles::kValueCount);

bool isKeyword(const QString& connection, QLatin1StringView keyword)
{
    return connection.contains(keyword, Qt::CaseInsensitive);
}

QString errorText(const QSqlError& error)
{
    return error.databaseText().isEmpty() ? error.text() : error.databaseText();
}

} // namespace

QString ExternalStockpiles::driverConnection(const QString& connection)
{
    const QString text = connection.trimmed();
    // Qt's driver passes on a string holding DRIVER= or SERVER= and puts "DSN=" before anything else:
    // a "DSN=name;..." string loses its own "DSN=" so that it does not get two.
    if (text.startsWith(QLatin1String("DSN="), Qt::CaseInsensitive) &&
        !isKeyword(text, QLatin1String("DRIVER=")) && !isKeyword(text, QLatin1String("SERVER=")))
        return text.mid(4);
    return text;
}

ExternalStockpiles::ExternalStockpiles(const QString& connection)
{
    static QAtomicInt counter;
    mName = QStringLiteral("kilnova-external-%1").arg(counter.fetchAndAddRelaxed(1));
    const QString driver = driverConnection(connection);
    const bool namedSource = !driver.contains(u'=') && !driver.contains(u';');
    mConnectString = QStringLiteral("ODBC;") + (namedSource ? QStringLiteral("DSN=") + driver : driver);
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QODBC"), mName);
        db.setDatabaseName(driver);
        db.setConnectOptions(QStringLiteral("SQL_ATTR_ACCESS_MODE=SQL_MODE_READ_ONLY"));
        if (driver.isEmpty() || !db.isValid() || !db.open()) {
            const QString why =
                driver.isEmpty() ? message(Msg::NoValidDataSource) : errorText(db.lastError());
            db = QSqlDatabase();
            QSqlDatabase::removeDatabase(mName);
            throw ExternalSourceError(message(Msg::ExternalCannotOpen, {connection.trimmed(), why}));
        }
        mDatabaseName = OdbcCatalog::databaseName(db);
    }
    if (mDatabaseName.isEmpty())
        mDatabaseName = namedSource ? driver : connection.trimmed();
}

ExternalStockpiles::~ExternalStockpiles()
{
    {
        QSqlDatabase db = QSqlDatabase::database(mName, false);
        db.close();
    }
    QSqlDatabase::removeDatabase(mName);
}

ExternalStockpiles::Row ExternalStockpiles::rowFrom(const std::vector<QVariant>& values)
{
    auto at = [&](std::size_t column) {
        return column < values.size() ? values[column] : QVariant();
    };
    Row row;
    row.name = at(0).toString();
    row.source = at(1).toString();
    auto number = [&](std::size_t column, const char* name, double limit) {
        const QVariant v = at(column);
        if (v.isNull())
            return -1.0;
        bool ok = false;
        const double d = v.typeId() == QMetaType::QString ? QLocale::c().toDouble(v.toString().trimmed(), &ok)
                                                          : v.toDouble(&ok);
        // "nan", "inf" and numbers the analysis cannot keep would be stored as values no formula
        // copes with (and narrowing them to the analysis is undefined).
        if (!ok || std::isnan(d))
            throw ExternalSourceError(
                message(Msg::ExternalNotANumber, {row.name, v.toString(), QString::fromLatin1(name)}));
        if (std::abs(d) > limit)
            throw ExternalSourceError(
                message(Msg::ExternalOutOfRange,
                        {row.name, v.toString(), QString::fromLatin1(name), QString::number(limit, 'g', 9)}));
        return d;
    };
    row.quantity = number(2, "Quantity", std::numeric_limits<double>::max());
    for (std::size_t i = 0; i < row.values.size(); ++i)
        row.values[i] = number(3 + i, kColumns[i], std::numeric_limits<float>::max());
    return row;
}

std::vector<ExternalStockpiles::Row> ExternalStockpiles::readActual() const
{
    QSqlQuery query(QSqlDatabase::database(mName, false));
    query.setForwardOnly(true);
    // Numbers as the source writes them, so that text in a number column is seen, not read as 0.
    query.setNumericalPrecisionPolicy(QSql::HighPrecision);
    if (!query.exec(QStringLiteral(
            "select Name, "
            "Source,Quantity,Titration,SiO2,Al2O3,Fe2O3,CaO,MgO,LOI,SO3,K2O,Na2O,TiO2,P2O5,MS,MA,LSF,"
            "C3S,C2S,C3A,NaEq,CostFactor,C4AF from stkpiles where (Name = 'Actual 1' or Name='Actual 2' or "
            "Name='Actual 3' or Name='Actual 4');")))
        throw ExternalSourceError(
            message(Msg::ExternalCannotRead, {mDatabaseName, errorText(query.lastError())}));

    std::vector<Row> rows;
    std::vector<QVariant> values(3 + kValueCount);
    while (query.next()) {
        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] = query.value(static_cast<int>(i));
        rows.push_back(rowFrom(values));
    }
    if (query.lastError().isValid())
        throw ExternalSourceError(
            message(Msg::ExternalCannotRead, {mDatabaseName, errorText(query.lastError())}));
    return rows;
}

} // namespace kilnova
