#include "import/ImportPreview.h"

#include "common/Cp1252.h"

#include <QFile>

namespace kilnova {

namespace {

const char kTensRuler[] = "0        1         2         3         4         5         6         7         8"
                          "         9          ";
const char kUnitsRuler[] = "1234567890123456789012345678901234567890123456789012345678901234567890123456789"
                           "012345678901234567890";

const QString kLineEnd = QStringLiteral("\r\n");

} // namespace

QString ImportPreview::rulers(int firstLineLength)
{
    const int width = firstLineLength < 5 ? 50 : std::min(2 * firstLineLength, 100);
    return QString::fromLatin1(kTensRuler, width) + kLineEnd + QString::fromLatin1(kUnitsRuler, width) +
           kLineEnd;
}

QString ImportPreview::build(QIODevice& device)
{
    QString lines;
    int firstLineLength = 0;
    for (int count = 0; count < kMaxLines; ++count) {
        // A line longer than the buffer comes in several pieces, each shown as a line of its own.
        QByteArray piece = device.readLine(kPieceLength + 1);
        if (piece.isEmpty())
            break;
        if (piece.endsWith('\n')) {
            piece.chop(1);
            if (piece.endsWith('\r'))
                piece.chop(1);
        }
        if (piece.isEmpty())
            break;
        if (count == 0)
            firstLineLength = static_cast<int>(piece.size());
        lines += fromCp1252(piece) + kLineEnd;
    }
    return rulers(firstLineLength) + lines;
}

QString ImportPreview::ofFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return rulers(0);
    return build(file);
}

} // namespace kilnova
