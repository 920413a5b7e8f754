#pragma once

#include <QByteArrayView>
#include <QString>

#include <optional>
#include <vector>

namespace kilnova {

/// Reads the data of a BIFF record, and of the CONTINUE records that carry it on, without ever
/// reading past its end: what is missing reads as zero and marks the reader exhausted. Strings are
/// read as Excel splits them over CONTINUE records, where each piece of characters starts with a new
/// flag byte saying whether the characters that follow take one byte or two.
class BiffReader final {
public:
    struct Record {
        quint16 type = 0;
        QByteArrayView data;
    };
    static constexpr quint16 kContinue = 0x003C;

    /// The record at offset in a stream, offset moved past it; nothing at the end of the stream or
    /// at a record cut short.
    static std::optional<Record> nextRecord(QByteArrayView stream, qsizetype& offset);

    explicit BiffReader(QByteArrayView data) { mPieces.push_back(data); }
    explicit BiffReader(std::vector<QByteArrayView> pieces);

    bool exhausted() const { return mExhausted; }
    /// True while at least one more byte can be read.
    bool hasMore() const;

    quint8 u8();
    quint16 u16();
    quint32 u32();
    double f64();
    void skip(qint64 count);

    /// A BIFF8 string: the flag byte, its optional run and extension counts, the characters, then the
    /// runs and the extension skipped. `characters` is the count read before the flags.
    QString biff8String(int characters);
    /// A BIFF8 string with a 16-bit character count (cells, formula results).
    QString biff8String16() { return biff8String(u16()); }
    /// One code page 1252 byte per character, as BIFF5 stores text.
    QString byteString(int characters);

private:
    /// Moves to the next piece when the current one is used up; false when there is none.
    bool advance();
    QString characters(int count, bool wide);

    std::vector<QByteArrayView> mPieces;
    std::size_t mPiece = 0;
    qsizetype mPos = 0;
    bool mExhausted = false;
};

} // namespace kilnova
