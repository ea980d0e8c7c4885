#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

struct FIBITMAP;

namespace mosaicer {

/// An image with 32 bits a pixel: blue, green, red, alpha bytes, rows packed, the first stored row at the bottom of the
/// picture. Moves only; the bitmap is freed with its holder.
class Bitmap {
public:
    /// Pixels are zero. Throws std::runtime_error when the memory is not to be had.
    Bitmap(std::int32_t width, std::int32_t height);
    Bitmap(Bitmap&&) noexcept;
    Bitmap& operator=(Bitmap&&) noexcept;
    ~Bitmap();

    std::int32_t width() const { return width_; }
    std::int32_t height() const { return height_; }

    /// width * height * 4 bytes.
    std::span<std::uint8_t> pixels() { return {bits_, byte_count()}; }
    std::span<const std::uint8_t> pixels() const { return {bits_, byte_count()}; }

private:
    std::size_t byte_count() const { return static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_) * 4; }

    FIBITMAP* handle_ = nullptr;
    std::uint8_t* bits_ = nullptr;
    std::int32_t width_ = 0;
    std::int32_t height_ = 0;
};

/// Level 0 first. Level n of a full chain has half the size of level n - 1, each side at least 1.
using MipChain = std::vector<Bitmap>;

} // namespace mosaicer
