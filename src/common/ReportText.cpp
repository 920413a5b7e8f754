#include "common/ReportText.h"

#include <QIODevice>
#include <QTemporaryFile>

#include <algorithm>

namespace kilnova {

namespace {

constexpr qint64 kCacheBlock = 64 * 1024;
constexpr qint64 kCopyBlock = 1 << 20;

} // namespace

ReportText::ReportText(qint64 memoryLimit)
    : mMemoryLimit(memoryLimit)
{
    mIndex.push_back(0);
}

ReportText::~ReportText() = default;

std::shared_ptr<ReportText> ReportText::fromString(const QString& text)
{
    auto report = std::make_shared<ReportText>();
    const QByteArray bytes = text.toUtf8();
    report->write(std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
    return report;
}

void ReportText::write(std::string_view text)
{
    mCacheStart = -1;
    for (std::size_t p = 0; p < text.size(); ++p) {
        const auto c = static_cast<unsigned char>(text[p]);
        if (c == '\n') {
            mLongest = std::max(mLongest, mCurrent);
            mCurrent = 0;
            ++mLines;
            if (mLines % kStride == 0)
                mIndex.push_back(mSize + static_cast<qint64>(p) + 1);
        } else if (c != '\r' && (c & 0xC0) != 0x80) {
            ++mCurrent; // a character starts here (not a UTF-8 continuation byte)
        }
    }
    mLongest = std::max(mLongest, mCurrent);
    mSize += static_cast<qint64>(text.size());
    if (!text.empty())
        mEndsWithLineEnd = text.back() == '\n';
    if (mFile) {
        mFile->seek(mFile->size());
        mOk = mOk &&
              mFile->write(text.data(), static_cast<qint64>(text.size())) == static_cast<qint64>(text.size());
        return;
    }
    mMemory.append(text);
    if (static_cast<qint64>(mMemory.size()) > mMemoryLimit)
        spill();
}

void ReportText::spill()
{
    mFile = std::make_unique<QTemporaryFile>();
    if (!mFile->open()) {
        mFile.reset();
        mOk = false;
        return;
    }
    mOk = mFile->write(mMemory.data(), static_cast<qint64>(mMemory.size())) ==
          static_cast<qint64>(mMemory.size());
    std::string().swap(mMemory);
}

qsizetype ReportText::lineCount() const
{
    // A last line without its line end counts too.
    return mLines + (mSize > 0 && !mEndsWithLineEnd ? 1 : 0);
}

QByteArray ReportText::read(qint64 offset, qint64 length) const
{
    length = std::min(length, mSize - offset);
    if (length <= 0)
        return {};
    if (!mFile)
        return QByteArray(mMemory.data() + offset, static_cast<qsizetype>(length));
    if (mCacheStart < 0 || offset < mCacheStart || offset + length > mCacheStart + mCache.size()) {
        mCacheStart = offset;
        mFile->flush();
        mFile->seek(offset);
        mCache = mFile->read(std::max(length, kCacheBlock));
    }
    return mCache.mid(static_cast<qsizetype>(offset - mCacheStart), static_cast<qsizetype>(length));
}

QByteArray ReportText::lineBytes(qsizetype i) const
{
    QByteArray line;
    lines(i, 1, [&line](const QByteArray& l) { line = l; });
    return line;
}

void ReportText::lines(qsizetype first, qsizetype count,
                       const std::function<void(const QByteArray&)>& out) const
{
    const qsizetype total = lineCount();
    if (first < 0 || first >= total || count <= 0)
        return;
    // From the indexed line before the first, skip to it, then read line after line.
    qint64 offset = mIndex[static_cast<std::size_t>(first / kStride)];
    QByteArray line;
    for (qsizetype i = first - first % kStride; i < first + count && i < total; ++i) {
        line.clear();
        for (;;) {
            const QByteArray chunk = read(offset, 4096);
            if (chunk.isEmpty())
                break;
            const qsizetype end = chunk.indexOf('\n');
            if (end >= 0) {
                line += chunk.left(end);
                offset += end + 1;
                break;
            }
            line += chunk;
            offset += chunk.size();
        }
        if (i < first)
            continue;
        if (line.endsWith('\r'))
            line.chop(1);
        out(line);
    }
}

QString ReportText::line(qsizetype i) const
{
    return QString::fromUtf8(lineBytes(i));
}

bool ReportText::writeTo(QIODevice& device) const
{
    if (!mFile)
        return device.write(mMemory.data(), static_cast<qint64>(mMemory.size())) ==
               static_cast<qint64>(mMemory.size());
    mFile->flush();
    for (qint64 offset = 0; offset < mSize; offset += kCopyBlock) {
        mFile->seek(offset);
        const QByteArray block = mFile->read(std::min(kCopyBlock, mSize - offset));
        if (block.isEmpty() || device.write(block) != block.size())
            return false;
    }
    mCacheStart = -1;
    return true;
}

QString ReportText::toString() const
{
    return QString::fromUtf8(read(0, mSize));
}

} // namespace kilnova
