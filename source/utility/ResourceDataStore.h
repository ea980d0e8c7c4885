#pragma once

#include "source/utility/DataStore.h"
#include "source/utility/platform/EmbeddedResources.h"

#include <cstdint>

namespace kst {

/// A resource of the executable, in place: nothing is copied or owned. One that was not found reads and writes nothing.
class ResourceDataStore : public DataStore {
public:
    ResourceDataStore(platform::Module module, std::uint16_t number);

    bool is_found() const { return data_ != nullptr; }
    std::int32_t size() const { return size_; }

    /// Both are cut at the end of the resource, which cannot grow.
    std::size_t read(std::int64_t offset, void* data, std::size_t count) override;
    std::size_t write(std::int64_t offset, const void* data, std::size_t count) override;

private:
    std::size_t room(std::int64_t offset, std::size_t count) const;

    std::byte* data_ = nullptr;
    std::int32_t size_ = 0;
};

} // namespace kst
