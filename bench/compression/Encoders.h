#pragma once

#include "bench/compression/Pictures.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace mosaicer::bench {

/// One way to make blocks: ours at a quality, or a library that a user could take instead.
struct Encoder {
    std::string_view name;
    std::vector<std::uint8_t> (*encode)(const Picture& picture, std::int32_t format);
    bool knows_dxt3 = true;
};

/// Ours at 68 to 72, then libsquish's three fits (under its own default metric) and stb_dxt's two modes.
std::span<const Encoder> encoders();

} // namespace mosaicer::bench
