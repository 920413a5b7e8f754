#pragma once

#include <QStringList>
#include <QVariantList>

#include <vector>

namespace kilnova {

/// The data a workbook source yields: the headings of its first row and the rows below them.
struct SheetData {
    struct Row {
        /// The row number the user sees in the spreadsheet (1 for the first row).
        int number = 0;
        /// One value per heading: empty (invalid), a number (double) or a text.
        QVariantList values;
    };

    /// Where the data came from, for messages: "Data", "Quarry", "[Data$]A1:F19".
    QString source;
    QStringList headings;
    std::vector<Row> rows;
};

} // namespace kilnova
