#pragma once

#include "source/utility/memory/PageAllocator.h"
#include "source/utility/platform/VirtualMemory.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace kst::test {

/// System pages that are given back at the end of the test, and that run out after `most_pages`.
class TestPages final : public PageAllocator {
public:
    explicit TestPages(std::size_t most_pages = ~std::size_t{0}) : pages_left_(most_pages) {}
    TestPages(const TestPages&) = delete;
    TestPages& operator=(const TestPages&) = delete;
    ~TestPages() {
        for (const auto& [base, size] : ranges_)
            release_address_range(base, size);
    }
    void* reserve(std::size_t size) override {
        void* const base = reserve_address_range(size);
        if (base)
            ranges_.emplace_back(base, size);
        return base;
    }
    bool commit(void* address, std::size_t size) override {
        if (size / 4096 > pages_left_)
            return false;
        pages_left_ -= size / 4096;
        return commit_pages(address, size);
    }

private:
    std::size_t pages_left_;
    std::vector<std::pair<void*, std::size_t>> ranges_;
};

} // namespace kst::test
