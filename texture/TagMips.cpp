#include "texture/TagMips.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace mosaicer {
namespace {

using Colour = std::array<std::uint8_t, 3>; ///< blue, green, red, as in the bitmap

constexpr std::array<Colour, 10> tints{{
    {0, 0, 255},
    {0, 255, 0},
    {255, 0, 0},
    {247, 102, 243},
    {234, 227, 132},
    {106, 255, 252},
    {64, 128, 255},
    {255, 128, 128},
    {128, 0, 255},
    {255, 0, 255},
}};

/// What each byte of a channel becomes. Every step is rounded to single precision.
std::array<std::uint8_t, 256> tinted_bytes(std::uint8_t tint) {
    constexpr float share = 0.8f;
    std::array<std::uint8_t, 256> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte)
        table[byte] =
            static_cast<std::uint8_t>(static_cast<float>(byte) * (1.0f - share) + static_cast<float>(tint) * share);
    return table;
}

} // namespace

void tag_mip_levels(MipChain& chain) {
    for (std::size_t level = 1; level < chain.size(); ++level) {
        const Colour& tint = tints[(level - 1) % tints.size()];
        for (std::size_t channel = 0; channel < tint.size(); ++channel) {
            const auto table = tinted_bytes(tint[channel]);
            const auto pixels = chain[level].pixels();
            for (std::size_t i = channel; i < pixels.size(); i += 4)
                pixels[i] = table[pixels[i]];
        }
    }
}

} // namespace mosaicer
