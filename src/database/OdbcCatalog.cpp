#include "database/OdbcCatalog.h"

#include <QSqlDriver>
#include <QVariant>

#include <sql.h>
#include <sqlext.h>

namespace kilnova {

QStringList OdbcCatalog::dataSources()
{
    QStringList names;
    SQLHENV env = SQL_NULL_HENV;
    if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &env)))
        return names;
    SQLSetEnvAttr(env, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    SQLCHAR name[SQL_MAX_DSN_LENGTH + 1];
    SQLCHAR description[256];
    SQLSMALLINT nameLength = 0, descriptionLength = 0;
    SQLUSMALLINT direction = SQL_FETCH_FIRST;
    while (SQL_SUCCEEDED(SQLDataSources(env, direction, name, sizeof name, &nameLength, description,
                                        sizeof description, &descriptionLength))) {
        names << QString::fromLocal8Bit(reinterpret_cast<const char*>(name));
        direction = SQL_FETCH_NEXT;
    }
    SQLFreeHandle(SQL_HANDLE_ENV, env);
    names.removeDuplicates();
    return names;
}

QString OdbcCatalog::databaseName(const QSqlDatabase& connection)
{
    if (!connection.isOpen() || !connection.driver())
        return {};
    const QVariant handle = connection.driver()->handle();
    if (!handle.isValid() || qstrcmp(handle.typeName(), "void*") != 0)
        return {};
    SQLHDBC hdbc = *static_cast<SQLHDBC const*>(handle.data());
    if (!hdbc)
        return {};
    SQLCHAR buffer[1024];
    SQLSMALLINT length = 0;
    if (!SQL_SUCCEEDED(SQLGetInfo(hdbc, SQL_DATABASE_NAME, buffer, sizeof buffer, &length)))
        return {};
    return QString::fromLocal8Bit(reinterpret_cast<const char*>(buffer));
}

} // namespace kilnova
