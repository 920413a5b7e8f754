#pragma once

#include "import/Workbook.h"
#include "import/XlsGlobals.h"

namespace kilnova {

/// An Excel 95/97 workbook (.xls): cells through FreeXL, defined names from the workbook's own
/// records.
class XlsWorkbook final : public Workbook {
public:
    /// Throws WorkbookError for a damaged, encrypted or foreign file.
    explicit XlsWorkbook(const QString& path);
    ~XlsWorkbook() override;
    XlsWorkbook(const XlsWorkbook&) = delete;
    XlsWorkbook& operator=(const XlsWorkbook&) = delete;

    QStringList sheetNames() const override { return mSheetNames; }
    std::optional<SheetArea> definedName(const QString& name) const override;
    std::optional<CellArea> usedArea(int sheet) override;
    QVariant cell(int sheet, int row, int column) override;

private:
    void select(int sheet);

    XlsGlobals mGlobals;
    const void* mHandle = nullptr;
    QStringList mSheetNames;
    int mSelected = -1;
};

} // namespace kilnova
