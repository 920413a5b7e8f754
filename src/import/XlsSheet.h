#pragma once

#include "import/CellStore.h"

#include <QByteArray>

namespace kilnova {

class XlsGlobals;

/// The cells of one worksheet of an Excel 95/97 workbook stream: numbers (NUMBER, RK, MULRK), texts
/// (LABELSST, LABEL, RSTRING), the results formulas had when the workbook was saved, and truth
/// values as 1 and 0. Formats are not applied: a date is the number Excel keeps for it. The records
/// are read once, so the time taken follows the cells the sheet holds, whatever their positions.
class XlsSheet final {
public:
    XlsSheet() = delete;

    /// Throws WorkbookError when the sheet's records do not start where the workbook says.
    static CellStore read(const QByteArray& stream, const XlsGlobals& globals, int sheet);
};

} // namespace kilnova
