// Workbooks as the spreadsheet import reads them.
#include "WorkbookFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return kilnova::fuzz::readWorkbook(data, size, kilnova::Workbook::Format::Csv);
}
