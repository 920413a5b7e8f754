#include "import/XlsGlobals.h"

#include "import/BiffReader.h"
#include "import/WorkbookError.h"

namespace kilnova {

namespace {

constexpr quint16 kBof = 0x0809;
constexpr quint16 kEof = 0x000A;
constexpr quint16 kFilePass = 0x002F;
constexpr quint16 kBoundSheet = 0x0085;
constexpr quint16 kExternSheet = 0x0017;
constexpr quint16 kName = 0x0018;
constexpr quint16 kSst = 0x00FC;
constexpr quint16 kBiff8Version = 0x0600;
constexpr quint16 kBuiltInName = 0x0020;

[[noreturn]] void notAWorkbook()
{
    throw WorkbookError(QStringLiteral("it is damaged or not an Excel 95/97 workbook."));
}

} // namespace

void XlsGlobals::readSharedStrings(QByteArrayView stream, QByteArrayView first, qsizetype& offset)
{
    // The table goes on in CONTINUE records; a string may be cut anywhere between them.
    std::vector<QByteArrayView> pieces{first};
    for (qsizetype next = offset;;) {
        const std::optional<BiffReader::Record> r = BiffReader::nextRecord(stream, next);
        if (!r || r->type != BiffReader::kContinue)
            break;
        pieces.push_back(r->data);
        offset = next;
    }
    BiffReader data(std::move(pieces));
    data.skip(4); // references to strings in the cells
    const quint32 unique = data.u32();
    // The count is the file's word: strings are read while there are bytes, never reserved for.
    for (quint32 i = 0; i < unique && data.hasMore() && !data.exhausted(); ++i)
        mSharedStrings << data.biff8String(data.u16());
}

XlsGlobals XlsGlobals::read(const QByteArray& stream)
{
    XlsGlobals globals;
    qsizetype offset = 0;
    bool first = true;
    while (const std::optional<BiffReader::Record> record = BiffReader::nextRecord(stream, offset)) {
        BiffReader data(record->data);
        if (first) {
            // BIFF5 and BIFF8 both open with this record; older workbooks are not read.
            if (record->type != kBof)
                notAWorkbook();
            globals.mBiff8 = data.u16() == kBiff8Version;
            first = false;
            continue;
        }
        switch (record->type) {
        case kEof:
            return globals;
        case kFilePass:
            // Everything after this record is encrypted.
            globals.mEncrypted = true;
            return globals;
        case kBoundSheet: {
            globals.mSheetOffsets.push_back(static_cast<qsizetype>(data.u32()));
            data.skip(2); // visibility and kind
            const int characters = data.u8();
            globals.mSheetNames << (globals.mBiff8 ? data.biff8String(characters)
                                                   : data.byteString(characters));
            break;
        }
        case kSst:
            if (globals.mBiff8)
                globals.readSharedStrings(stream, record->data, offset);
            break;
        case kExternSheet:
            if (globals.mBiff8) {
                const int count = data.u16();
                for (int i = 0; i < count && !data.exhausted(); ++i) {
                    data.skip(2); // the supporting workbook, always this one for our names
                    const int sheet = data.u16();
                    data.skip(2);
                    if (!data.exhausted())
                        globals.mReferenceSheets.push_back(sheet);
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
        notAWorkbook();
    return globals;
}

std::optional<QString> XlsGlobals::sharedString(quint32 index) const
{
    if (index >= static_cast<quint32>(mSharedStrings.size()))
        return std::nullopt;
    return mSharedStrings[static_cast<qsizetype>(index)];
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
