#include "project/ProgramInfo.h"

#include "common/KilnovaVersion.h"
#include "database/ProjectDatabase.h"

#include <QtGlobal>

namespace kilnova {

QString ProgramInfo::version()
{
    return QString::fromLatin1(kKilnovaVersion);
}

QString ProgramInfo::licence()
{
    return QString::fromLatin1(kKilnovaLicence);
}

QString ProgramInfo::licenceName()
{
    return QString::fromLatin1(kKilnovaLicenceName);
}

QString ProgramInfo::copyright()
{
    return QString::fromUtf8(kKilnovaCopyright);
}

QString ProgramInfo::qtVersion()
{
    return QString::fromLatin1(qVersion());
}

QString ProgramInfo::sqliteVersion()
{
    const QString engine = ProjectDatabase::engineVersion();
    return engine.isEmpty() ? QStringLiteral("not available") : engine;
}

QString ProgramInfo::versionText(const QString& program)
{
    return QStringLiteral("%1 %2\n"
                          "Qt %3, SQLite %4\n"
                          "Copyright (C) %5\n"
                          "Licence: %6 (%7).\n"
                          "There is NO WARRANTY, to the extent permitted by law.\n")
        .arg(program, version(), qtVersion(), sqliteVersion(), copyright(), licenceName(), licence());
}

} // namespace kilnova
