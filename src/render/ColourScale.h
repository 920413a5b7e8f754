#pragma once

#include <QColor>

namespace kilnova {

/// The quarry map's continuous colour scale over a range of values: pale yellow for the lowest,
/// through orange, to dark red for the highest. Symbols are drawn in one of kShades shades of it
/// (indistinguishable from the continuous scale, and few enough to draw 20,000 blasts quickly); the
/// two ends and the middle of the range fall exactly on the scale's stops.
class ColourScale final {
public:
    static constexpr int kShades = 65;

    ColourScale(double lowest, double highest);

    double lowest() const { return mLowest; }
    double highest() const { return mHighest; }
    /// Where a value lies on the scale, 0 to 1 (clamped); the middle when the range is one value.
    double position(double value) const;
    /// The shade, 0 to kShades - 1, of a value.
    int shade(double value) const;

    /// The colour at a position 0 to 1, interpolated between the stops.
    static QColor colourAt(double position);
    static QColor shadeColour(int shade);

private:
    double mLowest;
    double mHighest;
};

} // namespace kilnova
