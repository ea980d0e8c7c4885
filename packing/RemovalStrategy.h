#pragma once

#include "driver/records/AtlasSetDefinition.h"

#include <memory>
#include <string>
#include <vector>

namespace mosaicer {

using TextureList = std::vector<SetTextureEntry>;
using TexturePick = TextureList::const_iterator; ///< a position in a list; its end: no candidate

/// Picks the texture that leaves a list which can't be packed on one surface. Keeps nothing from pick to pick.
class RemovalStrategy {
public:
    RemovalStrategy() = default;
    RemovalStrategy(const RemovalStrategy&) = delete;
    RemovalStrategy& operator=(const RemovalStrategy&) = delete;

    /// A position in `list`, or the list's end if the strategy finds no candidate.
    virtual TexturePick pick_texture_to_remove(const TextureList& list) const = 0;
    virtual ~RemovalStrategy() = default;

    /// The strategy's name for the log.
    virtual std::string describe() const = 0;
};

/// The texture whose position lies furthest from the corner of greatest coordinates; the last of those equally far.
class RemoveFurthest : public RemovalStrategy {
public:
    TexturePick pick_texture_to_remove(const TextureList& list) const override;
    std::string describe() const override { return "RemoveFurthest"; }
};

/// The texture of least natural area, the first among equals.
class RemoveSmallest : public RemovalStrategy {
public:
    TexturePick pick_texture_to_remove(const TextureList& list) const override;
    std::string describe() const override { return "RemoveSmallest"; }
};

/// The biggest of the textures that tile, by the texture's own flags. Throws std::runtime_error if none of them has an
/// area.
class RemoveTiling : public RemovalStrategy {
public:
    TexturePick pick_texture_to_remove(const TextureList& list) const override;
    std::string describe() const override { return "RemoveTiling"; }
};

/// The biggest texture of the group with the fewest members, the lowest group number among equals; without any group
/// the biggest of all. Throws std::runtime_error if no texture of the group has an area.
class RemoveFromSmallestGroup : public RemovalStrategy {
public:
    TexturePick pick_texture_to_remove(const TextureList& list) const override;
    std::string describe() const override { return "RemoveFromSmallestGroup"; }
};

/// The texture of greatest natural area, the first among equals; never one without area.
class RemoveBiggest : public RemovalStrategy {
public:
    TexturePick pick_texture_to_remove(const TextureList& list) const override;
    std::string describe() const override { return "RemoveBiggest"; }
};

/// Asks its strategies in turn; the first that finds a candidate decides.
class CompoundStrategy : public RemovalStrategy {
public:
    void add(std::unique_ptr<RemovalStrategy> strategy) { strategies_.push_back(std::move(strategy)); }

    /// Never the list's end: throws std::runtime_error if no strategy finds a candidate, or there is none.
    TexturePick pick_texture_to_remove(const TextureList& list) const override;

    /// A heading and one numbered line for each strategy, each with its line end.
    std::string describe() const override;

private:
    std::vector<std::unique_ptr<RemovalStrategy>> strategies_;
};

/// Throws std::runtime_error "Unrecognized removal strategy" for a value outside the enumeration.
std::unique_ptr<RemovalStrategy> make_removal_strategy(RemovalKind kind);

} // namespace mosaicer
