#pragma once

#include <QByteArray>

#include <cstddef>
#include <cstdint>

namespace kilnova::fuzz {

/// The fuzzer's bytes as a QByteArray of their own, so that reading past them is caught.
inline QByteArray bytesOf(const std::uint8_t* data, std::size_t size)
{
    return QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
}

} // namespace kilnova::fuzz
