#pragma once

#include "common/ByteBuilder.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <zlib.h>

namespace kilnova::test {

/// One BIFF record: type, size, data.
inline QByteArray biffRecord(quint16 type, const QByteArray& data)
{
    return ByteBuilder().u16(type).u16(static_cast<quint16>(data.size())).raw(data).bytes();
}

/// A BIFF8 string of one byte per character, with its 16-bit count and flag byte.
inline QByteArray biff8Text(const QByteArray& latin1)
{
    return ByteBuilder().u16(static_cast<quint16>(latin1.size())).u8(0).raw(latin1).bytes();
}

/// A cell record's row, column and format.
inline ByteBuilder cellHead(int row, int column)
{
    ByteBuilder b;
    b.u16(static_cast<quint16>(row)).u16(static_cast<quint16>(column)).u16(0x0F);
    return b;
}

/// Builds the Workbook stream of an Excel workbook by hand: the globals (with whatever records a
/// test puts before the sheets) and one set of records per sheet, the sheets' offsets filled in.
class BiffWorkbook {
public:
    explicit BiffWorkbook(bool biff8 = true)
        : mBiff8(biff8)
    {
    }
    /// Records of the globals, after BOF (an SST, names, FILEPASS...).
    BiffWorkbook& globals(const QByteArray& records)
    {
        mGlobals += records;
        return *this;
    }
    /// A sheet and the records between its BOF and EOF.
    BiffWorkbook& sheet(const QByteArray& name, const QByteArray& records)
    {
        mSheets.append({name, records});
        return *this;
    }

    QByteArray stream() const
    {
        const quint16 version = mBiff8 ? 0x0600 : 0x0500;
        auto bof = [version](quint16 kind) {
            return biffRecord(0x0809, ByteBuilder().u16(version).u16(kind).u32(0).u32(0).bytes());
        };
        const QByteArray eof = biffRecord(0x000A, {});
        QList<QByteArray> sheets;
        for (const auto& [name, records] : mSheets)
            sheets << bof(0x0010) + records + eof;
        auto boundSheets = [&](const QList<quint32>& offsets) {
            QByteArray out;
            for (qsizetype i = 0; i < mSheets.size(); ++i) {
                ByteBuilder b;
                b.u32(offsets[i]).u8(0).u8(0).u8(static_cast<unsigned>(mSheets[i].first.size()));
                if (mBiff8)
                    b.u8(0);
                b.raw(mSheets[i].first);
                out += biffRecord(0x0085, b.bytes());
            }
            return out;
        };
        QList<quint32> offsets(mSheets.size(), 0);
        QByteArray globals = bof(0x0005) + mGlobals + boundSheets(offsets) + eof;
        quint32 at = static_cast<quint32>(globals.size());
        for (qsizetype i = 0; i < sheets.size(); ++i) {
            offsets[i] = at;
            at += static_cast<quint32>(sheets[i].size());
        }
        QByteArray stream = bof(0x0005) + mGlobals + boundSheets(offsets) + eof;
        for (const QByteArray& s : sheets)
            stream += s;
        return stream;
    }

    /// The stream inside a compound file, named Workbook (BIFF8) or Book (BIFF5).
    QByteArray file() const { return compoundFile(stream(), mBiff8 ? "Workbook" : "Book"); }

