#include "solver/ProgrammeDump.h"

#include "solver/CoefficientMatrix.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <vector>

#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

namespace kilnova {

namespace {

constexpr int kFieldWidth = 10;

// The digits of "%.2lf" for a finite value; non-finite values go through printf itself.
std::size_t digits(double value, char* buffer, std::size_t size)
{
    if (!std::isfinite(value))
        return static_cast<std::size_t>(std::snprintf(buffer, size, "%.2lf", value));
    const std::to_chars_result r = std::to_chars(buffer, buffer + size, value, std::chars_format::fixed, 2);
    return static_cast<std::size_t>(r.ptr - buffer);
}

std::string kindText(int kind)
{
    char buffer[32];
    const int n = std::snprintf(buffer, sizeof buffer, "%4d", kind);
    return {buffer, static_cast<std::size_t>(n)};
}

/// Many copies of a zero's field, so that a run of zeros is one piece of the output.
struct ZeroRuns {
    std::string positive;
    std::string negative;
    static constexpr std::size_t kFields = 4096;
    ZeroRuns()
    {
        for (std::size_t i = 0; i < kFields; ++i) {
            positive += "      0.00";
            negative += "     -0.00";
        }
    }
};

/// The file's text as a list of pieces handed to the system in one call per batch: runs of zeros
/// point into ZeroRuns and the formatted fields into a small buffer, so the text is copied once,
/// into the file, instead of first into a buffer as large as itself.
class PieceWriter {
public:
    explicit PieceWriter(int fd)
        : mFd(fd)
    {
        mText.reserve(kTextCapacity);
        mPieces.reserve(kPieces);
    }

    /// Formatted text, copied into the buffer.
    void text(const char* data, std::size_t size)
    {
        // Room first: a flush empties the buffer, which must not hold text a piece still lists.
        if (mText.size() + size > kTextCapacity || (!mLastIsText && mPieces.size() == kPieces))
            flush();
        const char* at = mText.data() + mText.size();
        mText.append(data, size);
        if (mLastIsText) {
            mPieces.back().iov_len += size; // text right after text is one piece
        } else {
            mPieces.push_back({const_cast<char*>(at), size});
            mLastIsText = true;
        }
    }
    void text(const std::string& t) { text(t.data(), t.size()); }

    void zeros(const ZeroRuns& runs, std::size_t count, bool negativeZero)
    {
        const std::string& run = negativeZero ? runs.negative : runs.positive;
        while (count > 0) {
            const std::size_t take = count < ZeroRuns::kFields ? count : ZeroRuns::kFields;
            if (mPieces.size() == kPieces)
                flush();
            mPieces.push_back({const_cast<char*>(run.data()), take * kFieldWidth});
            mLastIsText = false;
            count -= take;
        }
    }

    void flush()
    {
        std::size_t first = 0;
        while (first < mPieces.size() && !mFailed) {
            const auto count = static_cast<int>(std::min<std::size_t>(mPieces.size() - first, kPieces));
            const ssize_t n = ::writev(mFd, mPieces.data() + first, count);
            if (n < 0) {
                mFailed = errno != EINTR;
                continue;
            }
            mWritten += static_cast<std::uint64_t>(n);
            // A short write leaves the rest of its pieces for the next call.
            auto left = static_cast<std::size_t>(n);
            while (first < mPieces.size() && left >= mPieces[first].iov_len)
                left -= mPieces[first++].iov_len;
            if (left > 0) {
                mPieces[first].iov_base = static_cast<char*>(mPieces[first].iov_base) + left;
                mPieces[first].iov_len -= left;
            }
        }
        mPieces.clear();
        mText.clear();
        mLastIsText = false;
    }

    std::uint64_t written() const { return mWritten; }

private:
    static constexpr std::size_t kTextCapacity = std::size_t{1} << 18;
    static constexpr std::size_t kPieces = 1024; // the most one writev takes (IOV_MAX)

