#pragma once

#include <cstddef>

namespace kst {

/// Where allocators get address space and memory from.
class PageAllocator {
public:
    /// `size` bytes of address space, aligned to 4,096, without memory; null when there is none.
    virtual void* reserve(std::size_t size) = 0;
    /// Puts memory behind whole pages of a reserved range; false when there is none.
    virtual bool commit(void* address, std::size_t size) = 0;

protected:
    constexpr PageAllocator() = default;
    ~PageAllocator() = default;
};

/// The system's virtual memory.
class SystemPageAllocator final : public PageAllocator {
public:
    constexpr SystemPageAllocator() = default;
    void* reserve(std::size_t size) override;
    bool commit(void* address, std::size_t size) override;
};

} // namespace kst
