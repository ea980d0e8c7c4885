#include "texture/Bitmap.h"

#include <FreeImage.h>

#include <stdexcept>
#include <utility>

namespace mosaicer {

Bitmap::Bitmap(std::int32_t width, std::int32_t height) : width_(width), height_(height) {
    handle_ = FreeImage_Allocate(width, height, 32, 0, 0, 0);
    if (handle_ == nullptr)
        throw std::runtime_error("Unable to allocate an image of " + std::to_string(width) + " by " +
                                 std::to_string(height) + " pixels");
    bits_ = FreeImage_GetBits(handle_);
}

Bitmap::Bitmap(Bitmap&& other) noexcept
    : handle_(std::exchange(other.handle_, nullptr)),
      bits_(std::exchange(other.bits_, nullptr)),
      width_(std::exchange(other.width_, 0)),
      height_(std::exchange(other.height_, 0)) {}

Bitmap& Bitmap::operator=(Bitmap&& other) noexcept {
    std::swap(handle_, other.handle_);
    std::swap(bits_, other.bits_);
    std::swap(width_, other.width_);
    std::swap(height_, other.height_);
    return *this;
}

Bitmap::~Bitmap() {
    if (handle_ != nullptr)
        FreeImage_Unload(handle_);
}

} // namespace mosaicer
