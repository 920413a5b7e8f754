#include "import/XlsWorkbook.h"

#include "import/CompoundFile.h"
#include "import/WorkbookError.h"
#include "import/XlsSheet.h"

namespace kilnova {

namespace {

const QString kProtected =
    QStringLiteral("it is protected by a password. Save it without one and import it again.");

QByteArray workbookStream(QByteArray bytes)
{
    if (!CompoundFile::hasSignature(bytes))
        throw WorkbookError(QStringLiteral("it is damaged or not an Excel 95/97 workbook."));
    const CompoundFile compound(std::move(bytes));
    std::optional<QByteArray> stream = compound.stream(QStringLiteral("Workbook"));
    if (!stream)
        stream = compound.stream(QStringLiteral("Book"));
    if (!stream) {
        // An Excel 2007 workbook saved with a password is a compound document holding an encrypted
        // package.
        if (compound.stream(QStringLiteral("EncryptedPackage")))
            throw WorkbookError(kProtected);
        throw WorkbookError(QStringLiteral("it is damaged or not an Excel 95/97 workbook."));
    }
    return *stream;
}

} // namespace

XlsWorkbook::XlsWorkbook(QByteArray bytes)
    : mStream(workbookStream(std::move(bytes)))
    , mGlobals(XlsGlobals::read(mStream))
{
    if (mGlobals.isEncrypted())
        throw WorkbookError(kProtected);
}

std::optional<SheetArea> XlsWorkbook::definedName(const QString& name) const
{
    if (!mGlobals.isBiff8())
        throw WorkbookError(
            QStringLiteral("names of ranges are read from Excel 97 workbooks only; give the cell "
                           "range instead."));
    return mGlobals.definedName(name);
}

const CellStore& XlsWorkbook::cells(int sheet)
{
    if (sheet < 0 || sheet >= mGlobals.sheetNames().size())
        throw WorkbookError(QStringLiteral("its sheet %1 cannot be read.").arg(sheet + 1));
    auto found = mSheets.find(sheet);
    if (found == mSheets.end())
        found = mSheets.emplace(sheet, XlsSheet::read(mStream, mGlobals, sheet)).first;
    return found->second;
}

} // namespace kilnova
