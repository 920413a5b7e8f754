#include "database/DatabaseCopy.h"

#include "database/DatabaseError.h"
#include "database/ProjectDatabase.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlQuery>

namespace kilnova {

void DatabaseCopy::copy(ProjectDatabase& db, const QString& target)
{
    const QString shown = QDir::toNativeSeparators(target);
    if (const auto gone = db.missingFileMessage())
        throw DatabaseError(*gone);
    if (QFileInfo::exists(target))
        throw DatabaseError(QStringLiteral("%1 exists already.").arg(shown));
    if (!QDir().mkpath(QFileInfo(target).absolutePath()))
        throw DatabaseError(QStringLiteral("The folder of %1 cannot be made.").arg(shown));
    const QString part = target + QStringLiteral(".part");
    QFile::remove(part);
    try {
        // One statement reads the database as one transaction sees it and writes a compact copy.
        db.exec(QStringLiteral("VACUUM INTO ?"), {part});
    } catch (const DatabaseError&) {
        QFile::remove(part);
        throw;
    }
    if (!QFile::rename(part, target)) {
        QFile::remove(part);
        throw DatabaseError(QStringLiteral("The copy cannot be written as %1.").arg(shown));
    }
}

} // namespace kilnova
