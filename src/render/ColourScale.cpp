#include "render/ColourScale.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kilnova {

namespace {

// Sequential, light to dark, readable by most colour-blind eyes and in grey print.
constexpr std::array<QRgb, 5> kStops = {0xffffffcc, 0xfffed976, 0xfffd8d3c, 0xffe31a1c, 0xff800026};

} // namespace

ColourScale::ColourScale(double lowest, double highest)
    : mLowest(std::min(lowest, highest))
    , mHighest(std::max(lowest, highest))
{
}

double ColourScale::position(double value) const
{
    if (!(mHighest > mLowest))
        return 0.5;
    return std::clamp((value - mLowest) / (mHighest - mLowest), 0.0, 1.0);
}

int ColourScale::shade(double value) const
{
    return static_cast<int>(std::lround(position(value) * (kShades - 1)));
}

QColor ColourScale::colourAt(double position)
{
    const double p = std::clamp(position, 0.0, 1.0) * static_cast<double>(kStops.size() - 1);
    const std::size_t i = std::min(static_cast<std::size_t>(p), kStops.size() - 2);
    const double f = p - static_cast<double>(i);
    const QColor a(kStops[i]), b(kStops[i + 1]);
    auto mix = [f](int x, int y) {
        return static_cast<int>(std::lround(x + (y - x) * f));
    };
    return QColor(mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue()));
}

QColor ColourScale::shadeColour(int shade)
{
    return colourAt(static_cast<double>(std::clamp(shade, 0, kShades - 1)) / (kShades - 1));
}

} // namespace kilnova
