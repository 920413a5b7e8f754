#include "import/XlsGlobals.h"

#include "common/Cp1252.h"
#include "import/WorkbookError.h"

#include <QtEndian>

namespace kilnova {

namespace {

constexpr quint16 kBof = 0x0809;
constexpr quint16 kEof = 0x000A;
constexpr quint16 kFilePass = 0x002F;
constexpr quint16 kBoundSheet = 0x0085;
constexpr quint16 kExternSheet = 0x0017;
constexpr quint16 kName = 0x0018;
constexpr quint16 kBiff8Version = 0x0600;
constexpr quint16 kBuiltInName = 0x0020;

/// A reader over one record's data that never reads past its end.
class Bytes {
public:
    Bytes(const char* data, int size)
        : mData(data)
        , mSize(size)
    {
    }
    bool has(int count) const { return mPos + count <= mSize; }
    quint8 u8() { return has(1) ? static_cast<quint8>(mData[mPos++]) : 0; }
    quint16 u16()
    {
        if (!has(2))
            return 0;
        const quint16 v = qFromLittleEndian<quint16>(mData + mPos);
        mPos += 2;
        return v;
    }
    void skip(int count) { mPos = std::min(mSize, mPos + count); }
    int position() const { return mPos; }

    /// A BIFF8 string of known length: a flag byte, then one or two bytes per character.
    QString biff8String(int characters)
    {
        const bool wide = u8() & 0x01;
        if (wide) {
            const int bytes = std::min(2 * characters, mSize - mPos);
            const QString s = QString::fromUtf16(reinterpret_cast<const char16_t*>(mData + mPos), bytes / 2);
            mPos += bytes;
            return s;
        }
        return byteString(characters);
    }

    /// One code page 1252 byte per character, as BIFF5 stores text.
    QString byteString(int characters)
    {
        const int bytes = std::min(characters, mSize - mPos);
        const QString s = fromCp1252(QByteArrayView(mData + mPos, bytes));
        mPos += bytes;
        return s;
    }

private:
    const char* mData;
    int mSize;
    int mPos = 0;
};

} // namespace

XlsGlobals XlsGlobals::read(const QByteArray& stream)
{
    XlsGlobals globals;
    qsizetype offset = 0;
    bool first = true;
    while (offset + 4 <= stream.size()) {
        const quint16 type = qFromLittleEndian<quint16>(stream.constData() + offset);
        const quint16 size = qFromLittleEndian<quint16>(stream.constData() + offset + 2);
        if (offset + 4 + size > stream.size())
            break;
        Bytes data(stream.constData() + offset + 4, size);
        offset += 4 + size;

        if (first) {
            // BIFF5 and BIFF8 both open with this record; older workbooks are not read.
            if (type != kBof)
                throw WorkbookError(QStringLiteral("it is damaged or not an Excel 95/97 workbook."));
            globals.mBiff8 = data.u16() == kBiff8Version;
            first = false;
            continue;
        }
        switch (type) {
        case kEof:
            return globals;
        case kFilePass:
            // Everything after this record is encrypted.
            globals.mEncrypted = true;
            return globals;
        case kBoundSheet: {
            data.skip(6); // stream position, visibility and kind
            const int characters = data.u8();
            globals.mSheetNames << (globals.mBiff8 ? data.biff8String(characters)
                                                   : data.byteString(characters));
            break;
        }
        case kExternSheet:
            if (globals.mBiff8) {
                const int count = data.u16();
                for (int i = 0; i < count && data.has(6); ++i) {
                    data.skip(2); // the supporting workbook, always this one for our names
                    globals.mReferenceSheets.push_back(data.u16());
                    data.skip(2);
                }
            }
            break;
        case kName:
            if (globals.mBiff8) {
                const quint16 flags = data.u16();
                data.skip(1); // keyboard shortcut
                const int characters = data.u8();
                const int formulaSize = data.u16();
                data.skip(2);
                Name name;
                name.scope = data.u16();
                data.skip(4); // lengths of menu, description, help and status texts
                name.name = data.biff8String(characters);
                if (flags & kBuiltInName)
                    break; // print areas and filters, never a data source
                // One 3-D reference to a block of cells (tArea3d) or a single cell (tRef3d).
                const quint8 token = data.u8();
                if ((token == 0x3B || token == 0x5B || token == 0x7B) && formulaSize == 11) {
                    name.reference = data.u16();
                    name.area.firstRow = data.u16();
                    name.area.lastRow = data.u16();
                    name.area.firstColumn = data.u16() & 0x3FFF;
                    name.area.lastColumn = data.u16() & 0x3FFF;
                } else if ((token == 0x3A || token == 0x5A || token == 0x7A) && formulaSize == 7) {
                    name.reference = data.u16();
                    name.area.firstRow = name.area.lastRow = data.u16();
                    name.area.firstColumn = name.area.lastColumn = data.u16() & 0x3FFF;
                }
                globals.mNames.push_back(name);
            }
            break;
        default:
            break;
        }
    }
    if (first)
        throw WorkbookError(QStringLiteral("it is damaged or not an Excel 95/97 workbook."));
    return globals;
}

std::optional<SheetArea> XlsGlobals::definedName(const QString& name) const
{
    const Name* found = nullptr;
    for (const Name& n : mNames) {
        if (n.name.compare(name, Qt::CaseInsensitive) == 0 && (!found || (found->scope != 0 && n.scope == 0)))
            found = &n;
    }
    if (!found)
        return std::nullopt;
    const int sheet = found->reference >= 0 && found->reference < static_cast<int>(mReferenceSheets.size())
                          ? mReferenceSheets[static_cast<std::size_t>(found->reference)]
                          : -1;
    if (sheet < 0 || sheet >= mSheetNames.size())
        throw WorkbookError(
            QStringLiteral("the name \"%1\" does not stand for one block of cells.").arg(name));
    return SheetArea{mSheetNames[sheet], found->area};
}

} // namespace kilnova
