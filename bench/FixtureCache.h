#pragma once

#include <map>
#include <memory>

namespace kilnova {

/// The fixtures of one kind, built once per size and kept for every benchmark of that size.
template <class Fixture> std::map<int, std::unique_ptr<Fixture>>& fixtures()
{
    static std::map<int, std::unique_ptr<Fixture>> all;
    return all;
}

/// The fixture of this size, built on first use.
template <class Fixture> Fixture& fixture(int size)
{
    auto& f = fixtures<Fixture>()[size];
    if (!f)
        f = std::make_unique<Fixture>(size);
    return *f;
}

} // namespace kilnova
