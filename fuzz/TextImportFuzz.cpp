// The fixed-column text import: the layout preview, the line reader and the record each line gives,
// with the default layouts and with one whose positions and lengths the first line's bytes choose
// (a project document may carry any).
#include "FuzzInput.h"

#include "database/DatabaseError.h"
#include "import/ImportPreview.h"
#include "import/ImportSpecification.h"
#include "import/LineReader.h"
#include "import/TextImporter.h"

#include <QBuffer>
#include <QtEndian>

namespace {

using namespace kilnova;

ImportSpecification layoutFrom(const QByteArray& line)
{
    ImportSpecification spec = ImportSpecification::defaultBlast();
    for (int i = 0; i < spec.fieldCount() && 4 * i + 4 <= line.size(); ++i) {
        spec.setPosition(i, qFromLittleEndian<qint16>(line.constData() + 4 * i));
        spec.setLength(i, qFromLittleEndian<qint16>(line.constData() + 4 * i + 2));
    }
    return spec;
}

void importLines(const QByteArray& bytes, const TextImporter& importer)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    LineReader reader(buffer);
    while (reader.readLine()) {
        try {
            importer.recordFromLine(reader.line());
        } catch (const DatabaseError&) {
            // a layout field without a column: the import stops there with this message
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes = fuzz::bytesOf(data, size);
    {
        QBuffer buffer;
        buffer.setData(bytes);
        buffer.open(QIODevice::ReadOnly);
        ImportPreview::build(buffer);
    }
    const ImportSpecification blasts = ImportSpecification::defaultBlast();
    const ImportSpecification stockpiles = ImportSpecification::defaultStockpile();
    importLines(bytes, TextImporter(ImportTarget::Blast, blasts, stockpiles));
    importLines(bytes, TextImporter(ImportTarget::Stockpile, blasts, stockpiles));
    const ImportSpecification chosen = layoutFrom(bytes.left(bytes.indexOf('\n')));
    importLines(bytes, TextImporter(ImportTarget::Blast, chosen, stockpiles));
    importLines(bytes, TextImporter(ImportTarget::Stockpile, chosen, chosen));
    return 0;
}
