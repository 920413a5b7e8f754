#include "database/Transaction.h"

#include "common/MessageTable.h"
#include "database/DatabaseError.h"
#include "database/ProjectDatabase.h"

#include <QDir>
#include <QSqlQuery>

namespace kilnova {

Transaction::Transaction(ProjectDatabase& db)
    : mDb(db)
{
    // IMMEDIATE takes the write lock now, so a locked database is noticed before anything is done.
    mDb.exec(QStringLiteral("BEGIN IMMEDIATE"));
}

Transaction::~Transaction()
{
    if (!mOpen)
        return;
    try {
        mDb.exec(QStringLiteral("ROLLBACK"));
    } catch (const DatabaseError&) {
        // Nothing more can be done here; SQLite has already rolled back a failed transaction.
    }
}

void Transaction::commit()
{
    // Whatever was written must land in the file the project names: a file deleted or replaced
    // meanwhile would take it along unseen. Before the commit nothing is lost yet.
    if (const std::optional<QString> gone = mDb.missingFileMessage())
        throw DatabaseError(*gone);
    mDb.exec(QStringLiteral("COMMIT"));
    mOpen = false;
    if (mDb.missingFileMessage())
        throw DatabaseError(message(Msg::DatabaseWriteLost, {QDir::toNativeSeparators(mDb.path())}));
}

} // namespace kilnova
