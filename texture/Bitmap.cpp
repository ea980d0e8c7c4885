#include "texture/Bitmap.h"

#include "texture/BitmapFileCheck.h"
#include "texture/OutputFile.h"

#include <FreeImage.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace mosaicer {
namespace {

struct Unload {
    void operator()(FIBITMAP* bitmap) const { FreeImage_Unload(bitmap); }
};
using Handle = std::unique_ptr<FIBITMAP, Unload>;

struct CloseMemory {
    void operator()(FIMEMORY* memory) const { FreeImage_CloseMemory(memory); }
};

void drop_message(FREE_IMAGE_FORMAT /*format*/, const char* /*text*/) {}

/// Holds the library's plugins for as long as the process lives. A shared library counts the calls; a static one
/// needs them.
class Library {
public:
    Library() {
        FreeImage_Initialise(/*load_local_plugins_only=*/TRUE);
        // What is wrong with a file is told by the caller, with the file's name.
        FreeImage_SetOutputMessage(drop_message);
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    ~Library() { FreeImage_DeInitialise(); }
};

void use_library() {
    static const Library library;
}

FREE_IMAGE_FORMAT library_format(BitmapFormat format) {
    switch (format) {
    case BitmapFormat::png:
        return FIF_PNG;
    case BitmapFormat::tga:
        return FIF_TARGA;
    case BitmapFormat::bmp:
        break;
    }
    return FIF_BMP;
}

/// The other kinds of image, 16-bit grey and floats, have no form of 32 bits.
bool converts_to_32_bits(FIBITMAP* bitmap) {
    const FREE_IMAGE_TYPE type = FreeImage_GetImageType(bitmap);
    return type == FIT_BITMAP || type == FIT_RGB16 || type == FIT_RGBA16;
}

/// Asks for the header alone, so that a short file cannot make us take memory for a picture that it does not hold.
std::optional<std::pair<std::int32_t, std::int32_t>> plausible_size(const std::string& path, BitmapFormat format) {
    use_library();
    // The library would wait at a pipe for ever.
    std::error_code missing;
    if (!std::filesystem::is_regular_file(path, missing))
        return std::nullopt;
    const Handle header(FreeImage_Load(library_format(format), path.c_str(), FIF_LOAD_NOPIXELS));
    if (header == nullptr || !converts_to_32_bits(header.get()))
        return std::nullopt;
    const std::int64_t width = FreeImage_GetWidth(header.get());
    const std::int64_t height = FreeImage_GetHeight(header.get());
    if (width < 1 || height < 1 || width > max_image_side || height > max_image_side ||
        width * height > max_image_pixels ||
        !file_can_hold(path, format, {width, height, FreeImage_GetBPP(header.get())}))
        return std::nullopt;
    return std::pair(static_cast<std::int32_t>(width), static_cast<std::int32_t>(height));
}

/// Level 3 makes the bytes of level 6 in a third of its time.
constexpr int fast_deflate = 3;

unsigned write_to_file(void* buffer, unsigned size, unsigned count, fi_handle handle) {
    auto& file = *static_cast<OutputFile*>(handle);
    file.write(buffer, std::size_t{size} * count);
    return file.good() ? count : 0;
}

int seek_in_file(fi_handle handle, long offset, int origin) {
    auto& file = *static_cast<OutputFile*>(handle);
    const int result = std::fseek(file.handle(), offset, origin);
    if (result != 0)
        file.fail();
    return result;
}

long tell_in_file(fi_handle handle) {
    return std::ftell(static_cast<OutputFile*>(handle)->handle());
}

unsigned read_nothing(void* /*buffer*/, unsigned /*size*/, unsigned /*count*/, fi_handle /*handle*/) {
    return 0;
}

bool inside(std::int64_t left, std::int64_t top, std::int64_t right, std::int64_t bottom, const Bitmap& bitmap) {
    return left >= 0 && top >= 0 && right <= bitmap.width() && bottom <= bitmap.height();
}

FIBITMAP* require(FIBITMAP* handle, const char* operation, std::int32_t width, std::int32_t height) {
    if (handle == nullptr)
        throw std::runtime_error(std::string("Unable to ") + operation + " an image of " + std::to_string(width) +
                                 " by " + std::to_string(height) + " pixels");
    return handle;
}

} // namespace

Bitmap::Bitmap(std::int32_t width, std::int32_t height)
    : Bitmap(require(width < 1 || height < 1 ? nullptr : FreeImage_Allocate(width, height, 32, 0, 0, 0), "allocate",
                     width, height)) {}

Bitmap::Bitmap(FIBITMAP* handle)
    : handle_(handle),
      bits_(FreeImage_GetBits(handle)),
      width_(static_cast<std::int32_t>(FreeImage_GetWidth(handle))),
      height_(static_cast<std::int32_t>(FreeImage_GetHeight(handle))) {}

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

std::optional<Bitmap> Bitmap::load(const std::string& path, BitmapFormat format) {
    if (!plausible_size(path, format))
        return std::nullopt;
    Handle loaded(FreeImage_Load(library_format(format), path.c_str(), 0));
    if (loaded == nullptr)
        return std::nullopt;
    // The conversion of an image that is 32 bits already would be a mere copy.
    if (FreeImage_GetImageType(loaded.get()) != FIT_BITMAP || FreeImage_GetBPP(loaded.get()) != 32)
        loaded.reset(FreeImage_ConvertTo32Bits(loaded.get()));
    if (loaded == nullptr)
        return std::nullopt;
    return Bitmap(loaded.release());
}

std::optional<std::pair<std::int32_t, std::int32_t>> Bitmap::read_size(const std::string& path, BitmapFormat format) {
    return plausible_size(path, format);
}

bool Bitmap::save(const std::string& path, BitmapFormat format) const {
    use_library();
    OutputFile file(path);
    if (!file.good())
        return false;
    // The library's own file output does not look at the results of its writes: a full disk would pass unseen.
    FreeImageIO io{read_nothing, write_to_file, seek_in_file, tell_in_file};
    if (FreeImage_SaveToHandle(library_format(format), handle_, &io, &file, 0) == FALSE)
        file.fail();
    if (!file.close())
        file.discard();
    return file.good();
}

std::vector<std::uint8_t> Bitmap::encode_png(PngContent content) const {
    use_library();
    const Handle part(content == PngContent::colour ? FreeImage_ConvertTo24Bits(handle_)
                                                    : FreeImage_GetChannel(handle_, FICC_ALPHA));
    require(part.get(), "convert", width_, height_);
    const std::unique_ptr<FIMEMORY, CloseMemory> memory(FreeImage_OpenMemory(nullptr, 0));
    BYTE* bytes = nullptr;
    DWORD size = 0;
    if (memory == nullptr || FreeImage_SaveToMemory(FIF_PNG, part.get(), memory.get(), fast_deflate) == FALSE ||
        FreeImage_AcquireMemory(memory.get(), &bytes, &size) == FALSE)
        require(nullptr, "encode", width_, height_);
    return {bytes, bytes + size};
}

Bitmap Bitmap::rescale(std::int32_t width, std::int32_t height, RescaleFilter filter) const {
    return Bitmap(require(FreeImage_Rescale(handle_, width, height, static_cast<FREE_IMAGE_FILTER>(filter)), "make",
                          width, height));
}

std::optional<Bitmap> Bitmap::copy(std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom) const {
    if (left >= right || top >= bottom || !inside(left, top, right, bottom, *this))
        return std::nullopt;
    Bitmap part(right - left, bottom - top);
    for (std::int32_t y = top; y < bottom; ++y)
        std::memcpy(part.row(y - top), row(y) + std::ptrdiff_t{left} * 4, static_cast<std::size_t>(right - left) * 4);
    return part;
}

bool Bitmap::paste(const Bitmap& source, std::int32_t left, std::int32_t top) {
    if (!inside(left, top, std::int64_t{left} + source.width(), std::int64_t{top} + source.height(), *this))
        return false;
    for (std::int32_t y = 0; y < source.height(); ++y)
        std::memcpy(row(top + y) + std::ptrdiff_t{left} * 4, source.row(y),
                    static_cast<std::size_t>(source.width()) * 4);
    return true;
}

Bitmap Bitmap::rotate(std::int32_t degrees) const {
    // The library turns the other way round. Multiples of 90 move pixels and mix none.
    FIBITMAP* turned = FreeImage_Rotate(handle_, -static_cast<double>(degrees), nullptr);
    return Bitmap(require(turned, "rotate", width_, height_));
}

bool Bitmap::set_pixel(std::int32_t x, std::int32_t y, std::span<const std::uint8_t, 4> bgra) {
    if (x < 0 || y < 0 || x >= width_ || y >= height_)
        return false;
    std::copy(bgra.begin(), bgra.end(), row(y) + std::ptrdiff_t{x} * 4);
    return true;
}

} // namespace mosaicer
