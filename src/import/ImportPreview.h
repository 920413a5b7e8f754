#pragma once

#include <QString>

class QIODevice;

namespace kilnova {

/// The text the layout dialog shows over a file: two column rulers, then the first lines of the file,
/// every line ending in "\r\n".
class ImportPreview final {
public:
    ImportPreview() = delete;

    static constexpr int kMaxLines = 100;
    /// Lines are read in pieces of at most this many characters, as a 512-byte buffer holds them.
    static constexpr int kPieceLength = 511;

    /// Reads lines up to the first empty one, at most 100, and puts the rulers before them.
    static QString build(QIODevice& device);
    /// The preview of a file; only the rulers when it cannot be read.
    static QString ofFile(const QString& path);
    /// The two rulers, each cut to twice the length of the first line (50 characters when that line
    /// is shorter than 5 characters, 100 at most).
    static QString rulers(int firstLineLength);
};

} // namespace kilnova
