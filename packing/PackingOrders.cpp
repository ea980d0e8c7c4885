#include "packing/PackingOrders.h"

#include "driver/records/NaturalSize.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <tuple>

namespace mosaicer {

namespace {

/// What an order compares, smallest first.
using SortKey = std::pair<std::int64_t, std::int64_t>;

struct PackingOrderInfo {
    PackingOrder value;
    std::string_view text;
    SortKey (*key)(const SetTextureEntry& entry);
};

SortKey by_area(const SetTextureEntry& entry) {
    return {-std::int64_t{natural_area(entry)}, 0};
}

SortKey by_width(const SetTextureEntry& entry) {
    const TexelSize size = natural_size(entry);
    return {-std::int64_t{size.width}, size.height};
}

SortKey by_height(const SetTextureEntry& entry) {
    const TexelSize size = natural_size(entry);
    return {-std::int64_t{size.height}, size.width};
}

constexpr std::array packing_orders{
    PackingOrderInfo{PackingOrder::DESC_DIM, "descending dimension", by_area},
    PackingOrderInfo{PackingOrder::DESC_UDIM_ASC_VDIM, "descending u-dimension, ascending v-dimension", by_width},
    PackingOrderInfo{PackingOrder::DESC_VDIM_ASC_UDIM, "descending v-dimension, ascending u-dimension", by_height},
};

const PackingOrderInfo& packing_order_info(PackingOrder order) {
    for (const auto& info : packing_orders)
        if (info.value == order)
            return info;
    throw std::runtime_error("Unknown packing order");
}

} // namespace

void precook(std::span<SetTextureEntry> textures, PrecookStrategy strategy) {
    for (SetTextureEntry& entry : textures) {
        const TexelSize size = natural_size(entry);
        if ((strategy == PrecookStrategy::MAJOR_UDIM && size.height > size.width) ||
            (strategy == PrecookStrategy::MAJOR_VDIM && size.width > size.height))
            entry.rotation = 90;
    }
}

std::string_view precook_text(PrecookStrategy strategy) {
    switch (strategy) {
    case PrecookStrategy::MAJOR_UDIM:
        return "Rotating textures so that u has the largest dimension.";
    case PrecookStrategy::MAJOR_VDIM:
        return "Rotating textures so that v has the largest dimension.";
    case PrecookStrategy::NO_PRECOOKING:
        break;
    }
    return "Not performing rotation of textures.";
}

PackingOrder resolve_packing_order(PackingOrder order, PrecookStrategy precook_strategy) {
    if (order != PackingOrder::BY_PRECOOK)
        return order;
    if (precook_strategy == PrecookStrategy::MAJOR_UDIM)
        return PackingOrder::DESC_UDIM_ASC_VDIM;
    if (precook_strategy == PrecookStrategy::MAJOR_VDIM)
        return PackingOrder::DESC_VDIM_ASC_UDIM;
    throw std::runtime_error("No precooking set but packing order is set to by precooking order");
}

std::string_view packing_order_text(PackingOrder order) {
    return packing_order_info(order).text;
}

std::vector<const SetTextureEntry*> in_packing_order(std::span<const SetTextureEntry> textures, PackingOrder order) {
    const PackingOrderInfo& info = packing_order_info(order);
    std::vector<std::pair<SortKey, const SetTextureEntry*>> keyed;
    keyed.reserve(textures.size());
    for (const SetTextureEntry& entry : textures)
        keyed.emplace_back(info.key(entry), &entry);
    std::stable_sort(keyed.begin(), keyed.end(), [](const auto& a, const auto& b) { return a.first < b.first; });

    std::vector<const SetTextureEntry*> sorted;
    sorted.reserve(keyed.size());
    for (const auto& [key, entry] : keyed)
        sorted.push_back(entry);
    return sorted;
}

} // namespace mosaicer
