#include "import/WorkbookReader.h"

#include "import/Workbook.h"
#include "import/WorkbookError.h"

#include <QLocale>

#include <map>
#include <set>

namespace kilnova {

namespace {

bool isEmpty(const QVariant& value)
{
    return !value.isValid() || (value.typeId() == QMetaType::QString && value.toString().isEmpty());
}

int requireSheet(const Workbook& workbook, const QString& name)
{
    const int index = workbook.sheetIndex(name);
    if (index < 0)
        throw WorkbookError(QStringLiteral("it has no worksheet named \"%1\".").arg(name));
    return index;
}

SheetData readArea(Workbook& workbook, int sheet, const CellArea& area, const QString& source)
{
    SheetData data;
    data.source = source;
    // Only the cells that hold a value are visited: a source reaching to the last column and row of a
    // sheet costs no more than the cells in it.
    const std::vector<CellStore::Cell> cells = workbook.cells(sheet).cellsIn(area);
    std::map<int, QString> headings;
    std::set<int> used;
    for (const CellStore::Cell& cell : cells) {
        if (cell.row == area.firstRow) {
            const QString heading = WorkbookReader::cellText(*cell.value);
            headings[cell.column] = heading;
            if (!heading.trimmed().isEmpty())
                used.insert(cell.column);
        } else if (!isEmpty(*cell.value)) {
            used.insert(cell.column);
        }
    }
    if (used.size() > static_cast<std::size_t>(WorkbookReader::kMaxColumns))
        throw WorkbookError(
            QStringLiteral("its source %1 has values in %2 columns; no table has more than %3.")
                .arg(source)
                .arg(used.size())
                .arg(WorkbookReader::kMaxColumns));

    std::map<int, int> position;
    for (int column : used) {
        position[column] = static_cast<int>(data.headings.size());
        const QString heading = headings.count(column) ? headings[column].trimmed() : QString();
        data.headings << (heading.isEmpty() ? QStringLiteral("F%1").arg(column - area.firstColumn + 1)
                                            : heading);
    }
    for (const CellStore::Cell& cell : cells) {
        if (cell.row == area.firstRow || isEmpty(*cell.value))
            continue;
        if (data.rows.empty() || data.rows.back().number != cell.row + 1) {
            SheetData::Row row;
            row.number = cell.row + 1;
            for (std::size_t c = 0; c < used.size(); ++c)
                row.values << QVariant();
            data.rows.push_back(std::move(row));
        }
        data.rows.back().values[position[cell.column]] = *cell.value;
    }
    return data;
}

} // namespace

QString WorkbookReader::cellText(const QVariant& value)
{
    if (!value.isValid())
        return {};
    if (value.typeId() == QMetaType::Double)
        return QLocale::c().toString(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    return value.toString();
}

SheetData WorkbookReader::read(const QString& path, const QString& sourceName)
{
    const std::unique_ptr<Workbook> workbook = Workbook::open(path);
    return read(*workbook, sourceName);
}

SheetData WorkbookReader::read(Workbook& workbook, const QString& sourceName)
{
    if (sourceName.endsWith(u'$')) {
        const QString name = sourceName.chopped(1);
        const int sheet = requireSheet(workbook, name);
        const std::optional<CellArea> used = workbook.cells(sheet).usedArea();
        if (!used)
            return SheetData{name, {}, {}};
        return readArea(workbook, sheet, *used, name);
    }
    if (const std::optional<SheetArea> range = SheetArea::parseRange(sourceName)) {
        if (workbook.sheetNames().isEmpty())
            throw WorkbookError(QStringLiteral("it has no worksheet."));
        const int sheet = range->sheet.isEmpty() ? 0 : requireSheet(workbook, range->sheet);
        return readArea(workbook, sheet, range->area, sourceName);
    }
    if (const std::optional<SheetArea> named = workbook.definedName(sourceName))
        return readArea(workbook, requireSheet(workbook, named->sheet), named->area, sourceName);
    throw WorkbookError(QStringLiteral("it has no worksheet or range named \"%1\".").arg(sourceName));
}

} // namespace kilnova
