#include "import/Workbook.h"

#include "import/CompoundFile.h"
#include "import/CsvWorkbook.h"
#include "import/WorkbookError.h"
#include "import/XlsWorkbook.h"
#include "import/XlsxWorkbook.h"
#include "import/ZipArchive.h"

#include <QFile>
#include <QFileInfo>

namespace kilnova {

std::unique_ptr<Workbook> Workbook::open(const QString& path)
{
    const QFileInfo file(path);
    if (!file.isFile())
        throw WorkbookError(QStringLiteral("there is no such file."));
    const QString suffix = file.suffix().toLower();
    if (suffix == QLatin1String("csv"))
        return std::make_unique<CsvWorkbook>(path);
    if (suffix != QLatin1String("xls") && suffix != QLatin1String("xlsx"))
        throw WorkbookError(
            QStringLiteral("only Excel workbooks (.xls, .xlsx) and comma-separated files (.csv) "
                           "can be imported."));
    // Excel opens a workbook whatever its extension says; so do we, by what the file starts with.
    QFile start(path);
    const QByteArray head = start.open(QIODevice::ReadOnly) ? start.read(8) : QByteArray();
    if (CompoundFile::hasSignature(head))
        return std::make_unique<XlsWorkbook>(path);
    if (ZipArchive::hasSignature(head))
        return std::make_unique<XlsxWorkbook>(path);
    throw WorkbookError(QStringLiteral("it is damaged or not an Excel workbook."));
}

int Workbook::sheetIndex(const QString& name) const
{
    const QStringList names = sheetNames();
    for (int i = 0; i < names.size(); ++i) {
        if (names[i].compare(name, Qt::CaseInsensitive) == 0)
            return i;
    }
    return -1;
}

} // namespace kilnova