    int mFd;
    bool mFailed = false;
    bool mLastIsText = false; // the last piece is the end of mText
    std::uint64_t mWritten = 0;
    std::string mText;
    std::vector<iovec> mPieces;
};

} // namespace

void ProgrammeDump::appendField(std::string& out, double value)
{
    char buffer[400];
    const std::size_t n = digits(value, buffer, sizeof buffer);
    if (n < kFieldWidth)
        out.append(kFieldWidth - n, ' ');
    out.append(buffer, n);
}

std::string ProgrammeDump::cutNote(std::size_t limit, std::uint64_t wholeSize, int rows, int columns)
{
    char buffer[512];
    const int n = std::snprintf(
        buffer, sizeof buffer,
        "\n[The dump stops here, after its whole lines within the first %zu bytes. The whole programme "
        "(%d rows of %d columns) would take %llu bytes: a text that size is of no use to read and would "
        "take longer to write than the optimisation itself.]\n",
        limit, rows, columns, static_cast<unsigned long long>(wholeSize));
    return {buffer, static_cast<std::size_t>(n)};
}

std::uint64_t ProgrammeDump::write(const std::string& fileName, const CoefficientMatrix& a,
                                   std::span<const double> rhs, std::span<const int> kind,
                                   std::span<const double> objective, std::size_t limit)
{
    // A dump overwrites the last one in place and is cut to its own length at the end: the file's
    // blocks are reused instead of freed and allocated again, which costs more than the writing.
    const int fd = ::open(fileName.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    if (fd < 0)
        return 0;
    const int m = a.rows();
    const int n = a.columns();
    std::vector<int> start;
    std::vector<std::pair<int, double>> entries;
    a.byRow(start, entries);

    static const ZeroRuns zeros;
    PieceWriter out(fd);
    std::uint64_t whole = 0;   // the size of the whole dump
    std::uint64_t written = 0; // what went to the file, the note aside
    bool cut = false;
    // Each line is measured first; once one does not fit, the rest are only measured.
    auto fits = [&](std::uint64_t length) {
        whole += length;
        if (!cut && written + length <= limit) {
            written += length;
            return true;
        }
        cut = true;
        return false;
    };

    // A row's numbers are formatted once, measured, and written only if the row fits.
    std::string rowText;
    std::vector<std::size_t> ends;
    for (int i = 1; i <= m; ++i) {
        const auto first = static_cast<std::size_t>(start[static_cast<std::size_t>(i)]);
        const auto last = static_cast<std::size_t>(start[static_cast<std::size_t>(i) + 1]);
        rowText.clear();
        ends.clear();
        for (std::size_t t = first; t < last; ++t) {
            appendField(rowText, entries[t].second);
            ends.push_back(rowText.size());
        }
        appendField(rowText, rhs[static_cast<std::size_t>(i)]);
        rowText += " IBT: ";
        rowText += kindText(kind[static_cast<std::size_t>(i)]);
        rowText += '\n';
        const std::uint64_t length =
            kFieldWidth * static_cast<std::uint64_t>(n - static_cast<int>(last - first)) + rowText.size();
        if (!fits(length))
            continue;
        const bool negativeZero = std::signbit(a.zeroOf(i));
        int column = 1;
        std::size_t from = 0;
        for (std::size_t t = first; t < last; ++t) {
            out.zeros(zeros, static_cast<std::size_t>(entries[t].first - column), negativeZero);
            const std::size_t to = ends[t - first];
            out.text(rowText.data() + from, to - from);
            from = to;
            column = entries[t].first + 1;
        }
        out.zeros(zeros, static_cast<std::size_t>(n + 1 - column), negativeZero);
        out.text(rowText.data() + from, rowText.size() - from);
    }
    for (int blank = 0; blank < 2; ++blank) {
        if (fits(1))
            out.text("\n", 1);
    }
    for (int j = 1; j <= n; ++j) {
        rowText.clear();
        appendField(rowText, objective[static_cast<std::size_t>(j)]);
        rowText += '\n';
        if (fits(rowText.size()))
            out.text(rowText);
    }
    if (cut)
        out.text(cutNote(limit, whole, m, n));
    out.flush();
    // Like a file that cannot be opened, one that cannot be cut to length is left to the reader.
    [[maybe_unused]] const int truncated = ::ftruncate(fd, static_cast<off_t>(out.written()));
    ::close(fd);
    return whole;
}

} // namespace kilnova
