#include "common/ArchiveWriter.h"

#include "common/Cp1252.h"

#include <QtEndian>

#include <bit>
#include <limits>

namespace kilnova {

void ArchiveWriter::writeUInt16(quint16 value)
{
    char bytes[2];
    qToLittleEndian(value, bytes);
    mData.append(bytes, sizeof bytes);
}

void ArchiveWriter::writeUInt32(quint32 value)
{
    char bytes[4];
    qToLittleEndian(value, bytes);
    mData.append(bytes, sizeof bytes);
}

void ArchiveWriter::writeInt32(qint32 value)
{
    writeUInt32(static_cast<quint32>(value));
}

void ArchiveWriter::writeFloat(float value)
{
    writeUInt32(std::bit_cast<quint32>(value));
}

void ArchiveWriter::writeDouble(double value)
{
    char bytes[8];
    qToLittleEndian(std::bit_cast<quint64>(value), bytes);
    mData.append(bytes, sizeof bytes);
}

void ArchiveWriter::writeString(QStringView text)
{
    const QByteArray bytes = toCp1252(text);
    const auto length = static_cast<quint64>(bytes.size());
    Q_ASSERT(length <= std::numeric_limits<quint32>::max());
    if (length < 0xFF) {
        mData.append(static_cast<char>(length));
    } else if (length < 0xFFFE) {
        mData.append('\xFF');
        writeUInt16(static_cast<quint16>(length));
    } else {
        mData.append('\xFF');
        writeUInt16(0xFFFF);
        writeUInt32(static_cast<quint32>(length));
    }
    mData.append(bytes);
}

void ArchiveWriter::writeStringList(const QStringList& list)
{
    writeInt32(static_cast<qint32>(list.size()));
    for (const QString& s : list)
        writeString(s);
}

void ArchiveWriter::writeRaw(QByteArrayView bytes)
{
    mData.append(bytes);
}

} // namespace kilnova
