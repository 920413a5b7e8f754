#include "import/WorkbookImporter.h"

#include "chemistry/ChemistryFunctions.h"
#include "database/DatabaseError.h"
#include "database/Record.h"
#include "import/AnalysisColumns.h"
#include "import/ImportWriter.h"
#include "import/WorkbookReader.h"

#include <QLocale>

#include <cmath>

namespace kilnova {

namespace {

/// A cell as the value of a number column: numbers as they are, texts when they read as a number.
/// "NaN" and "inf" are not: no column can hold them.
std::optional<double> asNumber(const QVariant& value)
{
    bool ok = value.typeId() == QMetaType::Double;
    const double number = ok ? value.toDouble() : QLocale::c().toDouble(value.toString().trimmed(), &ok);
    return ok && std::isfinite(number) ? std::optional<double>(number) : std::nullopt;
}

} // namespace

WorkbookImporter::WorkbookImporter(ImportTarget target)
    : mTarget(target)
{
}

std::vector<int> WorkbookImporter::columnsOf(const QStringList& headings) const
{
    const TableDef& def = Schema::table(tableOf(mTarget));
    std::vector<int> columns;
    for (const QString& heading : headings) {
        const int column = def.columnIndex(heading.trimmed());
        if (column < 0) {
            throw DatabaseError(
                QStringLiteral("Unknown column \"%1\": the %2 table has no column of that name.")
                    .arg(heading, def.name));
        }
        columns.push_back(column);
    }
    return columns;
}

Record WorkbookImporter::recordFromRow(const SheetData& data, const std::vector<int>& columns, int row) const
{
    Record record(tableOf(mTarget));
    const TableDef& def = record.definition();
    const QVariantList& values = data.rows[static_cast<std::size_t>(row)].values;
    for (std::size_t c = 0; c < columns.size(); ++c) {
        const QVariant& value = values[static_cast<qsizetype>(c)];
        if (!value.isValid())
            continue;
        const ColumnDef& column = def.columns[static_cast<std::size_t>(columns[c])];
        if (column.type == ColumnType::Text) {
            record.setValue(columns[c], WorkbookReader::cellText(value));
            continue;
        }
        const std::optional<double> number = asNumber(value);
        if (!number) {
            throw DatabaseError(QStringLiteral("The value \"%1\" of column %2 is not a number.")
                                    .arg(value.toString(), column.name));
        }
        record.setValue(columns[c], *number);
    }

    Analysis kept = missingAnalysis();
    for (Element e : kKeptElements) {
        if (def.hasColumn(elementColumn(e)))
            kept[static_cast<std::size_t>(elementIndex(e))] =
                static_cast<float>(record.number(elementColumn(e)));
    }
    computeDerivedQuantities(kept, 0.0);
    for (Element e : kDerivedElements)
        record.setValue(elementColumn(e),
                        static_cast<double>(kept[static_cast<std::size_t>(elementIndex(e))]));
    return record;
}

ImportResult WorkbookImporter::import(ProjectDatabase& db, const SheetData& data) const
{
    ImportResult result;
    // A source without columns adds nothing.
    if (data.headings.isEmpty())
        return result;
    std::vector<int> columns;
    try {
        columns = columnsOf(data.headings);
    } catch (const DatabaseError& e) {
        result.stoppedAt = QStringLiteral("its headings");
        result.reason = e.message();
        return result;
    }

    ImportWriter writer(db, tableOf(mTarget));
    for (int r = 0; r < static_cast<int>(data.rows.size()); ++r) {
        try {
            writer.save(recordFromRow(data, columns, r));
        } catch (const DatabaseError& e) {
            result.stoppedAt = QStringLiteral("row %1 of %2")
                                   .arg(data.rows[static_cast<std::size_t>(r)].number)
                                   .arg(data.source);
            result.reason = e.message();
            break;
        }
        ++result.count;
    }
    writer.commit(result);
    return result;
}

} // namespace kilnova
