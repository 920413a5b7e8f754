#pragma once

#include "FuzzInput.h"

#include "import/Workbook.h"
#include "import/WorkbookError.h"
#include "import/WorkbookReader.h"

namespace kilnova::fuzz {

/// Opens the bytes as a workbook and reads every way the import can: each sheet whole, the names
/// the test workbooks define, and a cell range. A WorkbookError is the only way out allowed.
inline int readWorkbook(const std::uint8_t* data, std::size_t size, Workbook::Format format)
{
    try {
        const std::unique_ptr<Workbook> workbook = Workbook::fromBytes(bytesOf(data, size), format, "Data");
        const QStringList sheets = workbook->sheetNames();
        for (const QString& sheet : sheets) {
            try {
                WorkbookReader::read(*workbook, sheet + u'$');
            } catch (const WorkbookError&) {
            }
        }
        for (const char* source : {"Quarry", "Mixes", "[Data$]A1:F19", "B2:XFD1048576"}) {
            try {
                WorkbookReader::read(*workbook, QString::fromLatin1(source));
            } catch (const WorkbookError&) {
            }
        }
    } catch (const WorkbookError&) {
    }
    return 0;
}

} // namespace kilnova::fuzz
