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
    const QFileInfo info(path);
    if (!info.isFile())
        throw WorkbookError(QStringLiteral("there is no such file."));
    const QString suffix = info.suffix().toLower();
    const bool csv = suffix == QLatin1String("csv");
    if (!csv && suffix != QLatin1String("xls") && suffix != QLatin1String("xlsx"))
        throw WorkbookError(
            QStringLiteral("only Excel workbooks (.xls, .xlsx) and comma-separated files (.csv) "
                           "can be imported."));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw WorkbookError(file.errorString());
    if (file.size() > kMaxFileSize)
        throw WorkbookError(QStringLiteral("it is larger than %1 MB, more than a workbook of records holds.")
                                .arg(kMaxFileSize / (1024 * 1024)));
    QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        throw WorkbookError(file.errorString());
    if (csv)
        return fromBytes(std::move(bytes), Format::Csv, info.completeBaseName());
    // Excel opens a workbook whatever its extension says; so do we, by what the file starts with.
    if (CompoundFile::hasSignature(bytes))
        return fromBytes(std::move(bytes), Format::Xls);
    if (ZipArchive::hasSignature(bytes))
        return fromBytes(std::move(bytes), Format::Xlsx);
    throw WorkbookError(QStringLiteral("it is damaged or not an Excel workbook."));
}

std::unique_ptr<Workbook> Workbook::fromBytes(QByteArray bytes, Format format, const QString& sheetName)
{
    switch (format) {
    case Format::Xls:
        return std::make_unique<XlsWorkbook>(std::move(bytes));
    case Format::Xlsx:
        return std::make_unique<XlsxWorkbook>(std::move(bytes));
    case Format::Csv:
        break;
    }
    return std::make_unique<CsvWorkbook>(bytes, sheetName);
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
