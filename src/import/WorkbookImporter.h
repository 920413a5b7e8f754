#pragma once

#include "import/ImportResult.h"
#include "import/ImportTarget.h"
#include "import/SheetData.h"

#include <vector>

namespace kilnova {

class ProjectDatabase;
class Record;

/// Writes the rows of a workbook source into the Blast table (each blast with a stdBlast companion)
/// or the Stockpile table, matching headings to column names (without regard to case).
///
/// A heading that names no column of the table stops the import before anything is written. An empty
/// cell leaves its column at the table's default (-1 for an analysis value: not measured). A text in
/// a number column is converted when it reads as a number and refused otherwise. The derived columns
/// are always computed from SiO2, Al2O3, Fe2O3, CaO, K2O and Na2O, whatever the workbook supplies in
/// their place.
class WorkbookImporter final {
public:
    explicit WorkbookImporter(ImportTarget target);

    /// Imports every row in one transaction; at the first row the database refuses it stops, keeping
    /// the rows saved before it.
    ImportResult import(ProjectDatabase& db, const SheetData& data) const;

private:
    /// The column of each heading; throws DatabaseError for a heading no column has.
    std::vector<int> columnsOf(const QStringList& headings) const;
    Record recordFromRow(const SheetData& data, const std::vector<int>& columns, int row) const;

    ImportTarget mTarget;
};

} // namespace kilnova
