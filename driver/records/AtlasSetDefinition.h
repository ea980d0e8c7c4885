#pragma once

#include "driver/records/Keywords.h"
#include "driver/records/SourceTexture.h"

#include <cstdint>
#include <string>
#include <vector>

namespace mosaicer {

/// One texture of one set, with what the definition asks of it. A value, copied freely.
struct SetTextureEntry {
    std::int32_t width = -1;  ///< forced width in texels; 0 or less: the texture's own
    std::int32_t height = -1; ///< forced height in texels; 0 or less: the texture's own
    std::int32_t pad_texels_u = 0;
    std::int32_t pad_texels_v = 0;
    std::int32_t rotation = 0; ///< degrees: 0, 90, 180 or 270
    MipFilter mip_filter = MipFilter::KAISER_GAMMA;
    std::string category;
    std::string rename_to;            ///< output name; empty: the texture's own
    SourceTexture* texture = nullptr; ///< not owned; never null in a finished set
    float texel_offset = 0.5f;
};

/// The settings in force at one element of the definition tree; children start from a copy of their parent's.
struct AtlasSetDefinition {
    std::string name;           ///< parent's name, "/", own name
    std::int32_t width = 2048;  ///< texels, before drop_mips
    std::int32_t height = 2048; ///< texels, before drop_mips
    std::int32_t nr_mips = 0;   ///< levels of the output; 0: the whole chain
    TexelFormat texel_format = TexelFormat::AF_A8R8G8B8;
    TextureFileFormat file_format = TextureFileFormat::DDS;
    std::int32_t pad_texels_u = 0;
    std::int32_t pad_texels_v = 0;
    float texel_offset = 0.5f; ///< sampling offset in texels
    bool allow_autoload = true;
    MipFilter mip_filter = MipFilter::KAISER_GAMMA;
    std::vector<SetTextureEntry> textures; ///< in the order found
    std::string category;
    std::int32_t drop_mips = 0; ///< top levels to leave out
    std::string autofill;       ///< directory below the roots whose textures all join the set
    bool autosplit = false;     ///< the atlas may become several
    bool has_positions = false; ///< a lightmap positions file was read
    PrecookStrategy precook_strat = PrecookStrategy::NO_PRECOOKING;
    PackingOrder packing_order_strat = PackingOrder::DESC_DIM;
    InsertionStrategy insertion_strat = InsertionStrategy::PIXEL_STEP;
    std::vector<RemovalKind> removal_strats; ///< in the order in which they are asked
    float min_usage = 0.0f;                  ///< least share of an atlas that must be used, 0 to 1
    bool try_alternative_insertion = true;   ///< the generation loop may fall back to the other strategy
};

} // namespace mosaicer
