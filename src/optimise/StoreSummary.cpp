#include "optimise/StoreSummary.h"

#include "common/MessageTable.h"
#include "common/PrintfFormat.h"

#include <QStringList>

namespace kilnova {

namespace {

QString tonnes(double t)
{
    return formatPrintf("%.2lf", t);
}

} // namespace

QString StoreSummary::describe() const
{
    const QString tableName = Schema::table(table).name;
    QString line = replaced > 0 ? message(Msg::StoredInPlace,
                                          {name, tonnes(tonnage), tableName, QString::number(replaced)})
                                : message(Msg::Stored, {name, tonnes(tonnage), tableName});
    if (subtracted) {
        line += ' ' + message(Msg::StoreSubtracted, {tonnes(tonnesTaken), QString::number(sourcesChanged),
                                                     QString::number(sourcesDeleted)});
    } else {
        line += ' ' + message(Msg::StoreNothingSubtracted);
    }
    QStringList backups;
    for (const auto& [backup, rows] : backupRows) {
        if (rows > 0)
            backups << message(Msg::StoreBackupRows, {QString::number(rows), Schema::table(backup).name});
    }
    if (!backups.isEmpty())
        line += ' ' + message(Msg::StoreBackups, {backups.join(QStringLiteral(", "))});
    else if (subtracted || replaced > 0)
        line += ' ' + message(Msg::StoreNoBackups);
    return line;
}

} // namespace kilnova
