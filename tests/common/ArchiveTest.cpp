#include "common/ArchiveError.h"
#include "common/ArchiveReader.h"
#include "common/ArchiveWriter.h"
#include "common/Cp1252.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

using namespace kilnova;

namespace {

QByteArray hex(const char* text)
{
    return QByteArray::fromHex(text);
}

TEST(Archive, NumbersAndListsAreLittleEndianInTheirOwnWidth)
{
    struct Case {
        const char* what;
        std::function<void(ArchiveWriter&)> write;
        const char* bytes;
    };
    const Case cases[] = {
        {"int 0x12345678", [](ArchiveWriter& w) { w.writeInt32(0x12345678); }, "78563412"},
        {"int -2", [](ArchiveWriter& w) { w.writeInt32(-2); }, "feffffff"},
        {"int min", [](ArchiveWriter& w) { w.writeInt32(std::numeric_limits<qint32>::min()); }, "00000080"},
        {"float 1500", [](ArchiveWriter& w) { w.writeFloat(1500.0f); }, "0080bb44"},
        {"float -0", [](ArchiveWriter& w) { w.writeFloat(-0.0f); }, "00000080"},
        {"double 1500", [](ArchiveWriter& w) { w.writeDouble(1500.0); }, "0000000000709740"},
        {"double -2.5", [](ArchiveWriter& w) { w.writeDouble(-2.5); }, "00000000000004c0"},
        {"list",
         [](ArchiveWriter& w) {
             w.writeStringList({"ab", ""});
         },
         "02000000"
         "026162"
         "00"},
        {"empty list", [](ArchiveWriter& w) { w.writeStringList({}); }, "00000000"},
        {"raw", [](ArchiveWriter& w) { w.writeRaw(hex("00ff10")); }, "00ff10"},
    };
    for (const Case& c : cases) {
        ArchiveWriter w;
        c.write(w);
        EXPECT_EQ(w.data().toHex(), QByteArray(c.bytes)) << c.what;
    }
}

TEST(Archive, ValuesReadBackBitForBit)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    ArchiveWriter w;
    w.writeInt32(-7);
    w.writeFloat(5.0654f);
    w.writeDouble(nan);
    w.writeDouble(-0.0);
    w.writeStringList({"Blast 1", "", "Ærø"});
    w.writeRaw(hex("0001"));

    ArchiveReader r(w.data());
    EXPECT_EQ(r.readInt32(), -7);
    EXPECT_EQ(r.readFloat(), 5.0654f);
    EXPECT_TRUE(std::isnan(r.readDouble()));
    EXPECT_TRUE(std::signbit(r.readDouble()));
    EXPECT_EQ(r.readStringList(), QStringList({"Blast 1", "", "Ærø"}));
    EXPECT_EQ(r.readRaw(2), hex("0001"));
    EXPECT_TRUE(r.atEnd());
}

TEST(Archive, StringLengthPrefixSwitchesFormAtItsBoundaries)
{
    struct Case {
        qsizetype length;
        const char* prefix;
    };
    const Case cases[] = {
        {0, "00"},
        {1, "01"},
        {254, "fe"},
        {255, "ffff00"},
        {0xFFFD, "fffdff"},
        {0xFFFE, "ffffff"
                 "feff0000"},
        {0xFFFF, "ffffff"
                 "ffff0000"},
        {70000, "ffffff"
                "70110100"},
    };
    for (const Case& c : cases) {
        QString text(c.length, QChar(u'x'));
        if (c.length > 0)
            text[c.length - 1] = QChar(u'é'); // the last character must survive as well
        ArchiveWriter w;
        w.writeString(text);
        const QByteArray prefix = hex(c.prefix);
        EXPECT_EQ(w.data().left(prefix.size()).toHex(), QByteArray(c.prefix)) << c.length;
        EXPECT_EQ(w.data().size(), prefix.size() + c.length) << c.length;

        ArchiveReader r(w.data());
        EXPECT_EQ(r.readString(), text) << c.length;
        EXPECT_TRUE(r.atEnd()) << c.length;
    }
}

TEST(Archive, ReaderAcceptsLongPrefixOnShortString)
{
    ArchiveReader r(hex("ff0300616263"
                        "ffffff02000000"
                        "6465"));
    EXPECT_EQ(r.readString(), QStringLiteral("abc"));
    EXPECT_EQ(r.readString(), QStringLiteral("de"));
}

