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
    /// The text of a file, its one sheet named sheetName. Throws WorkbookError when it is not text.
    CsvWorkbook(const QByteArray& bytes, const QString& sheetName);

    QStringList sheetNames() const override { return {mSheetName}; }
    std::optional<SheetArea> definedName(const QString&) const override { return std::nullopt; }
    const CellStore& cells(int sheet) override;

    /// The fields of CSV text, line by line.
    static std::vector<QStringList> parse(const QString& text, QChar separator);

private:
    QString mSheetName;
    CellStore mCells;
};

} // namespace kilnova
