#include "source/utility/platform/EmbeddedResources.h"

namespace kst::platform {

namespace {

/// Linked through the objects themselves, so that it needs no memory and is ready before any constructor runs.
constinit EmbeddedResource* first_resource = nullptr;

} // namespace

EmbeddedResource::EmbeddedResource(Module module, std::uint16_t number, std::span<std::byte> bytes)
    : module_(module), number_(number), bytes_(bytes) {
    EmbeddedResource** end = &first_resource;
    while (*end)
        end = &(*end)->next_;
    *end = this;
}

EmbeddedResource::~EmbeddedResource() {
    EmbeddedResource** link = &first_resource;
    while (*link != this)
        link = &(*link)->next_;
    *link = next_;
}

std::span<std::byte> find_resource(Module module, std::uint16_t number) {
    for (const EmbeddedResource* resource = first_resource; resource; resource = resource->next_)
        if (resource->module_ == module && resource->number_ == number)
            return resource->bytes_;
    return {};
}

} // namespace kst::platform
