#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace mosaicer {

enum class TexelFormat : std::int32_t { AF_A8R8G8B8, AF_DXT1, AF_DXT3, AF_DXT5, AF_BUMP_A8L8, AF_BUMP_DXT5 };

enum class TextureFileFormat : std::int32_t { DDS, TGA, PNG, BMP };

enum class MipFilter : std::int32_t {
    KEEP,
    NEAREST_NEIGHBOUR,
    BOX,
    BOX_GAMMA,
    BILINEAR,
    BSPLINE,
    BICUBIC,
    CATMULLROM,
    CATMULLROM_SHARPEN,
    CATMULLROM_PRESHARPEN,
    CATMULLROM_PRESHARPEN_HARD,
    KAISER_GAMMA,
    KAISER_GAMMA_CRISP
};

enum class PrecookStrategy : std::int32_t { NO_PRECOOKING, MAJOR_UDIM, MAJOR_VDIM };

enum class PackingOrder : std::int32_t { DESC_DIM, DESC_UDIM_ASC_VDIM, DESC_VDIM_ASC_UDIM, BY_PRECOOK };

enum class InsertionStrategy : std::int32_t {
    PIXEL_STEP,
    PIXEL_STEP_EXPANDING_SQUARE,
    SMALL_STEP,
    SMALL_STEP_EXPANDING_SQUARE
};

enum class RemovalKind : std::int32_t { FURTHEST, BIGGEST, SMALLEST, TILING, SMALLEST_FROM_SMALLEST_GROUP };

/// One word of the definition file and what it stands for.
template <class Enum>
struct Keyword {
    std::string_view word;
    Enum value;
};

/// The words of one enumeration. `entries` is in the order of the values, so entry i has value i;
/// `lookup` names the look-up in the text of a failure.
template <class Enum>
struct KeywordTable;

template <>
struct KeywordTable<TexelFormat> {
    static constexpr std::string_view lookup = "atlas format";
    static constexpr std::array entries{
        Keyword<TexelFormat>{"AF_A8R8G8B8", TexelFormat::AF_A8R8G8B8},
        Keyword<TexelFormat>{"AF_DXT1", TexelFormat::AF_DXT1},
        Keyword<TexelFormat>{"AF_DXT3", TexelFormat::AF_DXT3},
        Keyword<TexelFormat>{"AF_DXT5", TexelFormat::AF_DXT5},
        Keyword<TexelFormat>{"AF_BUMP_A8L8", TexelFormat::AF_BUMP_A8L8},
        Keyword<TexelFormat>{"AF_BUMP_DXT5", TexelFormat::AF_BUMP_DXT5},
    };
};

template <>
struct KeywordTable<TextureFileFormat> {
    static constexpr std::string_view lookup = "texture file format";
    static constexpr std::array entries{
        Keyword<TextureFileFormat>{"DDS", TextureFileFormat::DDS},
        Keyword<TextureFileFormat>{"TGA", TextureFileFormat::TGA},
        Keyword<TextureFileFormat>{"PNG", TextureFileFormat::PNG},
        Keyword<TextureFileFormat>{"BMP", TextureFileFormat::BMP},
    };
};

template <>
struct KeywordTable<MipFilter> {
    static constexpr std::string_view lookup = "mip filter";
    static constexpr std::array entries{
        Keyword<MipFilter>{"KEEP", MipFilter::KEEP},
        Keyword<MipFilter>{"NEAREST_NEIGHBOUR", MipFilter::NEAREST_NEIGHBOUR},
        Keyword<MipFilter>{"BOX", MipFilter::BOX},
        Keyword<MipFilter>{"BOX_GAMMA", MipFilter::BOX_GAMMA},
        Keyword<MipFilter>{"BILINEAR", MipFilter::BILINEAR},
        Keyword<MipFilter>{"BSPLINE", MipFilter::BSPLINE},
        Keyword<MipFilter>{"BICUBIC", MipFilter::BICUBIC},
        Keyword<MipFilter>{"CATMULLROM", MipFilter::CATMULLROM},
        Keyword<MipFilter>{"CATMULLROM_SHARPEN", MipFilter::CATMULLROM_SHARPEN},
        Keyword<MipFilter>{"CATMULLROM_PRESHARPEN", MipFilter::CATMULLROM_PRESHARPEN},
        Keyword<MipFilter>{"CATMULLROM_PRESHARPEN_HARD", MipFilter::CATMULLROM_PRESHARPEN_HARD},
        Keyword<MipFilter>{"KAISER_GAMMA", MipFilter::KAISER_GAMMA},
        Keyword<MipFilter>{"KAISER_GAMMA_CRISP", MipFilter::KAISER_GAMMA_CRISP},
    };
};

