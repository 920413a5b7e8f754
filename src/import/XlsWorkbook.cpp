#include "import/XlsWorkbook.h"

#include "import/CompoundFile.h"
#include "import/WorkbookError.h"

#include <QFile>

#include <freexl.h>

namespace kilnova {

namespace {

XlsGlobals readGlobals(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw WorkbookError(file.errorString());
    const QByteArray bytes = file.readAll();
    if (!CompoundFile::hasSignature(bytes))
        throw WorkbookError(QStringLiteral("it is damaged or not an Excel 95/97 workbook."));
    const CompoundFile compound(bytes);
    std::optional<QByteArray> stream = compound.stream(QStringLiteral("Workbook"));
    if (!stream)
        stream = compound.stream(QStringLiteral("Book"));
    if (!stream) {
        // An Excel 2007 workbook saved with a password is a compound document holding an encrypted
        // package.
        if (compound.stream(QStringLiteral("EncryptedPackage")))
            throw WorkbookError(
                QStringLiteral("it is protected by a password. Save it without one and import it "
                               "again."));
        throw WorkbookError(QStringLiteral("it is damaged or not an Excel 95/97 workbook."));
    }
    return XlsGlobals::read(*stream);
}

} // namespace

XlsWorkbook::XlsWorkbook(const QString& path)
    : mGlobals(readGlobals(path))
{
    if (mGlobals.isEncrypted())
        throw WorkbookError(
            QStringLiteral("it is protected by a password. Save it without one and import it again."));
    const int status = freexl_open(QFile::encodeName(path).constData(), &mHandle);
    if (status != FREEXL_OK) {
        freexl_close(mHandle);
        mHandle = nullptr;
        throw WorkbookError(
            QStringLiteral("it is damaged or not an Excel 95/97 workbook (FreeXL error %1).").arg(status));
    }
    unsigned int count = 0;
    freexl_get_info(mHandle, FREEXL_BIFF_SHEET_COUNT, &count);
    for (unsigned int i = 0; i < count; ++i) {
        const char* name = nullptr;
        if (freexl_get_worksheet_name(mHandle, static_cast<unsigned short>(i), &name) != FREEXL_OK || !name)
            mSheetNames << QString();
        else
            mSheetNames << QString::fromUtf8(name);
    }
}

XlsWorkbook::~XlsWorkbook()
{
    if (mHandle)
        freexl_close(mHandle);
}

std::optional<SheetArea> XlsWorkbook::definedName(const QString& name) const
{
    if (!mGlobals.isBiff8())
        throw WorkbookError(
            QStringLiteral("names of ranges are read from Excel 97 workbooks only; give the cell "
                           "range instead."));
    return mGlobals.definedName(name);
}

void XlsWorkbook::select(int sheet)
{
    if (sheet == mSelected)
        return;
    if (sheet < 0 || sheet >= mSheetNames.size() ||
        freexl_select_active_worksheet(mHandle, static_cast<unsigned short>(sheet)) != FREEXL_OK)
        throw WorkbookError(QStringLiteral("its sheet %1 cannot be read.").arg(sheet + 1));
    mSelected = sheet;
}

std::optional<CellArea> XlsWorkbook::usedArea(int sheet)
{
    select(sheet);
    unsigned int rows = 0;
    unsigned short columns = 0;
    if (freexl_worksheet_dimensions(mHandle, &rows, &columns) != FREEXL_OK)
        throw WorkbookError(QStringLiteral("its sheet %1 cannot be read.").arg(sheet + 1));
    if (rows == 0 || columns == 0)
        return std::nullopt;
    return CellArea{0, 0, static_cast<int>(rows) - 1, static_cast<int>(columns) - 1};
}

QVariant XlsWorkbook::cell(int sheet, int row, int column)
{
    select(sheet);
    FreeXL_CellValue value;
    if (row < 0 || column < 0 || column > 0xFFFF ||
        freexl_get_cell_value(mHandle, static_cast<unsigned int>(row), static_cast<unsigned short>(column),
                              &value) != FREEXL_OK)
        return {};
    switch (value.type) {
    case FREEXL_CELL_INT:
        return static_cast<double>(value.value.int_value);
    case FREEXL_CELL_DOUBLE:
        return value.value.double_value;
    case FREEXL_CELL_TEXT:
    case FREEXL_CELL_SST_TEXT:
    case FREEXL_CELL_DATE:
    case FREEXL_CELL_DATETIME:
    case FREEXL_CELL_TIME:
        return value.value.text_value ? QVariant(QString::fromUtf8(value.value.text_value)) : QVariant();
    default:
        return {};
    }
}

} // namespace kilnova
