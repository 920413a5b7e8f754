#include "import/FileFilter.h"

#include <QStringList>

namespace kilnova {

QString FileFilter::fromPairs(const QString& pairs)
{
    const QStringList parts = pairs.split(u'|');
    QStringList filters;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        const QString& description = parts[i];
        if (description.isEmpty())
            break;
        // The dialog reads its patterns from the parentheses, separated by blanks, not semicolons.
        const QString patterns = QString(parts[i + 1]).replace(u';', u' ');
        const QString shown = QStringLiteral("(%1)").arg(patterns);
        filters << (description.contains(shown) ? description : description + u' ' + shown);
    }
    return filters.join(QStringLiteral(";;"));
}

} // namespace kilnova
