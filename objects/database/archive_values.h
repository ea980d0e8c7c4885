#pragma once

#include "source/utility/Archive.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

// Values of the object stream on an archive. Numbers are the machine's own bytes, least significant first; records are
// their numbers one after the other.
namespace kst {

static_assert(std::endian::native == std::endian::little);

/// Reads exactly so many bytes. Throws what a bounded archive throws past its end, for unbounded ones too.
void read_bytes(Archive& archive, void* data, std::size_t count);
/// Writes exactly so many bytes. Throws DiskError where the store takes fewer.
void write_bytes(Archive& archive, const void* data, std::size_t count);

/// Bytes that the archive can have between its position and its end; 0 where an unbounded one does not know its end.
std::uint64_t bytes_left(const Archive& archive);

template <class T>
concept RawValue = std::is_trivially_copyable_v<T> && !std::is_pointer_v<T>;

template <RawValue T>
T read_value(Archive& archive) {
    T value;
    read_bytes(archive, &value, sizeof value);
    return value;
}

template <RawValue T>
void write_value(Archive& archive, const T& value) {
    write_bytes(archive, &value, sizeof value);
}

/// The text and a zero byte. Throws ErrorWithCStack for a text that holds a zero byte, which would end it early.
void write_string(Archive& archive, std::string_view text);

/// A 32-bit count, then the values. The count is a promise of the file: memory is taken only for what is there.
template <RawValue T>
void read_values(Archive& archive, std::vector<T>& values) {
    constexpr std::size_t step = (std::size_t{1} << 20) / sizeof(T);
    const std::size_t count = read_value<std::uint32_t>(archive);
    values.clear();
    if (count <= bytes_left(archive) / sizeof(T))
        values.reserve(count);
    while (values.size() < count) {
        const std::size_t have = values.size();
        const std::size_t more = std::min(step, count - have);
        values.resize(have + more);
        read_bytes(archive, values.data() + have, more * sizeof(T));
    }
}

template <RawValue T>
void write_values(Archive& archive, const std::vector<T>& values) {
    write_value(archive, static_cast<std::uint32_t>(values.size()));
    write_bytes(archive, values.data(), values.size() * sizeof(T));
}

} // namespace kst
