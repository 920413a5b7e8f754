#include "import/ZipArchive.h"

#include "import/WorkbookError.h"

#include <QStringList>
#include <QtEndian>

#include <zlib.h>

namespace kilnova {

namespace {

constexpr quint32 kEndOfDirectory = 0x06054b50;
constexpr quint32 kDirectoryEntry = 0x02014b50;
constexpr quint32 kLocalHeader = 0x04034b50;
constexpr int kStored = 0;
constexpr int kDeflated = 8;
/// Deflate never packs more than 1032 bytes into one; a member that claims more is a bomb.
constexpr quint64 kMaxDeflateRatio = 1032;

[[noreturn]] void damaged()
{
    throw WorkbookError(QStringLiteral("it is damaged or not an Excel workbook."));
}

quint16 u16(const QByteArray& b, qsizetype at)
{
    if (at < 0 || at + 2 > b.size())
        damaged();
    return qFromLittleEndian<quint16>(b.constData() + at);
}

quint32 u32(const QByteArray& b, qsizetype at)
{
    if (at < 0 || at + 4 > b.size())
        damaged();
    return qFromLittleEndian<quint32>(b.constData() + at);
}

} // namespace

bool ZipArchive::hasSignature(const QByteArray& bytes)
{
    return bytes.startsWith(QByteArray("PK\x03\x04", 4)) || bytes.startsWith(QByteArray("PK\x05\x06", 4));
}

ZipArchive::ZipArchive(QByteArray bytes)
    : mBytes(std::move(bytes))
{
    // The directory's end record sits within the last 64 KiB (its comment may precede the end).
    qsizetype end = -1;
    for (qsizetype at = mBytes.size() - 22; at >= 0 && at >= mBytes.size() - 22 - 0xFFFF; --at) {
        if (u32(mBytes, at) == kEndOfDirectory) {
            end = at;
            break;
        }
    }
    if (end < 0)
        damaged();
    const int entries = u16(mBytes, end + 10);
    qsizetype at = u32(mBytes, end + 16);
    for (int i = 0; i < entries; ++i) {
        if (u32(mBytes, at) != kDirectoryEntry)
            damaged();
        Member m;
        m.method = u16(mBytes, at + 10);
        m.crc = u32(mBytes, at + 16);
        m.compressedSize = u32(mBytes, at + 20);
        m.size = u32(mBytes, at + 24);
        const int nameLength = u16(mBytes, at + 28);
        const int extraLength = u16(mBytes, at + 30);
        const int commentLength = u16(mBytes, at + 32);
        m.localHeader = u32(mBytes, at + 42);
        if (at + 46 + nameLength > mBytes.size())
            damaged();
        m.name = QString::fromUtf8(mBytes.constData() + at + 46, nameLength);
        mMembers.push_back(m);
        at += 46 + nameLength + extraLength + commentLength;
    }
}

QStringList ZipArchive::names() const
{
    QStringList list;
    for (const Member& m : mMembers)
        list << m.name;
    return list;
}

std::optional<QByteArray> ZipArchive::read(const QString& name) const
{
    const Member* member = nullptr;
    for (const Member& m : mMembers) {
        if (m.name.compare(name, Qt::CaseInsensitive) == 0)
            member = &m;
    }
    if (!member)
        return std::nullopt;
    if (u32(mBytes, member->localHeader) != kLocalHeader)
        damaged();
    const qsizetype data = member->localHeader + 30 + u16(mBytes, member->localHeader + 26) +
                           u16(mBytes, member->localHeader + 28);
    if (data + member->compressedSize > mBytes.size())
        damaged();
    // Sizes are checked before anything is allocated: the directory is the file's word, not ours.
    if (member->size > kMaxMemberSize || mUnpacked + member->size > kMaxUnpacked)
        throw WorkbookError(
            QStringLiteral("its part %1 unpacks to more than %2 MB, more than a workbook of "
                           "records holds.")
                .arg(name)
                .arg((member->size > kMaxMemberSize ? kMaxMemberSize : kMaxUnpacked) / (1024 * 1024)));
    if ((member->method == kStored && member->size != member->compressedSize) ||
        (member->method == kDeflated &&
         static_cast<quint64>(member->size) > kMaxDeflateRatio * member->compressedSize + 64))
        damaged();
    mUnpacked += member->size;

    QByteArray content;
    if (member->method == kStored) {
        content = mBytes.mid(data, member->compressedSize);
    } else if (member->method == kDeflated) {
        content.resize(member->size);
        z_stream z{};
        if (inflateInit2(&z, -MAX_WBITS) != Z_OK)
            damaged();
        z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(mBytes.constData() + data));
        z.avail_in = member->compressedSize;
        z.next_out = reinterpret_cast<Bytef*>(content.data());
        z.avail_out = member->size;
        const int status = inflate(&z, Z_FINISH);
        const uLong produced = z.total_out;
        inflateEnd(&z);
        if (status != Z_STREAM_END || produced != member->size)
            damaged();
    } else {
        throw WorkbookError(
            QStringLiteral("its part %1 is compressed in a way that cannot be read.").arg(name));
    }
    const uLong crc =
        crc32(0L, reinterpret_cast<const Bytef*>(content.constData()), static_cast<uInt>(content.size()));
    if (crc != member->crc)
        damaged();
    return content;
}

} // namespace kilnova
