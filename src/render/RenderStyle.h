#pragma once

#include <QColor>
#include <QFont>
#include <QString>

namespace kilnova {

/// Type and text colours the pictures share. Sizes are in the picture's pixels, so that a picture
/// drawn on a page scaled to its width keeps its proportions.
class RenderStyle final {
public:
    RenderStyle() = delete;

    static QFont font(int pixels, bool bold = false);
    static QColor text() { return QColor(0x22, 0x22, 0x22); }
    static QColor quietText() { return QColor(0x5f, 0x5f, 0x5a); }

    /// Heading of a quantity: "CaO (%)", "LSF".
    static QString heading(const QString& name, const QString& unit);
    static QString elementHeading(int element);
    /// A value with its unit: "49.95 %", "2.41", or "missing".
    static QString valueText(double value, const QString& unit, int decimals);
    /// A value of an element, with two decimals.
    static QString valueText(int element, double value);
};

} // namespace kilnova
