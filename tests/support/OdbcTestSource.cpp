#include "support/OdbcTestSource.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTextStream>

#include <gtest/gtest.h>

namespace kilnova::test {

namespace {

QTemporaryDir& folder()
{
    static QTemporaryDir dir;
    return dir;
}

bool writeFile(const QString& path, const QString& text)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    QTextStream(&file) << text;
    return true;
}

} // namespace

bool OdbcTestSource::setUp()
{
    static const bool ready = [] {
        const QString driver = QStringLiteral(KILNOVA_SQLITE_ODBC_DRIVER);
        if (!QFileInfo::exists(driver) || !folder().isValid())
            return false;
        const QString dir = folder().path();
        const bool written =
            writeFile(dir + "/odbcinst.ini",
                      QStringLiteral("[%1]\nDescription=SQLite 3 for the tests\nDriver=%2\n")
                          .arg(QLatin1String(kDriver), driver)) &&
            writeFile(dir + "/odbc.ini",
                      QStringLiteral("[%1]\nDriver=%2\nDatabase=%3\n\n[%4]\nDriver=%2\nDatabase=%5\n")
                          .arg(QLatin1String(kPlant), QLatin1String(kDriver), plantPath(),
                               QLatin1String(kBroken), dir + "/no such folder/plant.db"));
        qputenv("ODBCSYSINI", QFile::encodeName(dir));
        qputenv("ODBCINI", QFile::encodeName(dir + "/odbc.ini"));
        return written;
    }();
    if (!ready)
        ADD_FAILURE() << "the SQLite ODBC driver " KILNOVA_SQLITE_ODBC_DRIVER
                         " is missing: run scripts/install-deps";
    return ready;
}

QString OdbcTestSource::plantPath()
{
    return folder().filePath(QStringLiteral("plant.db"));
}

void OdbcTestSource::writePlant(const QStringList& statements)
{
    QFile::remove(plantPath());
    const QString name = QStringLiteral("kilnova-test-plant");
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(plantPath());
        ASSERT_TRUE(db.open()) << db.lastError().text().toStdString();
        for (const QString& sql : statements) {
            QSqlQuery q(db);
            ASSERT_TRUE(q.exec(sql)) << sql.toStdString() << ": " << q.lastError().text().toStdString();
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
}

QString OdbcTestSource::standardTable()
{
    return QStringLiteral(
        "CREATE TABLE stkpiles (Name TEXT, Source TEXT, Quantity DOUBLE, Titration REAL, SiO2 REAL, Al2O3 "
        "REAL, "
        "Fe2O3 REAL, CaO REAL, MgO REAL, LOI REAL, SO3 REAL, K2O REAL, Na2O REAL, TiO2 REAL, P2O5 REAL, MS "
        "REAL, "
        "MA REAL, LSF REAL, C3S REAL, C2S REAL, C3A REAL, NaEq REAL, CostFactor REAL, C4AF REAL, Cl REAL)");
}

} // namespace kilnova::test
