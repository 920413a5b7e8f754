#include "import/WorkbookReader.h"

#include "import/Workbook.h"
#include "import/WorkbookError.h"

#include <QLocale>

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
    const int columns = area.lastColumn - area.firstColumn + 1;
    std::vector<QVariantList> rows;
    std::vector<bool> columnUsed(static_cast<std::size_t>(columns), false);
    QStringList headings;
    for (int c = 0; c < columns; ++c) {
        const QString heading =
            WorkbookReader::cellText(workbook.cell(sheet, area.firstRow, area.firstColumn + c));
        headings << heading;
        columnUsed[static_cast<std::size_t>(c)] = !heading.trimmed().isEmpty();
    }
    for (int r = area.firstRow + 1; r <= area.lastRow; ++r) {
        SheetData::Row row;
        row.number = r + 1;
        bool any = false;
        for (int c = 0; c < columns; ++c) {
            const QVariant value = workbook.cell(sheet, r, area.firstColumn + c);
            const bool empty = isEmpty(value);
            row.values << (empty ? QVariant() : value);
            if (!empty) {
                any = true;
                columnUsed[static_cast<std::size_t>(c)] = true;
            }
        }
        if (any)
            data.rows.push_back(std::move(row));
    }

    std::vector<int> kept;
    for (int c = 0; c < columns; ++c) {
        if (!columnUsed[static_cast<std::size_t>(c)])
            continue;
        kept.push_back(c);
        const QString heading = headings[c].trimmed();
        data.headings << (heading.isEmpty() ? QStringLiteral("F%1").arg(c + 1) : heading);
    }
    if (static_cast<int>(kept.size()) != columns) {
        for (SheetData::Row& row : data.rows) {
            QVariantList values;
            for (int c : kept)
                values << row.values[c];
            row.values = values;
        }
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
        const std::optional<CellArea> used = workbook.usedArea(sheet);
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
