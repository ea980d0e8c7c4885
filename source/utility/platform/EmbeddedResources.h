#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace kst::platform {

/// Whose resources: the address of anything in a loaded module, or null for the program itself.
using Module = const void*;

/// A block of bytes linked into a module and found by a number. An object of this class with static lifetime puts its
/// block into the program's registry; a second block of the same module and number is not seen while the first lives.
/// The bytes are not owned. Register before other threads look.
class EmbeddedResource {
public:
    EmbeddedResource(Module module, std::uint16_t number, std::span<std::byte> bytes);
    EmbeddedResource(const EmbeddedResource&) = delete;
    EmbeddedResource& operator=(const EmbeddedResource&) = delete;
    ~EmbeddedResource();

private:
    friend std::span<std::byte> find_resource(Module module, std::uint16_t number);

    Module module_;
    std::uint16_t number_;
    std::span<std::byte> bytes_;
    EmbeddedResource* next_ = nullptr;
};

/// A null span if there is no such resource.
std::span<std::byte> find_resource(Module module, std::uint16_t number);

} // namespace kst::platform
