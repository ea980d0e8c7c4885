#pragma once

#include <cstdint>

namespace compression {

/// What the library's doors return: 0 for success, negative for failure. The library throws nothing of its own.
constexpr std::int32_t OK = 0;
constexpr std::int32_t CANT_OPEN_PROFILE = -13;
constexpr std::int32_t IMAGE_NOT_MULT4 = -14;
constexpr std::int32_t EMPTY_IMAGE = -24;
constexpr std::int32_t UNSUPPORTED_FILE = -34;
/// An option holds a value that the library does not carry out, or a line of the profile has no such value.
constexpr std::int32_t UNSUPPORTED_OPTION = -35;

} // namespace compression
