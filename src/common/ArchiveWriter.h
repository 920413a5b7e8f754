#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QStringList>
#include <QStringView>

#include <utility>

namespace kilnova {

/// Builds a flat little-endian archive in memory: 4-byte integers, IEEE singles and doubles, strings in
/// code page 1252 behind a length prefix, raw blocks, and string lists behind a 4-byte count. There is
/// no framing: the reader must ask for the same values in the same order.
class ArchiveWriter final {
public:
    void writeInt32(qint32 value);
    void writeFloat(float value);
    void writeDouble(double value);
    /// Length prefix (1, 3 or 7 bytes, see ArchiveReader::readString) then the cp1252 bytes.
    void writeString(QStringView text);
    /// A 4-byte count, then each string.
    void writeStringList(const QStringList& list);
    /// Bytes as they stand.
    void writeRaw(QByteArrayView bytes);

    const QByteArray& data() const { return mData; }
    QByteArray takeData() { return std::exchange(mData, {}); }

private:
    void writeUInt16(quint16 value);
    void writeUInt32(quint32 value);

    QByteArray mData;
};

} // namespace kilnova
