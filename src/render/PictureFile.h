#pragma once

#include <QSizeF>
#include <QString>

#include <functional>
#include <optional>

class QPainter;
class QRectF;

namespace kilnova {

/// Writes a picture to a file in the format its name asks for: PNG, PDF (one page of the picture's
/// shape) or SVG. The file is replaced only once the picture is complete.
class PictureFile final {
public:
    enum class Format { Png, Pdf, Svg };
    using Painter = std::function<void(QPainter&, const QRectF& area)>;

    PictureFile() = delete;

    /// The largest PNG drawn: 10⁸ pixels, 400 MB in memory.
    static constexpr double kMaxPixels = 1e8;

    /// By the name's ending, in any case; nothing for another one.
    static std::optional<Format> formatOf(const QString& path);
    /// The file dialog's filter for the three formats.
    static QString dialogFilter();

    /// Paints a picture of `size` pixels (points on a PDF page) into the file. Returns the message
    /// for the user when it cannot be written, nothing when it was.
    static std::optional<QString> write(const QString& path, const QSizeF& size, const Painter& paint);
};

} // namespace kilnova
