#pragma once

#include <array>

class QIODevice;

namespace kilnova {

/// Reads a fixed-column text file the way the text importers see it: every line comes out as exactly
/// 254 characters, cut or padded with blanks, and only a line that ends in a newline counts.
class LineReader final {
public:
    static constexpr int kLineLength = 254;

    explicit LineReader(QIODevice& device);
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    /// Reads the next line into line(). False at the end of the file, on a read error, and for a last
    /// line without a newline, which is therefore never imported. "\r\n" ends a line like "\n".
    bool readLine();

    /// The line read last: 254 characters and a terminating zero. A zero byte inside the file ends the
    /// line early for everything that reads it as a C string.
    const char* line() const { return mLine.data(); }

private:
    /// Refills the buffer; false at the end of the device or on an error.
    bool fill();

    QIODevice& mDevice;
    std::array<char, 64 * 1024> mBuffer{};
    int mBegin = 0;
    int mEnd = 0;
    std::array<char, kLineLength + 1> mLine{};
};

} // namespace kilnova
