#include "import/CompoundFile.h"

#include "import/WorkbookError.h"

#include <QtEndian>

namespace kilnova {

namespace {

constexpr quint32 kEndOfChain = 0xFFFFFFFE;
constexpr quint32 kFreeSector = 0xFFFFFFFF;
constexpr quint32 kNoStream = 0xFFFFFFFF;
constexpr int kHeaderSize = 512;
constexpr int kEntrySize = 128;
constexpr int kStreamEntry = 2;
constexpr int kRootEntry = 5;

[[noreturn]] void damaged()
{
    throw WorkbookError(QStringLiteral("it is damaged or not an Excel workbook."));
}

std::vector<quint32> toWords(const QByteArray& bytes)
{
    std::vector<quint32> words(static_cast<std::size_t>(bytes.size() / 4));
    for (std::size_t i = 0; i < words.size(); ++i)
        words[i] = qFromLittleEndian<quint32>(bytes.constData() + 4 * i);
    return words;
}

} // namespace

bool CompoundFile::hasSignature(const QByteArray& bytes)
{
    return bytes.startsWith(QByteArray::fromHex("D0CF11E0A1B11AE1"));
}

CompoundFile::CompoundFile(QByteArray bytes)
    : mBytes(std::move(bytes))
{
    if (mBytes.size() < kHeaderSize || !hasSignature(mBytes))
        damaged();
    const int sectorShift = qFromLittleEndian<quint16>(mBytes.constData() + 0x1E);
    const int miniShift = qFromLittleEndian<quint16>(mBytes.constData() + 0x20);
    if ((sectorShift != 9 && sectorShift != 12) || miniShift != 6)
        damaged();
    mSectorSize = 1 << sectorShift;
    mMiniSectorSize = 1 << miniShift;
    mMiniCutoff = u32(0x38);
    const quint32 fatSectors = u32(0x2C);
    if (fatSectors > static_cast<quint32>(mBytes.size() / mSectorSize) + 1)
        damaged();

    // The sectors of the allocation table: 109 listed in the header, the rest in a chain of its own.
    std::vector<quint32> fatList;
    for (int i = 0; i < 109 && fatList.size() < fatSectors; ++i)
        fatList.push_back(u32(0x4C + 4 * i));
    quint32 next = u32(0x44);
    const int perSector = mSectorSize / 4 - 1;
    for (quint32 guard = 0; fatList.size() < fatSectors; ++guard) {
        if (next == kEndOfChain || next == kFreeSector || guard > fatSectors)
            damaged();
        const std::vector<quint32> words = toWords(sector(next));
        for (int i = 0; i < perSector && fatList.size() < fatSectors; ++i)
            fatList.push_back(words[static_cast<std::size_t>(i)]);
        next = words[static_cast<std::size_t>(perSector)];
    }
    for (quint32 s : fatList) {
        const std::vector<quint32> words = toWords(sector(s));
        mFat.insert(mFat.end(), words.begin(), words.end());
    }

    const QByteArray directory = readChain(u32(0x30), 0);
    for (qsizetype offset = 0; offset + kEntrySize <= directory.size(); offset += kEntrySize) {
        const char* e = directory.constData() + offset;
        const int nameBytes = std::min<int>(qFromLittleEndian<quint16>(e + 0x40), 64);
        Entry entry;
        entry.name = QString::fromUtf16(reinterpret_cast<const char16_t*>(e), std::max(0, nameBytes / 2 - 1));
        entry.type = static_cast<unsigned char>(e[0x42]);
        entry.left = qFromLittleEndian<quint32>(e + 0x44);
        entry.right = qFromLittleEndian<quint32>(e + 0x48);
        entry.child = qFromLittleEndian<quint32>(e + 0x4C);
        entry.start = qFromLittleEndian<quint32>(e + 0x74);
        // Version 3 files leave the high half of the size undefined.
        entry.size =
            sectorShift == 9 ? qFromLittleEndian<quint32>(e + 0x78) : qFromLittleEndian<quint64>(e + 0x78);
        mEntries.push_back(entry);
    }
    if (mEntries.empty() || mEntries.front().type != kRootEntry)
        damaged();

    const quint32 miniFatStart = u32(0x3C);
    if (miniFatStart != kEndOfChain && miniFatStart != kFreeSector) {
        mMiniFat = toWords(readChain(miniFatStart, 0));
        mMiniStream = readChain(mEntries.front().start, mEntries.front().size);
    }
}

quint32 CompoundFile::u32(qsizetype offset) const
{
    return qFromLittleEndian<quint32>(mBytes.constData() + offset);
}

QByteArray CompoundFile::sector(quint32 index) const
{
    const qint64 offset = (static_cast<qint64>(index) + 1) * mSectorSize;
    if (index >= 0xFFFFFFFA || offset + mSectorSize > mBytes.size())
        damaged();
    return mBytes.mid(offset, mSectorSize);
}

std::vector<quint32> CompoundFile::chain(quint32 start, const std::vector<quint32>& table) const
{
    // Each sector at most once: a chain that loops is damaged, and is noticed before it has cost more
    // than the table is long.
    std::vector<quint32> sectors;
    std::vector<bool> seen(table.size(), false);
    for (quint32 s = start; s != kEndOfChain;) {
        if (s >= table.size() || seen[s])
            damaged();
        seen[s] = true;
        sectors.push_back(s);
        s = table[s];
    }
    return sectors;
}

QByteArray CompoundFile::readChain(quint32 start, quint64 size) const
{
    const std::vector<quint32> sectors = chain(start, mFat);
    QByteArray bytes;
    bytes.reserve(static_cast<qsizetype>(sectors.size()) * mSectorSize);
    for (quint32 s : sectors)
        bytes += sector(s);
    if (size > 0) {
        if (size > static_cast<quint64>(bytes.size()))
            damaged();
        bytes.truncate(static_cast<qsizetype>(size));
    }
    return bytes;
}

QByteArray CompoundFile::readMiniChain(quint32 start, quint64 size) const
{
    QByteArray bytes;
    for (quint32 s : chain(start, mMiniFat)) {
        const qint64 offset = static_cast<qint64>(s) * mMiniSectorSize;
        if (offset + mMiniSectorSize > mMiniStream.size())
            damaged();
        bytes += mMiniStream.mid(offset, mMiniSectorSize);
    }
    if (size > static_cast<quint64>(bytes.size()))
        damaged();
    bytes.truncate(static_cast<qsizetype>(size));
    return bytes;
}

std::optional<QByteArray> CompoundFile::stream(const QString& name) const
{
    // The children of the root form a tree through their left and right links.
    std::vector<quint32> pending{mEntries.front().child};
    std::size_t visited = 0;
    while (!pending.empty()) {
        const quint32 index = pending.back();
        pending.pop_back();
        if (index == kNoStream)
            continue;
        if (index >= mEntries.size() || ++visited > mEntries.size())
            damaged();
        const Entry& entry = mEntries[index];
        if (entry.type == kStreamEntry && entry.name.compare(name, Qt::CaseInsensitive) == 0) {
            if (entry.size == 0)
                return QByteArray();
            return entry.size < mMiniCutoff ? readMiniChain(entry.start, entry.size)
                                            : readChain(entry.start, entry.size);
        }
        pending.push_back(entry.left);
        pending.push_back(entry.right);
    }
    return std::nullopt;
}

} // namespace kilnova
