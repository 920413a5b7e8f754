#pragma once

#include "import/Workbook.h"
#include "import/XlsGlobals.h"

#include <map>

namespace kilnova {

/// An Excel 95/97 workbook (.xls): a compound file whose Workbook (or Book) stream holds the records
/// of the globals and of each sheet. Everything is read by our own code from the bytes in memory,
/// every count and length checked against what is there.
class XlsWorkbook final : public Workbook {
public:
    /// Throws WorkbookError for a damaged, encrypted or foreign file.
    explicit XlsWorkbook(QByteArray bytes);

    QStringList sheetNames() const override { return mGlobals.sheetNames(); }
    std::optional<SheetArea> definedName(const QString& name) const override;
    const CellStore& cells(int sheet) override;

private:
    QByteArray mStream;
    XlsGlobals mGlobals;
    std::map<int, CellStore> mSheets;
};

} // namespace kilnova
