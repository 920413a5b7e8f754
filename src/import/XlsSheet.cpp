#include "import/XlsSheet.h"

#include "import/BiffReader.h"
#include "import/WorkbookError.h"
#include "import/XlsGlobals.h"

#include <bit>

namespace kilnova {

namespace {

constexpr quint16 kBof = 0x0809;
constexpr quint16 kEof = 0x000A;
constexpr quint16 kNumber = 0x0203;
constexpr quint16 kRk = 0x027E;
constexpr quint16 kMulRk = 0x00BD;
constexpr quint16 kLabelSst = 0x00FD;
constexpr quint16 kLabel = 0x0204;
constexpr quint16 kRString = 0x00D6;
constexpr quint16 kFormula = 0x0006;
constexpr quint16 kString = 0x0207;
constexpr quint16 kBoolErr = 0x0205;

/// A number packed in 30 bits: an integer, or the high half of a double, either one perhaps
/// multiplied by 100.
double fromRk(quint32 rk)
{
    double value = (rk & 0x02) ? static_cast<double>(static_cast<qint32>(rk) >> 2)
                               : std::bit_cast<double>(static_cast<quint64>(rk & 0xFFFFFFFCu) << 32);
    if (rk & 0x01)
        value /= 100.0;
    return value;
}

QString errorText(quint8 code)
{
    switch (code) {
    case 0x00:
        return QStringLiteral("#NULL!");
    case 0x07:
        return QStringLiteral("#DIV/0!");
    case 0x0F:
        return QStringLiteral("#VALUE!");
    case 0x17:
        return QStringLiteral("#REF!");
    case 0x1D:
        return QStringLiteral("#NAME?");
    case 0x24:
        return QStringLiteral("#NUM!");
    default:
        return QStringLiteral("#N/A");
    }
}

} // namespace

CellStore XlsSheet::read(const QByteArray& stream, const XlsGlobals& globals, int sheet)
{
    qsizetype offset = globals.sheetOffset(sheet);
    std::optional<BiffReader::Record> record = BiffReader::nextRecord(stream, offset);
    if (!record || record->type != kBof)
        throw WorkbookError(QStringLiteral("it is damaged (its sheet %1 cannot be read).").arg(sheet + 1));

    const bool biff8 = globals.isBiff8();
    auto text = [biff8](BiffReader& data) {
        return biff8 ? data.biff8String16() : data.byteString(data.u16());
    };
    CellStore cells;
    // Charts embedded in a sheet bring their own BOF and EOF; only the sheet's own cells count.
    int depth = 1;
    // A formula whose result is a text gives it in the STRING record that follows.
    int pendingRow = -1;
    int pendingColumn = -1;
    while (depth > 0 && (record = BiffReader::nextRecord(stream, offset))) {
        BiffReader data(record->data);
        if (record->type == kBof) {
            ++depth;
            continue;
        }
        if (record->type == kEof) {
            --depth;
            continue;
        }
        if (depth != 1)
            continue;
        if (record->type == kString && pendingRow >= 0) {
            cells.set(pendingRow, pendingColumn, text(data));
            pendingRow = -1;
            continue;
        }
        pendingRow = -1;
        const int row = data.u16();
        const int column = data.u16();
        switch (record->type) {
        case kNumber: {
            data.skip(2);
            const double number = data.f64();
            if (!data.exhausted())
                cells.set(row, column, number);
            break;
        }
        case kRk: {
            data.skip(2);
            const quint32 rk = data.u32();
            if (!data.exhausted())
                cells.set(row, column, fromRk(rk));
            break;
        }
        case kMulRk: {
            // Pairs of format and number, then the last column; the count follows from the size.
            const qsizetype pairs = (record->data.size() - 6) / 6;
            for (qsizetype i = 0; i < pairs; ++i) {
                data.skip(2);
                cells.set(row, column + static_cast<int>(i), fromRk(data.u32()));
            }
            break;
        }
        case kLabelSst: {
            data.skip(2);
            const quint32 index = data.u32();
            const std::optional<QString> shared = globals.sharedString(index);
            if (!shared || data.exhausted())
                throw WorkbookError(
                    QStringLiteral("it is damaged (a text of its sheet %1 is missing).").arg(sheet + 1));
            cells.set(row, column, *shared);
            break;
        }
        case kLabel:
        case kRString:
            data.skip(2);
            cells.set(row, column, text(data));
            break;
        case kFormula: {
            data.skip(2);
            const double number = data.f64();
            const QByteArrayView result =
                record->data.size() >= 14 ? record->data.sliced(6, 8) : QByteArrayView();
            if (result.size() == 8 && static_cast<quint8>(result[6]) == 0xFF &&
                static_cast<quint8>(result[7]) == 0xFF) {
                switch (result[0]) {
                case 0:
                    pendingRow = row;
                    pendingColumn = column;
                    break;
                case 1:
                    cells.set(row, column, result[2] ? 1.0 : 0.0);
                    break;
                case 2:
                    cells.set(row, column, errorText(static_cast<quint8>(result[2])));
                    break;
                default:
                    break; // an empty text
                }
            } else if (!data.exhausted()) {
                cells.set(row, column, number);
            }
            break;
        }
        case kBoolErr: {
            data.skip(2);
            const quint8 value = data.u8();
            const bool error = data.u8();
            if (!data.exhausted())
                cells.set(row, column, error ? QVariant(errorText(value)) : QVariant(value ? 1.0 : 0.0));
            break;
        }
        default:
            break;
        }
    }
    return cells;
}

} // namespace kilnova
