#pragma once

#include "common/ReportSink.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class QIODevice;
class QTemporaryFile;

namespace kilnova {

/// The text of a report, line by line, as a results window shows, prints and saves it: held in
/// memory while small and in a temporary file once it passes a few megabytes, with the start of
/// every sixteenth line indexed. A report of millions of lines is built, shown a screen at a time
/// and written out without ever being held whole.
class ReportText final : public ReportSink {
public:
    /// Text past this many bytes goes to a temporary file.
    static constexpr qint64 kMemoryLimit = 4 << 20;

    explicit ReportText(qint64 memoryLimit = kMemoryLimit);
    ~ReportText() override;
    ReportText(const ReportText&) = delete;
    ReportText& operator=(const ReportText&) = delete;

    /// A report given whole (its lines end with "\r\n").
    static std::shared_ptr<ReportText> fromString(const QString& text);

    /// Appends text; lines end with "\n", a "\r" before it belongs to the line end.
    void write(std::string_view text) override;

    /// Lines, the last one counted even without its line end.
    qsizetype lineCount() const;
    /// Line i without its line end.
    QString line(qsizetype i) const;
    /// Lines first .. first + count - 1 (those that exist) in order, each without its line end:
    /// what a view or a printer reads, without seeking each line again.
    void lines(qsizetype first, qsizetype count, const std::function<void(const QByteArray&)>& out) const;
    QByteArray lineBytes(qsizetype i) const;
    /// The length of the longest line, in characters.
    qsizetype longestLine() const { return mLongest; }
    qint64 size() const { return mSize; }
    bool onDisk() const { return mFile != nullptr; }
    /// False when the temporary file could not be written (the text is then cut short).
    bool ok() const { return mOk; }

    /// Writes the whole text, exactly as appended, in blocks; false when the device refused.
    bool writeTo(QIODevice& device) const;
    /// The whole text (for small reports).
    QString toString() const;

private:
    static constexpr qsizetype kStride = 16;

    void spill();
    /// `length` bytes from `offset`, from memory or through a cached block of the file.
    QByteArray read(qint64 offset, qint64 length) const;

    qint64 mMemoryLimit;
    std::string mMemory;
    std::unique_ptr<QTemporaryFile> mFile;
    qint64 mSize = 0;
    qsizetype mLines = 0;       // line ends seen
    std::vector<qint64> mIndex; // start of lines 0, 16, 32, ...
    qsizetype mLongest = 0;
    qsizetype mCurrent = 0; // characters of the line being written
    bool mEndsWithLineEnd = false;
    bool mOk = true;
    mutable qint64 mCacheStart = -1;
    mutable QByteArray mCache;
};

} // namespace kilnova
