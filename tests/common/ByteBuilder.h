#pragma once

#include "common/ArchiveError.h"
#include "common/ArchiveReader.h"
#include "common/ArchiveWriter.h"

#include <QByteArray>

#include <gtest/gtest.h>

#include <cstring>

namespace kilnova::test {

/// Spells out expected archive bytes by hand, without ArchiveWriter, so a layout test compares the
/// code against an independent rendering of the format.
class ByteBuilder {
public:
    ByteBuilder& u8(unsigned v)
    {
        mBytes.append(static_cast<char>(v & 0xFF));
        return *this;
    }
    ByteBuilder& u16(quint16 v) { return u8(v).u8(v >> 8); }
    ByteBuilder& u32(quint32 v) { return u16(v & 0xFFFF).u16(v >> 16); }
    ByteBuilder& i32(qint32 v) { return u32(static_cast<quint32>(v)); }
    ByteBuilder& f32(float v)
    {
        quint32 bits;
        std::memcpy(&bits, &v, 4);
        return u32(bits);
    }
    ByteBuilder& f64(double v)
    {
        quint64 bits;
        std::memcpy(&bits, &v, 8);
        return u32(static_cast<quint32>(bits)).u32(static_cast<quint32>(bits >> 32));
    }
    /// A short string (< 255 bytes, already in cp1252) with its one-byte prefix.
    ByteBuilder& str(const QByteArray& cp1252)
    {
        EXPECT_LT(cp1252.size(), 255);
        u8(static_cast<unsigned>(cp1252.size()));
        mBytes.append(cp1252);
        return *this;
    }
    ByteBuilder& raw(const QByteArray& bytes)
    {
        mBytes.append(bytes);
        return *this;
    }
    ByteBuilder& list(const QList<QByteArray>& strings)
    {
        i32(static_cast<qint32>(strings.size()));
        for (const QByteArray& s : strings)
            str(s);
        return *this;
    }

    const QByteArray& bytes() const { return mBytes; }

private:
    QByteArray mBytes;
};

/// A parameter block stores as exactly `expected`, loads back equal, and refuses every cut-short
/// version of itself.
template <typename Block> void expectStoredAs(const Block& sample, const QByteArray& expected)
{
    ArchiveWriter out;
    sample.serialize(out);
    EXPECT_EQ(out.data().toHex(' '), expected.toHex(' '));

    ArchiveReader in(expected);
    Block loaded;
    loaded.load(in);
    EXPECT_TRUE(in.atEnd());
    EXPECT_TRUE(loaded == sample);

    for (qsizetype cut = 0; cut < expected.size(); ++cut) {
        ArchiveReader shortIn(expected.left(cut));
        Block partial;
        EXPECT_THROW(partial.load(shortIn), ArchiveError) << "cut at " << cut;
    }
}

} // namespace kilnova::test
