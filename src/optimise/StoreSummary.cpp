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
    QStringList sentences;
    bool replacedAny = false;
    for (const Written& r : records) {
        const QString tableName = Schema::table(r.table).name;
        sentences << (r.replaced > 0 ? message(Msg::StoredInPlace, {r.name, tonnes(r.tonnage), tableName,
                                                                    QString::number(r.replaced)})
                                     : message(Msg::Stored, {r.name, tonnes(r.tonnage), tableName}));
        replacedAny = replacedAny || r.replaced > 0;
    }
    QString line = sentences.join(' ');
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
    else if (subtracted || replacedAny)
        line += ' ' + message(Msg::StoreNoBackups);
    return line;
}

} // namespace kilnova
