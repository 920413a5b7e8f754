#pragma once

#include "import/SheetData.h"

namespace kilnova {

class Workbook;

/// Finds the data source in a workbook and reads its headings and rows.
///
/// A source name ending in "$" is a whole worksheet ("Data$" reads the sheet Data, from A1 to its last
/// used cell); a cell range ("[Data$]A1:F19", or "A1:F19" on the first sheet) is read as it stands;
/// anything else is a name the workbook defines for a range. Rows with no value at all are left out,
/// and so are columns with neither heading nor values. A column with values but no heading is called
/// "F" and its number within the source, so that it is refused as a column no table has.
class WorkbookReader final {
public:
    WorkbookReader() = delete;

    /// A source with values in more columns than this is refused: no table has half as many, and an
    /// .xls sheet cannot hold more.
    static constexpr int kMaxColumns = 256;

    /// Throws WorkbookError.
    static SheetData read(const QString& path, const QString& sourceName);
    static SheetData read(Workbook& workbook, const QString& sourceName);
    /// The text of a heading cell: numbers as their shortest decimal text.
    static QString cellText(const QVariant& value);
};

} // namespace kilnova
