#include "import/BiffReader.h"

#include "common/Cp1252.h"

#include <QtEndian>

#include <cstring>

namespace kilnova {

namespace {

constexpr quint8 kWide = 0x01;
constexpr quint8 kExtended = 0x04;
constexpr quint8 kRich = 0x08;

} // namespace

std::optional<BiffReader::Record> BiffReader::nextRecord(QByteArrayView stream, qsizetype& offset)
{
    if (offset < 0 || offset + 4 > stream.size())
        return std::nullopt;
    const quint16 type = qFromLittleEndian<quint16>(stream.data() + offset);
    const quint16 size = qFromLittleEndian<quint16>(stream.data() + offset + 2);
    if (offset + 4 + size > stream.size())
        return std::nullopt;
    const Record record{type, stream.sliced(offset + 4, size)};
    offset += 4 + size;
    return record;
}

BiffReader::BiffReader(std::vector<QByteArrayView> pieces)
    : mPieces(std::move(pieces))
{
    if (mPieces.empty())
        mPieces.emplace_back();
}

bool BiffReader::advance()
{
    while (mPos >= mPieces[mPiece].size()) {
        if (mPiece + 1 >= mPieces.size())
            return false;
        ++mPiece;
        mPos = 0;
    }
    return true;
}

bool BiffReader::hasMore() const
{
    for (std::size_t p = mPiece; p < mPieces.size(); ++p) {
        if ((p == mPiece ? mPos : 0) < mPieces[p].size())
            return true;
    }
    return false;
}

quint8 BiffReader::u8()
{
    if (!advance()) {
        mExhausted = true;
        return 0;
    }
    return static_cast<quint8>(mPieces[mPiece][mPos++]);
}

quint16 BiffReader::u16()
{
    const quint16 low = u8();
    return static_cast<quint16>(low | (u8() << 8));
}

quint32 BiffReader::u32()
{
    const quint32 low = u16();
    return low | (static_cast<quint32>(u16()) << 16);
}

double BiffReader::f64()
{
    const quint64 low = u32();
    const quint64 bits = low | (static_cast<quint64>(u32()) << 32);
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

void BiffReader::skip(qint64 count)
{
    while (count > 0) {
        if (!advance()) {
            mExhausted = true;
            return;
        }
        const qint64 step = std::min<qint64>(count, mPieces[mPiece].size() - mPos);
        mPos += step;
        count -= step;
    }
}

QString BiffReader::characters(int count, bool wide)
{
    QString text;
    while (count > 0) {
        if (mPos >= mPieces[mPiece].size()) {
            // The characters go on in the next piece, which says again how wide they are.
            if (!advance()) {
                mExhausted = true;
                break;
            }
            wide = u8() & kWide;
            if (!advance()) {
                mExhausted = true;
                break;
            }
        }
        const QByteArrayView piece = mPieces[mPiece];
        const qsizetype available = (piece.size() - mPos) / (wide ? 2 : 1);
        if (available == 0) {
            // Half a wide character at the end of a piece: the file is damaged.
            mExhausted = true;
            break;
        }
        const qsizetype take = std::min<qsizetype>(count, available);
        const char* start = piece.data() + mPos;
        if (wide) {
            text.reserve(text.size() + take);
            for (qsizetype i = 0; i < take; ++i)
                text += QChar(qFromLittleEndian<quint16>(start + 2 * i));
            mPos += 2 * take;
        } else {
            text += fromCp1252(QByteArrayView(start, take));
            mPos += take;
        }
        count -= static_cast<int>(take);
    }
    return text;
}

QString BiffReader::biff8String(int count)
{
    const quint8 flags = u8();
    const quint16 runs = (flags & kRich) ? u16() : 0;
    const quint32 extension = (flags & kExtended) ? u32() : 0;
    QString text = characters(count, flags & kWide);
    skip(4 * static_cast<qint64>(runs));
    skip(extension);
    return text;
}

QString BiffReader::byteString(int count)
{
    return characters(count, false);
}

} // namespace kilnova
