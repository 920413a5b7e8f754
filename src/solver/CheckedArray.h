#pragma once

#include <cstddef>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace kilnova {

/// Raises the solver's out-of-range error.
[[noreturn]] inline void throwIndexOutOfRange(const char* what, int index, int size)
{
    throw std::invalid_argument(std::string(what) + " index " + std::to_string(index) + " outside 0.." +
                                std::to_string(size - 1));
}

/// A zero-filled array whose every access is checked; an index outside raises std::invalid_argument.
template <typename T> class CheckedArray final {
public:
    /// Resizes to `size` elements, all zero.
    void reset(int size) { mData.assign(static_cast<std::size_t>(size < 0 ? 0 : size), T{}); }
    void clear() { mData.clear(); }
    int size() const { return static_cast<int>(mData.size()); }

    T& operator[](int index)
    {
        check(index);
        return mData[static_cast<std::size_t>(index)];
    }
    const T& operator[](int index) const
    {
        check(index);
        return mData[static_cast<std::size_t>(index)];
    }

    /// The elements first..last (inclusive), checked once as a whole; empty when last < first.
    std::span<T> range(int first, int last)
    {
        if (last < first)
            return {};
        check(first);
        check(last);
        return {mData.data() + first, static_cast<std::size_t>(last - first + 1)};
    }
    std::span<const T> range(int first, int last) const
    {
        if (last < first)
            return {};
        check(first);
        check(last);
        return {mData.data() + first, static_cast<std::size_t>(last - first + 1)};
    }

private:
    void check(int index) const
    {
        if (index < 0 || index >= size()) [[unlikely]]
            throwIndexOutOfRange("array", index, size());
    }

    std::vector<T> mData;
};

} // namespace kilnova
