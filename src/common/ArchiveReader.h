#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace kilnova {

/// Reads back what ArchiveWriter wrote, in the same order. It never reads past the end and never
/// trusts a count or length beyond the bytes that are left: every such case throws ArchiveError
/// naming the byte where reading stopped.
class ArchiveReader final {
public:
    explicit ArchiveReader(QByteArray data)
        : mData(std::move(data))
    {
    }

    qint32 readInt32();
    float readFloat();
    double readDouble();
    /// Length prefix: one byte below 0xFF; else 0xFF and a 16-bit length below 0xFFFE; else 0xFF,
    /// 0xFFFF and a 32-bit length. The 0xFF 0xFFFE prefix (a UTF-16 string) is refused.
    QString readString();
    QStringList readStringList();
    QByteArray readRaw(qsizetype size);
    /// A 4-byte count of items that each take at least minItemSize bytes; a negative count or one the
    /// remaining bytes cannot hold is refused before anything is allocated.
    qint32 readCount(qsizetype minItemSize);

    qsizetype position() const { return mPos; }
    qsizetype remaining() const { return mData.size() - mPos; }
    bool atEnd() const { return mPos == mData.size(); }

private:
    const char* take(qsizetype size, const char* what);
    quint16 readUInt16();
    quint32 readUInt32();
    [[noreturn]] void fail(qsizetype at, const QString& reason) const;

    QByteArray mData;
    qsizetype mPos = 0;
};

} // namespace kilnova
