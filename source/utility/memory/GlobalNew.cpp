// The language's allocation functions on the allocator chain. A program chooses them by linking kst::global_new.
//
// Plain forms throw what the chain throws: kst::ErrorWithCStack with the number of bytes, which the programs' handlers
// print, and not std::bad_alloc. The two can't be had in one class: both derive from std::exception, and a handler of
// that type doesn't catch an object that holds it twice. Library code that can do with less memory (std::stable_sort,
// std::get_temporary_buffer) asks through the nothrow forms, which give null for any failure.
//
// Alignment. The language lets a caller of `new` count on what an object of exactly that size can need: 8 for 24 bytes.
// `new[]` promises more: any object that is no larger. Clang takes the second rule for both (it clears a new 24-byte
// object with aligned 16-byte stores), so a program that it builds pads its requests by it.

#include "source/utility/memory/GlobalNew.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <iostream>
#include <new>

namespace kst {
namespace {

constinit SystemPageAllocator system_pages;
constinit AllocatorChain chain(system_pages);

/// The alignment of any object of up to `size` bytes.
std::size_t array_alignment(std::size_t size) noexcept {
    return std::bit_floor(std::clamp<std::size_t>(size, 1, __STDCPP_DEFAULT_NEW_ALIGNMENT__));
}

void* allocate_array(std::size_t size) {
    return chain.allocate_aligned(size, array_alignment(size));
}

void* allocate_object(std::size_t size) {
#ifdef __clang__
    return allocate_array(size);
#else
    return chain.allocate(size);
#endif
}

template <class Allocate>
void* or_null(Allocate&& allocate) noexcept {
    try {
        return allocate();
    } catch (...) {
        return nullptr;
    }
}

#ifdef MOSAICER_MEMORY_REPORT_DETAILED
/// Written when the statics of this file go, on standard error: standard output is the tool's.
struct ReportAtExit {
    ~ReportAtExit() { chain.report(std::cerr, MOSAICER_MEMORY_REPORT_DETAILED); }
} const report_at_exit;
#endif

} // namespace

AllocatorChain& global_chain() noexcept {
    return chain;
}

} // namespace kst

using kst::allocate_array;
using kst::allocate_object;
using kst::chain;
using kst::or_null;

void* operator new(std::size_t size) {
    return allocate_object(size);
}
void* operator new[](std::size_t size) {
    return allocate_array(size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return chain.allocate_aligned(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return operator new(size, alignment);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return or_null([=] { return allocate_object(size); });
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return or_null([=] { return allocate_array(size); });
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return or_null([=] { return operator new(size, alignment); });
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return or_null([=] { return operator new(size, alignment); });
}

// An address tells its allocator and the bitmap its size, so all forms of delete are one.
void operator delete(void* pointer) noexcept {
    chain.deallocate(pointer);
}
void operator delete[](void* pointer) noexcept {
    chain.deallocate(pointer);
}
void operator delete(void* pointer, std::size_t) noexcept {
    chain.deallocate(pointer);
}
void operator delete[](void* pointer, std::size_t) noexcept {
    chain.deallocate(pointer);
}
void operator delete(void* pointer, std::align_val_t) noexcept {
    chain.deallocate(pointer);
}
void operator delete[](void* pointer, std::align_val_t) noexcept {
    chain.deallocate(pointer);
}
void operator delete(void* pointer, std::size_t, std::align_val_t) noexcept {
    chain.deallocate(pointer);
}
void operator delete[](void* pointer, std::size_t, std::align_val_t) noexcept {
    chain.deallocate(pointer);
}
void operator delete(void* pointer, const std::nothrow_t&) noexcept {
    chain.deallocate(pointer);
}
void operator delete[](void* pointer, const std::nothrow_t&) noexcept {
    chain.deallocate(pointer);
}
void operator delete(void* pointer, std::align_val_t, const std::nothrow_t&) noexcept {
    chain.deallocate(pointer);
}
void operator delete[](void* pointer, std::align_val_t, const std::nothrow_t&) noexcept {
    chain.deallocate(pointer);
}
