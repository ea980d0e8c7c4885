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

/// Parts of one reservation of another page allocator, side by side.
class ReservedSpan final : public PageAllocator {
public:
    constexpr explicit ReservedSpan(PageAllocator& pages) : pages_(pages) {}

    /// Reserves the whole; without address space for it the span stays empty.
    void start(std::size_t size) {
        base_ = static_cast<std::byte*>(pages_.reserve(size));
        size_ = base_ ? size : 0;
    }
    std::byte* base() const noexcept { return base_; }
    std::size_t size() const noexcept { return size_; }

    void* reserve(std::size_t size) override {
        if (size > size_ - reserved_)
            return nullptr;
        reserved_ += size;
        return base_ + (reserved_ - size);
    }
    bool commit(void* address, std::size_t size) override { return pages_.commit(address, size); }

private:
    PageAllocator& pages_;
    std::byte* base_ = nullptr;
    std::size_t size_ = 0;
    std::size_t reserved_ = 0;
};

} // namespace kst
