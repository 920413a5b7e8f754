// Reading a worksheet of 15 columns by 2,000 rows from an .xlsx, and the same sheet with one more
// value in its last cell (XFD1048576): the used range then covers 16,384 columns by 1,048,576 rows.
// Names are "<case>/<implementation>"; scripts/run-bench divides the first implementation's time by
// each peer's: here the far cell against the compact sheet, a ratio near 1 when reading costs the
// cells held, not the area of the used range.

#include "import/Workbook.h"
#include "import/WorkbookBytes.h"
#include "import/WorkbookReader.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

namespace kilnova::bench {
namespace {

constexpr int kRows = 2000;
constexpr int kColumns = 15;

QByteArray sheet(bool farCell)
{
    QByteArray xml = "<worksheet><sheetData>";
    for (int r = 1; r <= kRows; ++r) {
        xml += "<row r=\"" + QByteArray::number(r) + "\">";
        for (int c = 0; c < kColumns; ++c) {
            const QByteArray ref = QByteArray(1, static_cast<char>('A' + c)) + QByteArray::number(r);
            xml += r == 1 ? "<c r=\"" + ref + "\" t=\"inlineStr\"><is><t>H" + QByteArray::number(c) +
                                "</t></is></c>"
                          : "<c r=\"" + ref + "\"><v>" + QByteArray::number(r * 0.25 + c) + "</v></c>";
        }
        xml += "</row>";
    }
    if (farCell)
        xml += R"(<row r="1048576"><c r="XFD1048576"><v>1</v></c></row>)";
    return test::ZipBytes::xlsx(xml + "</sheetData></worksheet>");
}

void read(benchmark::State& state, bool farCell)
{
    const QByteArray bytes = sheet(farCell);
    for (auto _ : state) {
        const auto workbook = Workbook::fromBytes(bytes, Workbook::Format::Xlsx);
        benchmark::DoNotOptimize(WorkbookReader::read(*workbook, "Data$").rows.size());
    }
}

} // namespace
} // namespace kilnova::bench

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RegisterBenchmark("xlsxSheet15x2000/farCell", kilnova::bench::read, true)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("xlsxSheet15x2000/compact", kilnova::bench::read, false)
        ->Unit(benchmark::kMillisecond);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
