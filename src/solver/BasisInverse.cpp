#include "solver/BasisInverse.h"

#include <stdexcept>
#include <string>

namespace kilnova {

void BasisInverse::reset(int rows)
{
    mRows = rows < 0 ? 0 : rows;
    mEntries = mRows > mWholeRows;
    if (mEntries) {
        mDense.clear();
        mSparse.reset(mRows);
    } else {
        mSparse.clear();
        mDense.reset(mRows);
    }
}

void BasisInverse::clear()
{
    mRows = 0;
    mEntries = false;
    mDense.clear();
    mSparse.clear();
}

void BasisInverse::setIdentity()
{
    // An inverse held whole after a value that was not finite goes back to entries.
    if (mEntries != (mRows > mWholeRows))
        reset(mRows);
    if (mEntries)
        mSparse.setIdentity();
    else
        mDense.setIdentity();
}

void BasisInverse::holdWhole()
{
    if (!mEntries)
        return;
    const auto n = static_cast<std::size_t>(mRows + 1);
    if (n * n > mWholeLimit / sizeof(double))
        throw std::invalid_argument("the basis inverse of " + std::to_string(mRows) +
                                    " rows is too large to be held whole");
    mDense.assignPlain(mRows, mSparse.entries());
    mSparse.clear();
    mEntries = false;
}

void BasisInverse::usePlainLoops()
{
    holdWhole();
    mDense.usePlainLoops();
}

void BasisInverse::rowEntries(int row, std::vector<std::pair<int, double>>& out) const
{
    if (mEntries)
        mSparse.rowEntries(row, out);
    else
        mDense.rowEntries(row, out);
}

void BasisInverse::leftMultiply(std::span<const double> weight, std::span<double> out)
{
    if (mEntries)
        mSparse.leftMultiply(weight, out);
    else
        mDense.leftMultiply(weight, out);
}

void BasisInverse::leftMultiplyAt(std::span<const int> positions, std::span<const double> weight,
                                  std::span<double> out)
{
    if (mEntries)
        mSparse.leftMultiplyAt(positions, weight, out);
    else
        mDense.leftMultiplyAt(positions, weight, out);
}

void BasisInverse::multiply(std::span<const int> rows, std::span<const double> values, SparseVector& out)
{
    if (mEntries)
        mSparse.multiply(rows, values, out);
    else
        mDense.multiply(rows, values, out);
}

void BasisInverse::multiplyUnit(int r, double sign, SparseVector& out)
{
    if (mEntries)
        mSparse.multiplyUnit(r, sign, out);
    else
        mDense.multiplyUnit(r, sign, out);
}

double BasisInverse::rowTimes(int row, std::span<const int> rows, std::span<const double> values)
{
    return mEntries ? mSparse.rowTimes(row, rows, values) : mDense.rowTimes(row, rows, values);
}

std::span<const int> BasisInverse::update(int r, const SparseVector& alpha)
{
    if (!mEntries)
        return mDense.update(r, alpha);
    // A multiplier that is not finite makes every term count: the whole inverse takes the pivot.
    if (!mSparse.exact(r, alpha)) {
        holdWhole();
        mDense.usePlainLoops();
        return mDense.update(r, alpha);
    }
    const std::span<const int> changed = mSparse.update(r, alpha);
    if (!mSparse.overflowed())
        return changed;
    // The values are those of the full loop even so; the products that follow are not.
    mChanged.assign(changed.begin(), changed.end());
    holdWhole();
    mDense.usePlainLoops();
    return mChanged;
}

} // namespace kilnova
