#pragma once

#include <QIcon>
#include <QPixmap>

namespace kilnova {

/// Kilnova's icon, drawn from the same SVG that the desktop menu shows. Drawn by Qt SVG itself,
/// not through an icon plugin, so that a missing plugin cannot leave the window without it.
class AppIcon final {
public:
    AppIcon() = delete;

    /// Every size a window manager asks for, from 16 to 256 pixels.
    static QIcon icon();
    /// The picture at size x size pixels; a null pixmap if the SVG cannot be read.
    static QPixmap pixmap(int size);
};

} // namespace kilnova
