#include "import/LineReader.h"

#include <QIODevice>

#include <cstring>

namespace kilnova {

LineReader::LineReader(QIODevice& device)
    : mDevice(device)
{
}

bool LineReader::fill()
{
    const qint64 got = mDevice.read(mBuffer.data(), static_cast<qint64>(mBuffer.size()));
    mBegin = 0;
    mEnd = got > 0 ? static_cast<int>(got) : 0;
    return got > 0;
}

bool LineReader::readLine()
{
    int kept = 0;
    bool keptCarriageReturn = false;
    for (;;) {
        if (mBegin == mEnd && !fill())
            return false; // end of file (or error) before the newline: the line does not count
        const char* begin = mBuffer.data() + mBegin;
        const int available = mEnd - mBegin;
        const void* newline = std::memchr(begin, '\n', static_cast<std::size_t>(available));
        const int piece = newline ? static_cast<int>(static_cast<const char*>(newline) - begin) : available;
        const int copy = std::min(piece, kLineLength - kept);
        if (copy > 0) {
            std::memcpy(mLine.data() + kept, begin, static_cast<std::size_t>(copy));
            kept += copy;
            keptCarriageReturn = mLine[static_cast<std::size_t>(kept - 1)] == '\r' && copy == piece;
        } else if (piece > 0) {
            keptCarriageReturn = false; // the rest of a long line is skipped
        }
        mBegin += piece;
        if (newline) {
            ++mBegin;
            break;
        }
    }
    // Files written on Windows end their lines in "\r\n"; the carriage return is not data.
    if (keptCarriageReturn)
        --kept;
    std::memset(mLine.data() + kept, ' ', static_cast<std::size_t>(kLineLength - kept));
    mLine[kLineLength] = '\0';
    return true;
}

} // namespace kilnova
