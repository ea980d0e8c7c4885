#pragma once

#include <cstdint>

namespace kst {

/// The root of the engine's own type test, by fixed 32-bit identifiers. An identifier stands in stored files, so it
/// never changes; a class without one of its own keeps its base's.
class RTTI {
public:
    RTTI() = default;
    RTTI(const RTTI&) = default;
    RTTI& operator=(const RTTI&) = default;
    virtual ~RTTI() = default;

    /// True for the class's own identifier and those of all its bases.
    virtual bool is_a(std::uint32_t type_id) const = 0;
    virtual std::uint32_t type_id() const = 0;
};

} // namespace kst
