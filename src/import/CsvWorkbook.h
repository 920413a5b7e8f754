#pragma once

#include "import/Workbook.h"

#include <vector>

namespace kilnova {

/// A comma-separated file read as a workbook of one sheet, named after the file ("blasts" for
/// blasts.csv), as spreadsheet programs open it. Fields may be quoted ("a ""b"", c"); a file whose
/// first line holds semicolons and no commas is read with semicolons, as such exports come from
/// places where the comma is the decimal sign. UTF-8 (with or without a byte-order mark) is read as
/// such, any other text as code page 1252. Every value is text; the importer converts numbers.
class CsvWorkbook final : public Workbook {
public:
    /// Throws WorkbookError when the file cannot be read.
    explicit CsvWorkbook(const QString& path);

    QStringList sheetNames() const override { return {mSheetName}; }
    std::optional<SheetArea> definedName(const QString&) const override { return std::nullopt; }
    std::optional<CellArea> usedArea(int sheet) override;
    QVariant cell(int sheet, int row, int column) override;

    /// The fields of CSV text, line by line.
    static std::vector<QStringList> parse(const QString& text, QChar separator);

private:
    QString mSheetName;
    std::vector<QStringList> mRows;
    int mColumns = 0;
};

} // namespace kilnova
