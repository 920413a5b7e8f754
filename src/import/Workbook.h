#pragma once

#include "import/CellArea.h"

#include <QStringList>
#include <QVariant>

#include <memory>
#include <optional>

namespace kilnova {

/// A spreadsheet file as the workbook import reads it: named sheets of cells, and the ranges the
/// workbook defines names for. Cells are empty (an invalid QVariant), numbers (double) or text.
class Workbook {
public:
    virtual ~Workbook() = default;

    /// Opens an Excel 95/97 (.xls), Excel 2007 (.xlsx) or comma-separated (.csv) file. Which of the two
    /// Excel formats a file holds is told by its content, not its extension. Throws WorkbookError.
    static std::unique_ptr<Workbook> open(const QString& path);

    virtual QStringList sheetNames() const = 0;
    /// The block of cells a defined name stands for; nothing when there is no such name. Throws
    /// WorkbookError when the name exists but is not one block of cells.
    virtual std::optional<SheetArea> definedName(const QString& name) const = 0;
    /// From A1 to the last row and column holding a cell; nothing for a sheet without cells.
    virtual std::optional<CellArea> usedArea(int sheet) = 0;
    virtual QVariant cell(int sheet, int row, int column) = 0;

    /// Index of a sheet by name, compared without regard to case; -1 when there is none.
    int sheetIndex(const QString& name) const;
};

} // namespace kilnova