TEST(Archive, ReaderRefusesToReadPastTheEndOrTrustAbsurdCounts)
{
    struct Case {
        const char* what;
        QByteArray bytes;
        std::function<void(ArchiveReader&)> read;
    };
    const Case cases[] = {
        {"int from 3 bytes", hex("010203"),
         [](ArchiveReader& r) {
             r.readInt32();
         }},
        {"float from 0 bytes", hex(""),
         [](ArchiveReader& r) {
             r.readFloat();
         }},
        {"double from 7 bytes", hex("01020304050607"),
         [](ArchiveReader& r) {
             r.readDouble();
         }},
        {"string from nothing", hex(""),
         [](ArchiveReader& r) {
             r.readString();
         }},
        {"string shorter than its prefix",
         hex("05"
             "61626364"),
         [](ArchiveReader& r) {
             r.readString();
         }},
        {"16-bit prefix cut", hex("ff01"),
         [](ArchiveReader& r) {
             r.readString();
         }},
        {"32-bit prefix cut", hex("ffffff010000"),
         [](ArchiveReader& r) {
             r.readString();
         }},
        {"32-bit length past the end",
         hex("ffffff"
             "ffffffff"
             "6162"),
         [](ArchiveReader& r) {
             r.readString();
         }},
        {"wide-character marker", hex("fffeff") + QByteArray(0x10000, 'a'),
         [](ArchiveReader& r) {
             r.readString();
         }},
        {"list count beyond bytes left",
         hex("03000000"
             "0000"),
         [](ArchiveReader& r) {
             r.readStringList();
         }},
        {"huge list count", hex("ffffff7f"),
         [](ArchiveReader& r) {
             r.readStringList();
         }},
        {"negative list count", hex("ffffffff"),
         [](ArchiveReader& r) {
             r.readStringList();
         }},
        {"list cut in a string",
         hex("02000000"
             "0161"
             "05"),
         [](ArchiveReader& r) {
             r.readStringList();
         }},
        {"raw block cut", hex("010203"),
         [](ArchiveReader& r) {
             r.readRaw(4);
         }},
        {"count of wide items",
         hex("02000000"
             "00000000000000"),
         [](ArchiveReader& r) {
             r.readCount(4);
         }},
    };
    for (const Case& c : cases) {
        ArchiveReader r(c.bytes);
        EXPECT_THROW(c.read(r), ArchiveError) << c.what;
    }
}

TEST(Archive, ErrorNamesTheByteWhereReadingStopped)
{
    ArchiveReader r(hex("01000000"
                        "0000"));
    r.readInt32();
    try {
        r.readInt32();
        FAIL() << "read past the end";
    } catch (const ArchiveError& e) {
        EXPECT_TRUE(e.reason().contains(QStringLiteral("at byte 4"))) << e.what();
    }
}

TEST(Cp1252, ConvertsBothWays)
{
    struct Case {
        QString text;
        const char* bytes;
    };
    const Case cases[] = {
        {QStringLiteral("Kiln 7"), "4b696c6e2037"},
        {QStringLiteral("€‚ƒ„…†‡ˆ‰Š‹Œ"), "808283848586878889"
                                         "8a8b8c"},
        {QStringLiteral("Ž‘’“”•–—˜™š›œžŸ"), "8e9192939495969798999a9b9c9e9f"},
        {QStringLiteral("\u00a0é×ÿ"), "a0e9d7ff"},
        // The five undefined bytes stand for the C1 controls of their own value.
        {QStringLiteral("\u0081\u008d\u008f\u0090\u009d"), "818d8f909d"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(toCp1252(c.text).toHex(), QByteArray(c.bytes)) << c.text.toStdString();
        EXPECT_EQ(fromCp1252(hex(c.bytes)), c.text) << c.bytes;
    }
}

TEST(Cp1252, UnrepresentableCharactersBecomeOneQuestionMarkEach)
{
    struct Case {
        QString text;
        QByteArray bytes;
    };
    const Case cases[] = {
        {QStringLiteral("SiO₂"), "SiO?"},       {QStringLiteral("Ā中"), "??"},
        {QStringLiteral("a😀b"), "a?b"},         // a surrogate pair is one character
        {QStringLiteral("\u0080\u009f"), "??"}, // C1 controls that the code page uses for other letters
        {QString(QChar(0xD800)), "?"},          // a lone surrogate
    };
    for (const Case& c : cases)
        EXPECT_EQ(toCp1252(c.text), c.bytes) << c.text.toStdString();
}

TEST(Cp1252, EveryByteSurvivesDecodeAndEncode)
{
    QByteArray all;
    for (int b = 0; b < 256; ++b)
        all.append(static_cast<char>(b));
    const QString decoded = fromCp1252(all);
    ASSERT_EQ(decoded.size(), 256);
    EXPECT_EQ(toCp1252(decoded), all);
}

} // namespace
