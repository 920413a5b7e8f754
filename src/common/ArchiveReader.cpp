#include "common/ArchiveReader.h"

#include "common/ArchiveError.h"
#include "common/Cp1252.h"

#include <QtEndian>

#include <bit>

namespace kilnova {

void ArchiveReader::fail(qsizetype at, const QString& reason) const
{
    throw ArchiveError(QStringLiteral("%1 at byte %2").arg(reason).arg(at));
}

const char* ArchiveReader::take(qsizetype size, const char* what)
{
    if (size < 0)
        fail(mPos, QStringLiteral("negative size of %1").arg(QLatin1StringView(what)));
    if (size > remaining()) {
        fail(mPos, QStringLiteral("the data ends inside %1 (%2 bytes needed, %3 left)")
                       .arg(QLatin1StringView(what))
                       .arg(size)
                       .arg(remaining()));
    }
    const char* p = mData.constData() + mPos;
    mPos += size;
    return p;
}

quint16 ArchiveReader::readUInt16()
{
    return qFromLittleEndian<quint16>(take(2, "a string length"));
}

quint32 ArchiveReader::readUInt32()
{
    return qFromLittleEndian<quint32>(take(4, "a string length"));
}

qint32 ArchiveReader::readInt32()
{
    return static_cast<qint32>(qFromLittleEndian<quint32>(take(4, "an integer")));
}

float ArchiveReader::readFloat()
{
    return std::bit_cast<float>(qFromLittleEndian<quint32>(take(4, "a single-precision number")));
}

double ArchiveReader::readDouble()
{
    return std::bit_cast<double>(qFromLittleEndian<quint64>(take(8, "a double-precision number")));
}

QString ArchiveReader::readString()
{
    const qsizetype start = mPos;
    quint64 length = static_cast<unsigned char>(*take(1, "a string length"));
    if (length == 0xFF) {
        length = readUInt16();
        if (length == 0xFFFE)
            fail(start, QStringLiteral("a wide-character string, which this format never holds,"));
        if (length == 0xFFFF)
            length = readUInt32();
    }
    if (length > static_cast<quint64>(remaining())) {
        fail(start, QStringLiteral("a string of %1 characters longer than the %2 bytes left")
                        .arg(length)
                        .arg(remaining()));
    }
    const qsizetype size = static_cast<qsizetype>(length);
    return fromCp1252(QByteArrayView(take(size, "a string"), size));
}

qint32 ArchiveReader::readCount(qsizetype minItemSize)
{
    const qsizetype start = mPos;
    const qint32 count = readInt32();
    if (count < 0)
        fail(start, QStringLiteral("a negative count (%1)").arg(count));
    if (minItemSize > 0 && count > remaining() / minItemSize) {
        fail(start, QStringLiteral("a count of %1 items that the %2 bytes left cannot hold")
                        .arg(count)
                        .arg(remaining()));
    }
    return count;
}

QStringList ArchiveReader::readStringList()
{
    const qint32 count = readCount(1); // an empty string still takes its prefix byte
    QStringList list;
    list.reserve(count);
    for (qint32 i = 0; i < count; ++i)
        list.append(readString());
    return list;
}

QByteArray ArchiveReader::readRaw(qsizetype size)
{
    const char* p = take(size, "a fixed block");
    return QByteArray(p, size);
}

} // namespace kilnova
