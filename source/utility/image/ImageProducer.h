#pragma once

#include "source/utility/image/ImageFormat.h"
#include "source/utility/image/RTTI.h"

#include <cstdint>

namespace kst {

/// Tells an image's format, size, levels and faces, and delivers its pixels in the format, and where it can at the
/// size, that is asked for.
///
/// Order of calls: `open`, then `get_format` and the counts, `set_face` where there are several, `read`, `close`.
class ImageProducer : public RTTI {
public:
    static constexpr std::uint32_t class_type_id = 0x3E134044;

    bool is_a(std::uint32_t type_id) const override { return type_id == class_type_id; }
    std::uint32_t type_id() const override { return class_type_id; }

    /// Opens the source and reads the header. Every failure of a malformed file is an exception thrown here, but for a
    /// file that ends before its pixels do.
    virtual void open() {}
    /// Lets the source go.
    virtual void close() {}
    virtual bool has_palette() const = 0;
    virtual void get_format(ImageDescription& description) const = 0;
    virtual std::uint32_t mip_count() const = 0;
    virtual std::uint32_t face_count() const { return 1; }
    /// The face that `read` delivers.
    virtual void set_face(std::uint32_t index) { static_cast<void>(index); }
    /// Delivers pixels. `dest` takes image_byte_count(wanted) bytes; no more are written. `palette`, null or 256
    /// entries, takes the file's palette where there is one. Both stay the caller's.
    virtual void read(void* dest, std::uint32_t* palette, const ImageDescription& wanted) = 0;
};

} // namespace kst
