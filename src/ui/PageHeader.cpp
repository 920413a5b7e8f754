#include "ui/PageHeader.h"

#include "project/CKilnovaDoc.h"

#include <QFileInfo>

namespace kilnova {

QString PageHeader::left() const
{
    return QStringLiteral("Project %1   Database %2").arg(project, database);
}

QString PageHeader::right() const
{
    // The same form on every installation, whatever its language.
    return run.isValid() ? QStringLiteral("Run ") + run.toString(QStringLiteral("yyyy-MM-dd HH:mm"))
                         : QString();
}

PageHeader PageHeader::of(const CKilnovaDoc& doc, const QDateTime& run)
{
    return {doc.displayName(), QFileInfo(doc.databasePath()).fileName(), run};
}

} // namespace kilnova