template <>
struct KeywordTable<PrecookStrategy> {
    static constexpr std::string_view lookup = "precook strategy";
    static constexpr std::array entries{
        Keyword<PrecookStrategy>{"NO_PRECOOKING", PrecookStrategy::NO_PRECOOKING},
        Keyword<PrecookStrategy>{"MAJOR_UDIM", PrecookStrategy::MAJOR_UDIM},
        Keyword<PrecookStrategy>{"MAJOR_VDIM", PrecookStrategy::MAJOR_VDIM},
    };
};

template <>
struct KeywordTable<PackingOrder> {
    static constexpr std::string_view lookup = "packing order strategy";
    static constexpr std::array entries{
        Keyword<PackingOrder>{"DESC_DIM", PackingOrder::DESC_DIM},
        Keyword<PackingOrder>{"DESC_UDIM_ASC_VDIM", PackingOrder::DESC_UDIM_ASC_VDIM},
        Keyword<PackingOrder>{"DESC_VDIM_ASC_UDIM", PackingOrder::DESC_VDIM_ASC_UDIM},
        Keyword<PackingOrder>{"BY_PRECOOK", PackingOrder::BY_PRECOOK},
    };
};

template <>
struct KeywordTable<InsertionStrategy> {
    static constexpr std::string_view lookup = "insertion strategy";
    static constexpr std::array entries{
        Keyword<InsertionStrategy>{"PIXEL_STEP", InsertionStrategy::PIXEL_STEP},
        Keyword<InsertionStrategy>{"PIXEL_STEP_EXPANDING_SQUARE", InsertionStrategy::PIXEL_STEP_EXPANDING_SQUARE},
        Keyword<InsertionStrategy>{"SMALL_STEP", InsertionStrategy::SMALL_STEP},
        Keyword<InsertionStrategy>{"SMALL_STEP_EXPANDING_SQUARE", InsertionStrategy::SMALL_STEP_EXPANDING_SQUARE},
    };
};

template <>
struct KeywordTable<RemovalKind> {
    static constexpr std::string_view lookup = "removal strategy";
    static constexpr std::array entries{
        Keyword<RemovalKind>{"FURTHEST", RemovalKind::FURTHEST},
        Keyword<RemovalKind>{"BIGGEST", RemovalKind::BIGGEST},
        Keyword<RemovalKind>{"SMALLEST", RemovalKind::SMALLEST},
        Keyword<RemovalKind>{"TILING", RemovalKind::TILING},
        Keyword<RemovalKind>{"SMALLEST_FROM_SMALLEST_GROUP", RemovalKind::SMALLEST_FROM_SMALLEST_GROUP},
    };
};

/// Throws std::runtime_error "No enum element named WORD found when doing LOOKUP lookup".
[[noreturn]] void throw_unknown_keyword(std::string_view word, std::string_view lookup);

/// Throws std::runtime_error "No enum element found when doing LOOKUP lookup".
[[noreturn]] void throw_unknown_value(std::string_view lookup);

/// The value of a keyword, matched exactly, case included. Throws std::runtime_error for an unknown word.
template <class Enum>
Enum parse_keyword(std::string_view word) {
    for (const auto& entry : KeywordTable<Enum>::entries)
        if (entry.word == word)
            return entry.value;
    throw_unknown_keyword(word, KeywordTable<Enum>::lookup);
}

/// The keyword of a value. Throws std::runtime_error for a value outside the table.
template <class Enum>
std::string_view keyword_of(Enum value) {
    for (const auto& entry : KeywordTable<Enum>::entries)
        if (entry.value == value)
            return entry.word;
    throw_unknown_value(KeywordTable<Enum>::lookup);
}

/// "dds", "tga", "png" or "bmp". Throws std::runtime_error for a value outside the enumeration.
std::string_view file_extension(TextureFileFormat format);

} // namespace mosaicer
