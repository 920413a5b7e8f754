#include "import/LineReader.h"
#include "import/FieldExtractor.h"

#include <QBuffer>

#include <gtest/gtest.h>

#include <cmath>

namespace kilnova {
namespace {

std::vector<QByteArray> readAll(const QByteArray& content)
{
    QBuffer buffer;
    buffer.setData(content);
    buffer.open(QIODevice::ReadOnly);
    LineReader reader(buffer);
    std::vector<QByteArray> lines;
    while (reader.readLine())
        lines.emplace_back(reader.line());
    return lines;
}

QByteArray padded(const QByteArray& text)
{
    return text.leftJustified(LineReader::kLineLength, ' ');
}

TEST(LineReader, GivesEveryCompleteLineCutOrPaddedTo254Characters)
{
    const QByteArray x254(254, 'x');
    // A line that starts just before the end of the reader's first buffer: its carriage return is the
    // buffer's last byte and its newline the next buffer's first.
    const QByteArray acrossBuffers = QByteArray(65531, 'p') + "\nXYZ\r\nQ\n";

    struct Case {
        const char* what;
        QByteArray content;
        std::vector<QByteArray> lines;
    };
    const Case cases[] = {
        {"two lines", "A\nB\n", {padded("A"), padded("B")}},
        {"last line without newline is not read", "A\nB", {padded("A")}},
        {"one line without newline", "only", {}},
        {"empty file", "", {}},
        {"empty line", "\n", {padded("")}},
        {"Windows line ends", "A\r\nB\r\n", {padded("A"), padded("B")}},
        {"a lone carriage return is data", "A\rB\n", {padded("A\rB")}},
        {"a line of 10,000 characters is cut", QByteArray(10000, 'x') + "\nB\n", {x254, padded("B")}},
        {"254 characters and a Windows line end", x254 + "\r\nB\n", {x254, padded("B")}},
        {"253 characters and a Windows line end",
         QByteArray(253, 'y') + "\r\n",
         {padded(QByteArray(253, 'y'))}},
        {"line end across the read buffer",
         acrossBuffers,
         {QByteArray(254, 'p'), padded("XYZ"), padded("Q")}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(readAll(c.content), c.lines) << c.what;
}

TEST(FieldExtractor, CutsAndConvertsLikeTheCLibrary)
{
    //                          1         2         3         4         5         6
    //                 1234567890123456789012345678901234567890123456789012345678901234
    const char* line = "  12.5abc -3e2 xyz   42.9 +.5e+1 1e999 0x1A  NaN  -inf 7e  -.e3 5.";
    struct Case {
        int position;
        int length;
        const char* text;
        double number;
        int integer;
    };
    const Case cases[] = {
        {1, 9, "  12.5abc", 12.5, 12},  // leading blanks skipped, stops at the first non-number
        {10, 5, " -3e2", -300, -3},     // exponent
        {15, 4, " xyz", 0, 0},          // no digits
        {19, 7, "   42.9", 42.9, 42},   // integers stop at the point
        {26, 7, " +.5e+1", 5, 0},       // sign, no leading digit
        {33, 6, " 1e999", HUGE_VAL, 1}, // out of range, as atof answers
        {39, 5, " 0x1A", 0, 0},         // decimal only: the x ends the number
        {44, 5, "  NaN", 0, 0},         // no digits, so never a NaN the database would refuse
        {49, 6, "  -inf", 0, 0},        // nor an infinity
        {55, 3, " 7e", 7, 7},           // an exponent letter without digits ends the number
        {58, 6, "  -.e3", 0, 0},        // a point without digits is no number
        {64, 3, " 5.", 5, 5},           // a trailing point belongs to the number
        {65, 20, "5.", 5, 5},           // cut at the end of the line
        {70, 5, "", 0, 0},              // beyond the end of the line
    };
    for (const Case& c : cases) {
        bool error = false;
        EXPECT_EQ(FieldExtractor::text(line, c.position, c.length, &error), QString::fromLatin1(c.text))
            << c.position;
        EXPECT_EQ(FieldExtractor::number(line, c.position, c.length, &error), c.number) << c.position;
        EXPECT_EQ(FieldExtractor::integer(line, c.position, c.length, &error), c.integer) << c.position;
        EXPECT_FALSE(error) << c.position;
    }
}

TEST(FieldExtractor, APositionOrLengthBelowOneGivesNothingAndRaisesTheFlag)
{
    const char* line = "123456";
    for (const auto& [position, length] : {std::pair{0, 3}, {-2, 3}, {1, 0}, {2, -1}}) {
        bool error = false;
        EXPECT_EQ(FieldExtractor::text(line, position, length, &error), QString());
        EXPECT_TRUE(error);
        error = false;
        EXPECT_EQ(FieldExtractor::number(line, position, length, &error), 0.0);
        EXPECT_TRUE(error);
    }
}

TEST(FieldExtractor, AZeroByteEndsTheLine)
{
    const char line[] = "AB\0CD 12";
    EXPECT_EQ(FieldExtractor::text(line, 1, 6), QStringLiteral("AB"));
    EXPECT_EQ(FieldExtractor::number(line, 4, 5), 0.0);
}

TEST(FieldExtractor, TextIsDecodedFromCodePage1252AsItStands)
{
    EXPECT_EQ(FieldExtractor::text("B\xe9ton  \x80", 1, 9), QStringLiteral("Béton  €"));
}

} // namespace
} // namespace kilnova
