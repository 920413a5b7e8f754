#include "solver/PricingTree.h"

#include "solver/CheckedArray.h"

#include <cmath>
#include <limits>

namespace kilnova {

namespace {

// A leaf that can never be taken: nothing is below it, and it rounds to infinity.
constexpr double kNever = std::numeric_limits<double>::infinity();
constexpr float kStart = 1e30f;

double smaller(double a, double b)
{
    return b < a ? b : a;
}

} // namespace

void PricingTree::reset(int size)
{
    mSize = size < 0 ? 0 : size;
    mLeaves = 1;
    while (mLeaves < mSize)
        mLeaves *= 2;
    mNodes.assign(static_cast<std::size_t>(2 * mLeaves), kNever);
}

void PricingTree::set(int position, double reduced, bool eligible)
{
    if (position < 1 || position > mSize) [[unlikely]]
        throwIndexOutOfRange("pricing position", position, mSize + 1);
    auto node = static_cast<std::size_t>(mLeaves + position - 1);
    mNodes[node] = eligible && !std::isnan(reduced) ? reduced : kNever;
    if (walks())
        return;
    // Up the tree while the subtree minimum changes: above that nothing does.
    for (node /= 2; node >= 1; node /= 2) {
        const double m = smaller(mNodes[2 * node], mNodes[2 * node + 1]);
        if (m == mNodes[node] && std::signbit(m) == std::signbit(mNodes[node]))
            break;
        mNodes[node] = m;
    }
}

void PricingTree::rebuild()
{
    if (walks())
        return;
    for (auto node = static_cast<std::size_t>(mLeaves) - 1; node >= 1; --node)
        mNodes[node] = smaller(mNodes[2 * node], mNodes[2 * node + 1]);
}

PricingTree::Choice PricingTree::choose() const
{
    Choice choice;
    if (walks()) {
        // The walk itself; a leaf that cannot be taken holds infinity, which is below nothing.
        const double* leaf = mNodes.data() + mLeaves - 1;
        for (int p = 1; p <= mSize; ++p) {
            if (leaf[p] < choice.minimum) {
                choice.minimum = static_cast<float>(leaf[p]);
                choice.position = p;
            }
        }
        return choice;
    }
    const double smallest = mNodes[1];
    if (mSize == 0 || !(smallest < static_cast<double>(kStart)))
        return choice;
    const float rounded = static_cast<float>(smallest);
    const double f = rounded;
    std::size_t node = 1;
    if (smallest < f) {
        // The last leaf below F: the right subtree whenever it holds one.
        while (node < static_cast<std::size_t>(mLeaves))
            node = mNodes[2 * node + 1] < f ? 2 * node + 1 : 2 * node;
    } else {
        // Every leaf is at least F: the first that rounds to it.
        while (node < static_cast<std::size_t>(mLeaves))
            node = static_cast<float>(mNodes[2 * node]) == rounded ? 2 * node : 2 * node + 1;
    }
    choice.position = static_cast<int>(node) - mLeaves + 1;
    choice.minimum = static_cast<float>(mNodes[node]);
    return choice;
}

} // namespace kilnova
