#pragma once

#include "import/CellArea.h"
#include "import/CellStore.h"

#include <QByteArray>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <optional>

namespace kilnova {

/// A spreadsheet file as the workbook import reads it: named sheets of cells, and the ranges the
/// workbook defines names for. Cells hold numbers (double) or text.
class Workbook {
public:
    enum class Format { Xls, Xlsx, Csv };

    /// No workbook of lab results comes near this; a larger file is refused before it is read.
    static constexpr qint64 kMaxFileSize = 256 * 1024 * 1024;

    virtual ~Workbook() = default;

    /// Opens an Excel 95/97 (.xls), Excel 2007 (.xlsx) or comma-separated (.csv) file. Which of the two
    /// Excel formats a file holds is told by its content, not its extension. Throws WorkbookError.
    static std::unique_ptr<Workbook> open(const QString& path);
    /// The same for bytes already read; sheetName names the one sheet of a comma-separated file.
    static std::unique_ptr<Workbook> fromBytes(QByteArray bytes, Format format,
                                               const QString& sheetName = {});

    virtual QStringList sheetNames() const = 0;
    /// The block of cells a defined name stands for; nothing when there is no such name. Throws
    /// WorkbookError when the name exists but is not one block of cells.
    virtual std::optional<SheetArea> definedName(const QString& name) const = 0;
    /// The cells of a sheet holding a value. Throws WorkbookError when the sheet cannot be read.
    virtual const CellStore& cells(int sheet) = 0;

    /// Index of a sheet by name, compared without regard to case; -1 when there is none.
    int sheetIndex(const QString& name) const;
};

} // namespace kilnova
