#pragma once

#include "database/Record.h"
#include "import/ImportResult.h"
#include "import/ImportSpecification.h"
#include "import/ImportTarget.h"

#include <array>
#include <vector>

class QIODevice;

namespace kilnova {

class ProjectDatabase;

/// Reads a fixed-column text file into the Blast table (each blast with a stdBlast companion) or the
/// Stockpile table, one record per complete line, as an import specification places the values.
///
/// Values are written by field index: field i goes to column i of the record. So the CostFactor field
/// of a blast layout lands in MS and is then replaced by the computed MS, and blasts keep their
/// CostFactor default; and a stockpile's Quantity is cut where the blast layout puts its field 2.
/// Both are how this import has always behaved, and plants' files are made for it.
class TextImporter final {
public:
    TextImporter(ImportTarget target, const ImportSpecification& blastSpec,
                 const ImportSpecification& stockpileSpec);

    /// The record one line gives (a line of LineReader::kLineLength characters).
    Record recordFromLine(const char* line) const;

    /// Imports every complete line in one transaction. At the first record the database refuses it
    /// stops, keeping the records saved before it.
    ImportResult import(ProjectDatabase& db, QIODevice& device) const;

    /// False when the start of the file holds zero bytes, which no text file does.
    static bool looksLikeText(QIODevice& device);

    /// A field the import reads from every line, as the layout names it and where it is cut.
    struct ReadField {
        int index = 0;
        QString name;
        int position = 0;
        int length = 0;
        /// Converted to a number (else kept as text: Name, Source).
        bool numeric = false;
        /// Numbers only: the value stays in the record; false where a derived column replaces it.
        bool stored = false;
    };
    /// The fields read, in layout order, fields of length 0 left out.
    std::vector<ReadField> fieldsRead() const;

private:
    struct Field {
        int position;
        int length;
        QString name;
    };
    /// An analysis element and its column in the target table (-1 when the table has none).
    struct ElementColumn {
        Element element;
        int column;
    };

    ImportTarget mTarget;
    Table mTable;
    int mFieldCount;
    std::array<Field, ImportSpecification::kMaxFields> mFields{};
    /// Where the stockpile Quantity is cut: field 2 of the blast layout.
    Field mStockpileQuantity{};
    /// Index of the first field written as a single-precision analysis value.
    int mFirstAnalysisField;
    /// A record holding the table's defaults, copied for each line.
    Record mBlank;
    std::vector<ElementColumn> mKept;
    std::vector<ElementColumn> mDerived;
};

} // namespace kilnova
