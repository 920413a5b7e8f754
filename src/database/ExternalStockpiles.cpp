#include "database/ExternalStockpiles.h"

#include "common/MessageTable.h"
#include "database/ExternalSourceError.h"
#include "database/OdbcCatalog.h"

#include <QAtomicInt>
#include <QLocale>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

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
    while (query.next()) {
        Row row;
        row.name = query.value(0).toString();
        row.source = query.value(1).toString();
        auto number = [&](int column, const char* name) {
            const QVariant v = query.value(column);
            if (v.isNull())
                return -1.0;
            bool ok = false;
            const double d = v.typeId() == QMetaType::QString
                                 ? QLocale::c().toDouble(v.toString().trimmed(), &ok)
                                 : v.toDouble(&ok);
            if (!ok)
                throw ExternalSourceError(
                    message(Msg::ExternalNotANumber, {row.name, v.toString(), QString::fromLatin1(name)}));
            return d;
        };
        row.quantity = number(2, "Quantity");
        for (int i = 0; i < kValueCount; ++i)
            row.values[static_cast<std::size_t>(i)] = number(3 + i, kColumns[i]);
        rows.push_back(std::move(row));
    }
    if (query.lastError().isValid())
        throw ExternalSourceError(
            message(Msg::ExternalCannotRead, {mDatabaseName, errorText(query.lastError())}));
    return rows;
}

} // namespace kilnova
