// Reading values where they lie in blocks and records, aligned or not.
#pragma once

#include <cstddef>
#include <cstring>

namespace nodus::host {

template <typename T> T load(std::byte const* from)
{
    T value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

}  // namespace nodus::host
