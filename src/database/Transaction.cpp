#include "database/Transaction.h"

#include "database/DatabaseError.h"
#include "database/ProjectDatabase.h"

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
    mDb.exec(QStringLiteral("COMMIT"));
    mOpen = false;
}

} // namespace kilnova
