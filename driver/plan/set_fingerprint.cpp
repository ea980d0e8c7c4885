#include "driver/plan/set_fingerprint.h"

#include <bit>
#include <concepts>
#include <string_view>
#include <type_traits>

namespace mosaicer {
namespace {

/// FNV-1a over 64 bits. Texts and lists go in with their length ahead, so that no two sets give the same bytes.
class Fingerprint {
public:
    template <class... Values>
    void add_all(const Values&... values) {
        (add(values), ...);
    }

    void add(std::integral auto value) {
        auto bits = static_cast<std::uint64_t>(value);
        for (int byte = 0; byte < 8; ++byte, bits >>= 8)
            add_byte(static_cast<std::uint8_t>(bits & 0xFF));
    }
    template <class Enum>
    requires std::is_enum_v<Enum>
    void add(Enum value) { add(static_cast<std::int32_t>(value)); }
    void add(float value) { add(std::bit_cast<std::uint32_t>(value)); }
    void add(std::string_view text) {
        add(text.size());
        for (const char c : text)
            add_byte(static_cast<std::uint8_t>(c));
    }

    std::uint64_t value() const { return value_; }

private:
    void add_byte(std::uint8_t byte) {
        value_ ^= byte;
        value_ *= 0x100000001B3u;
    }

    std::uint64_t value_ = 0xCBF29CE484222325u;
};

void add_texture(Fingerprint& sum, const SourceTexture& texture) {
    sum.add_all(texture.image.file_path, texture.used_by.size());
    for (const std::int32_t group : texture.used_by)
        sum.add(group);
    for (const float coordinate : texture.position)
        sum.add(coordinate);
}

void add_entry(Fingerprint& sum, const SetTextureEntry& entry) {
    sum.add_all(entry.width, entry.height, entry.pad_texels_u, entry.pad_texels_v, entry.rotation, entry.mip_filter,
                entry.category, entry.rename_to, entry.texel_offset);
    add_texture(sum, *entry.texture);
}

} // namespace

std::uint64_t set_fingerprint(const AtlasSetDefinition& set) {
    Fingerprint sum;
    sum.add_all(set.name, set.width, set.height, set.nr_mips, set.texel_format, set.file_format, set.pad_texels_u,
                set.pad_texels_v, set.texel_offset, set.allow_autoload, set.mip_filter, set.category, set.drop_mips,
                set.autofill, set.autosplit, set.has_positions, set.precook_strat, set.packing_order_strat,
                set.insertion_strat, set.min_usage, set.try_alternative_insertion, set.removal_strats.size());
    for (const RemovalKind kind : set.removal_strats)
        sum.add(kind);
    sum.add(set.textures.size());
    for (const SetTextureEntry& entry : set.textures)
        add_entry(sum, entry);
    return sum.value();
}

std::uint64_t combined_fingerprint(std::uint64_t before, std::uint64_t next) {
    Fingerprint sum;
    sum.add_all(before, next);
    return sum.value();
}

} // namespace mosaicer