    /// A compound file (512-byte sectors) with one stream below the root. The stream is padded to
    /// 4096 bytes so that it lives in big sectors; it may be at most 63 KiB.
    static QByteArray compoundFile(QByteArray stream, const char* name)
    {
        const quint32 size = static_cast<quint32>(std::max<qsizetype>(stream.size(), 4096));
        stream.append(QByteArray(static_cast<qsizetype>((size + 511) / 512 * 512) - stream.size(), '\0'));
        const quint32 sectors = static_cast<quint32>(stream.size() / 512);
        const quint32 directory = sectors;
        const quint32 fat = sectors + 1;
        ByteBuilder header;
        header.raw(QByteArray::fromHex("D0CF11E0A1B11AE1")).raw(QByteArray(16, '\0'));
        header.u16(0x3E).u16(3).u16(0xFFFE).u16(9).u16(6).raw(QByteArray(6, '\0'));
        header.u32(0).u32(1).u32(directory).u32(0).u32(4096).u32(0xFFFFFFFE).u32(0).u32(0xFFFFFFFE).u32(0);
        header.u32(fat);
        for (int i = 1; i < 109; ++i)
            header.u32(0xFFFFFFFF);

        auto entry = [](const QString& entryName, int type, quint32 child, quint32 start, quint32 length) {
            ByteBuilder e;
            QByteArray utf16(64, '\0');
            for (qsizetype i = 0; i < entryName.size(); ++i)
                utf16[2 * i] = static_cast<char>(entryName[i].unicode());
            e.raw(utf16).u16(static_cast<quint16>(entryName.isEmpty() ? 0 : 2 * (entryName.size() + 1)));
            e.u8(static_cast<unsigned>(type)).u8(1).u32(0xFFFFFFFF).u32(0xFFFFFFFF).u32(child);
            e.raw(QByteArray(16 + 4 + 16, '\0')).u32(start).u32(length).u32(0);
            return e.bytes();
        };
        QByteArray dir = entry("Root Entry", 5, 1, 0xFFFFFFFE, 0) +
                         entry(QString::fromLatin1(name), 2, 0xFFFFFFFF, 0, size) +
                         entry({}, 0, 0xFFFFFFFF, 0, 0) + entry({}, 0, 0xFFFFFFFF, 0, 0);

        ByteBuilder table;
        for (quint32 s = 0; s < sectors; ++s)
            table.u32(s + 1 < sectors ? s + 1 : 0xFFFFFFFE);
        table.u32(0xFFFFFFFE).u32(0xFFFFFFFD);
        while (table.bytes().size() < 512)
            table.u32(0xFFFFFFFF);
        return header.bytes() + stream + dir + table.bytes();
    }

private:
    bool mBiff8;
    QByteArray mGlobals;
    QList<std::pair<QByteArray, QByteArray>> mSheets;
};

/// A zip file of stored (uncompressed) members, or of members whose directory claims other sizes.
class ZipBytes {
public:
    struct Member {
        QByteArray name;
        QByteArray content;
        int method = 0;
        /// The unpacked size the directory claims; the real one when left at 0.
        quint32 claimedSize = 0;
    };

    ZipBytes& add(const QByteArray& name, const QByteArray& content)
    {
        mMembers.append({name, content, 0, 0});
        return *this;
    }
    ZipBytes& add(const Member& member)
    {
        mMembers.append(member);
        return *this;
    }

    QByteArray bytes() const
    {
        QByteArray out;
        QByteArray directory;
        for (const Member& m : mMembers) {
            const quint32 crc =
                static_cast<quint32>(crc32(0, reinterpret_cast<const Bytef*>(m.content.constData()),
                                           static_cast<uInt>(m.content.size())));
            const quint32 packed = static_cast<quint32>(m.content.size());
            const quint32 size = m.claimedSize ? m.claimedSize : packed;
            const quint32 at = static_cast<quint32>(out.size());
            out += ByteBuilder()
                       .u32(0x04034b50)
                       .u16(20)
                       .u16(0)
                       .u16(static_cast<quint16>(m.method))
                       .u32(0)
                       .u32(crc)
                       .u32(packed)
                       .u32(size)
                       .u16(static_cast<quint16>(m.name.size()))
                       .u16(0)
                       .raw(m.name)
                       .raw(m.content)
                       .bytes();
            directory += ByteBuilder()
                             .u32(0x02014b50)
                             .u16(20)
                             .u16(20)
                             .u16(0)
                             .u16(static_cast<quint16>(m.method))
                             .u32(0)
                             .u32(crc)
                             .u32(packed)
                             .u32(size)
                             .u16(static_cast<quint16>(m.name.size()))
                             .u16(0)
                             .u16(0)
                             .u16(0)
                             .u16(0)
                             .u32(0)
                             .u32(at)
                             .raw(m.name)
                             .bytes();
        }
        const quint32 start = static_cast<quint32>(out.size());
        out += directory;
        out += ByteBuilder()
                   .u32(0x06054b50)
                   .u16(0)
                   .u16(0)
                   .u16(static_cast<quint16>(mMembers.size()))
                   .u16(static_cast<quint16>(mMembers.size()))
                   .u32(static_cast<quint32>(directory.size()))
                   .u32(start)
                   .u16(0)
                   .bytes();
        return out;
    }

    /// The smallest .xlsx: one sheet named Data whose sheet part is given.
    static QByteArray xlsx(const QByteArray& sheetXml)
    {
        return ZipBytes()
            .add(
                "xl/workbook.xml",
                R"(<workbook xmlns:r="r"><sheets><sheet name="Data" sheetId="1" r:id="rId1"/></sheets></workbook>)")
            .add(
                "xl/_rels/workbook.xml.rels",
                R"(<Relationships><Relationship Id="rId1" Type="x/worksheet" Target="worksheets/sheet1.xml"/></Relationships>)")
            .add("xl/worksheets/sheet1.xml", sheetXml)
            .bytes();
    }

private:
    QList<Member> mMembers;
};

} // namespace kilnova::test
