#pragma once

#include <QString>

#include <optional>

namespace kilnova {

/// A block of cells, rows and columns counted from 0, both corners included.
struct CellArea {
    int firstRow = 0;
    int firstColumn = 0;
    int lastRow = 0;
    int lastColumn = 0;

    bool operator==(const CellArea&) const = default;

    /// "A1" -> column 0, row 0; "$AB$12" is accepted too.
    static std::optional<std::pair<int, int>> parseCell(QStringView reference);
    /// "A1:F19" or a single cell "B2", with or without "$" marks.
    static std::optional<CellArea> parse(QStringView reference);
};

/// A cell area on a named sheet.
struct SheetArea {
    QString sheet;
    CellArea area;

    bool operator==(const SheetArea&) const = default;

    /// A cell range as users type it: "[Sheet1$]A1:F19", "Sheet1$A1:F19", "'My data'!A1:F19" or just
    /// "A1:F19" (sheet left empty). Nothing when the text is not a cell range.
    static std::optional<SheetArea> parseRange(const QString& text);
};

} // namespace kilnova
