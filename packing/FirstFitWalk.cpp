#include "packing/FirstFitWalk.h"

namespace mosaicer {

namespace {

constexpr std::size_t ordinary = 0;
constexpr std::size_t thin_x = 1;
constexpr std::size_t thin_y = 2;

constexpr std::int32_t smallest_seen_size(std::size_t kind, std::size_t thin) {
    return (kind & thin) != 0 ? 0 : 2;
}

} // namespace

FirstFitWalk::FirstFitWalk(std::int32_t width, std::int32_t height)
    : grid_(width, height), width_(width), height_(height) {}

std::optional<Position> FirstFitWalk::first_free(const WalkRequest& request) {
    if (request.width > width_ || request.height > height_)
        return std::nullopt;
    return space_for(request).first_free(request);
}

FreeSpace& FirstFitWalk::space_for(const WalkRequest& request) {
    const std::size_t kind = (request.width == 1 ? thin_x : ordinary) | (request.height == 1 ? thin_y : ordinary);
    auto& space = spaces_[kind];
    if (!space) {
        space.emplace(width_, height_, smallest_seen_size(kind, thin_x), smallest_seen_size(kind, thin_y));
        for (const Placed& placed : placed_)
            occupy_in(kind, placed);
    }
    return *space;
}

void FirstFitWalk::occupy(const Position& position, std::int32_t width, std::int32_t height) {
    placed_.push_back({seen_extent(position.x, width), seen_extent(position.y, height)});
    for (std::size_t kind = 0; kind < spaces_.size(); ++kind)
        if (spaces_[kind])
            occupy_in(kind, placed_.back());
}

void FirstFitWalk::occupy_in(std::size_t kind, const Placed& placed) {
    const ExtentList columns = pieces_in(grid_.columns(), placed.x, smallest_seen_size(kind, thin_x));
    const ExtentList rows = pieces_in(grid_.rows(), placed.y, smallest_seen_size(kind, thin_y));
    for (const Extent& row : rows)
        for (const Extent& column : columns)
            spaces_[kind]->occupy({column.begin, row.begin, column.end, row.end});
}

void FirstFitWalk::reset() {
    placed_.clear();
    for (auto& space : spaces_)
        if (space)
            space->reset();
}

} // namespace mosaicer
