#include "common/ReportText.h"

#include <QBuffer>

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace kilnova {
namespace {

// The lines of a text split the plain way: at "\n", a "\r" before it dropped, no line after a
// final line end.
std::vector<std::string> split(const std::string& text)
{
    std::vector<std::string> lines;
    std::string line;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\n') {
            if (!line.empty() && line.back() == '\r')
                line.pop_back();
            lines.push_back(line);
            line.clear();
        } else {
            line += text[i];
        }
    }
    if (!line.empty())
        lines.push_back(line);
    return lines;
}

std::vector<std::string> allLines(const ReportText& r)
{
    std::vector<std::string> lines;
    r.lines(0, r.lineCount(), [&lines](const QByteArray& l) { lines.push_back(l.toStdString()); });
    return lines;
}

TEST(ReportText, LinesOfTextWrittenInPieces)
{
    struct Case {
        const char* what;
        std::vector<std::string> pieces;
        std::vector<std::string> lines;
        qsizetype longest;
    };
    const std::vector<Case> cases = {
        {"nothing", {}, {}, 0},
        {"one line without its end", {"Total: 3"}, {"Total: 3"}, 8},
        {"line ends split between pieces", {"ab\r", "\ncd\r\n", "\r\n"}, {"ab", "cd", ""}, 2},
        {"a last line without its end", {"a\r\nbb\r\nccc"}, {"a", "bb", "ccc"}, 3},
        {"blank lines", {"\r\n\r\nx\r\n"}, {"", "", "x"}, 1},
        // "Böschung" is 8 characters in 9 bytes.
        {"characters, not bytes", {"B\xc3\xb6schung\r\n1234567\r\n"}, {"B\xc3\xb6schung", "1234567"}, 8},
    };
    for (const Case& c : cases) {
        for (const qint64 memory : {ReportText::kMemoryLimit, qint64{4}}) {
            ReportText r(memory);
            std::string whole;
            for (const std::string& p : c.pieces) {
                r.write(p);
                whole += p;
            }
            EXPECT_EQ(r.onDisk(), memory == 4 && whole.size() > 4) << c.what;
            EXPECT_EQ(r.lineCount(), static_cast<qsizetype>(c.lines.size())) << c.what;
            EXPECT_EQ(allLines(r), c.lines) << c.what;
            EXPECT_EQ(r.longestLine(), c.longest) << c.what;
            EXPECT_EQ(r.size(), static_cast<qint64>(whole.size())) << c.what;
            QBuffer out;
            out.open(QIODevice::WriteOnly);
            ASSERT_TRUE(r.writeTo(out)) << c.what;
            EXPECT_EQ(out.data().toStdString(), whole) << c.what << ", written out";
            EXPECT_EQ(r.toString().toStdString(), whole) << c.what;
        }
    }
}

// A long report, spilled to its file: any run of lines reads as the plain split has them, across
// the indexed lines and the cached blocks of the file.
TEST(ReportText, AnyRangeOfALongReportReadsAsWritten)
{
    std::mt19937 engine(97);
    std::string whole;
    ReportText r(1 << 12);
    for (int i = 0; i < 20000; ++i) {
        std::string line = "line " + std::to_string(i) + std::string(engine() % 120, i % 2 ? 'x' : 'y');
        line += i % 7 == 0 ? "\n" : "\r\n";
        whole += line;
        r.write(line);
    }
    ASSERT_TRUE(r.onDisk());
    const std::vector<std::string> expected = split(whole);
    ASSERT_EQ(r.lineCount(), static_cast<qsizetype>(expected.size()));
    for (int k = 0; k < 300; ++k) {
        const qsizetype first = static_cast<qsizetype>(engine() % expected.size());
        const qsizetype count = static_cast<qsizetype>(engine() % 70);
        std::vector<std::string> got;
        r.lines(first, count, [&got](const QByteArray& l) { got.push_back(l.toStdString()); });
        const auto end = std::min(expected.size(), static_cast<std::size_t>(first + count));
        EXPECT_EQ(got, std::vector<std::string>(expected.begin() + first,
                                                expected.begin() + static_cast<std::ptrdiff_t>(end)))
            << "lines " << first << " + " << count;
        EXPECT_EQ(r.line(first).toStdString(), expected[static_cast<std::size_t>(first)]) << first;
    }
    std::vector<std::string> none;
    r.lines(r.lineCount(), 5, [&none](const QByteArray& l) { none.push_back(l.toStdString()); });
    EXPECT_TRUE(none.empty()) << "nothing past the last line";
    QBuffer out;
    out.open(QIODevice::WriteOnly);
    ASSERT_TRUE(r.writeTo(out));
    EXPECT_EQ(out.data().size(), static_cast<qsizetype>(whole.size()));
    EXPECT_TRUE(out.data().toStdString() == whole);
}

} // namespace
} // namespace kilnova
