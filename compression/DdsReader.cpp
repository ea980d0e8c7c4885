#include "compression/DdsReader.h"

#include "compression/Codes.h"
#include "compression/DdsFormats.h"
#include "compression/DdsHeader.h"
#include "compression/LevelSize.h"

#include <algorithm>
#include <bit>
#include <memory>
#include <optional>

namespace compression {
namespace {

constexpr std::uint32_t flag_mip_count = 0x20000;
constexpr std::uint32_t flag_depth = 0x800000;
constexpr std::uint32_t caps2_cube_bits = 0xFE00;

/// Sides beyond this are no image. Products of sides and bytes a pixel then fit 64 bits with room to spare.
constexpr std::uint32_t longest_side = 1 << 24;

/// Slices beyond this are no volume. A slice costs some bytes of its own, which many slices of one byte would multiply.
constexpr std::uint32_t most_slices = 1 << 16;

/// Stored bytes that are read and decoded at a time, so that they stay in the processor's cache.
constexpr std::size_t strip_bytes = std::size_t{1} << 18;

/// Room taken before the file has shown that it holds as much; it grows in the same proportion as what was delivered.
/// Fresh room is not written to, so it costs addresses and no memory.
constexpr std::size_t first_room = std::size_t{1} << 24;
constexpr std::size_t growth = 4;

std::size_t room_after(std::size_t have, std::size_t wanted) {
    return std::min(wanted, std::max(first_room, have * growth));
}

/// The bytes of one strip. Keeps its room between strips.
class StoredBytes {
public:
    std::uint8_t* data() { return bytes_.get(); }

    /// Makes room for `count` bytes in all and keeps the first `kept`.
    void reserve(std::size_t count, std::size_t kept) {
        if (count <= capacity_)
            return;
        auto grown = std::make_unique_for_overwrite<std::uint8_t[]>(count);
        std::copy_n(bytes_.get(), kept, grown.get());
        bytes_ = std::move(grown);
        capacity_ = count;
    }

    std::size_t capacity() const { return capacity_; }

private:
    std::unique_ptr<std::uint8_t[]> bytes_;
    std::size_t capacity_ = 0;
};

/// The file's bytes in order.
class ByteSource {
public:
    ByteSource(ReadCallback callback, void* user) : callback_(callback), user_(user) {}

    bool read(std::uint8_t* destination, std::size_t count) {
        return count == 0 || callback_(destination, count, user_) == count;
    }

    bool read(StoredBytes& bytes, std::size_t count) {
        for (std::size_t have = 0; have < count;) {
            bytes.reserve(room_after(have, count), have);
            const std::size_t end = std::min(count, bytes.capacity());
            if (!read(bytes.data() + have, end - have))
                return false;
            have = end;
        }
        return true;
    }

    bool drop(std::size_t count) {
        std::array<std::uint8_t, 16384> scratch;
        while (count > 0) {
            const std::size_t chunk = std::min(count, scratch.size());
            if (!read(scratch.data(), chunk))
                return false;
            count -= chunk;
        }
        return true;
    }

private:
    ReadCallback callback_;
    void* user_;
};

std::int32_t side_of_level(std::uint32_t side, std::uint32_t level) {
    return level < 31 ? std::max(1, static_cast<std::int32_t>(side >> level)) : 1;
}

/// Reads the images behind the header, in file order.
class ImageReader {
public:
    ImageReader(const DdsInfo& info, const DdsFormat& format, ByteSource& source)
        : info_(info), format_(format), source_(source) {}

    /// A plain texture or one face: all levels of the file, of which the first `levels` are kept.
    bool read_chain(std::vector<LevelImage>& images) {
        for (std::uint32_t level = 0; level < info_.file_levels; ++level) {
            const bool done = level < info_.levels ? read_image(level, images) : drop_image(level);
            if (!done)
                return false;
        }
        return true;
    }

    bool read_slices(std::vector<std::vector<LevelImage>>& slices) {
        for (std::uint32_t level = 0; level < info_.levels; ++level) {
            auto& images = slices.emplace_back();
            const std::uint32_t count = level < 32 ? std::max(1U, info_.depth >> level) : 1;
            for (std::uint32_t slice = 0; slice < count; ++slice)
                if (!read_image(level, images))
                    return false;
        }
        return true;
    }

private:
    std::size_t palette_byte_count(std::uint32_t level) const { return level == 0 ? format_.palette_byte_count() : 0; }

    std::size_t stored_byte_count(std::uint32_t level) const {
        return format_.stored_byte_count(side_of_level(info_.width, level), side_of_level(info_.height, level));
    }

    bool drop_image(std::uint32_t level) { return source_.drop(palette_byte_count(level) + stored_byte_count(level)); }

    /// Every image of level 0 brings a palette, which the levels behind it use too.
    bool read_image(std::uint32_t level, std::vector<LevelImage>& images) {
        if (!source_.read(palette_.data(), palette_byte_count(level)))
            return false;
        LevelImage& image = images.emplace_back();
        image.width = side_of_level(info_.width, level);
        const std::int32_t height = side_of_level(info_.height, level);
        const std::int32_t strip = rows_of_strip(image.width);
        while (image.height < height)
            if (!read_rows(image, std::min(strip, height - image.height), height))
                return false;
        return true;
    }

    /// Whole rows of blocks in any format.
    std::int32_t rows_of_strip(std::int32_t width) const {
        const std::size_t groups = strip_bytes / format_.stored_byte_count(width, 4);
        return 4 * static_cast<std::int32_t>(std::clamp<std::size_t>(groups, 1, longest_side / 4));
    }

    /// Adds rows to an image that will have `height`.
    bool read_rows(LevelImage& image, std::int32_t count, std::int32_t height) {
        if (!source_.read(strip_, format_.stored_byte_count(image.width, count)))
            return false;
        const std::size_t have = image.pixels.size();
        DecodedRows rows{image.width, count, nullptr};
        const std::size_t wanted = DecodedRows{image.width, height, nullptr}.byte_count();
        if (have + rows.byte_count() > image.pixels.capacity())
            image.pixels.reserve(room_after(have + rows.byte_count(), wanted));
        image.pixels.resize(have + rows.byte_count());
        image.height += count;
        rows.pixels = image.pixels.data() + have;
        format_.decode(strip_.data(), palette_.data(), rows);
        return true;
    }

    const DdsInfo& info_;
    const DdsFormat& format_;
    ByteSource& source_;
    std::array<std::uint8_t, 1024> palette_{};
    StoredBytes strip_;
};

void fill_levels(DdsInfo& info, const DdsHeader& header, std::uint32_t level_limit) {
    if ((header.flags & flag_mip_count) == 0 || header.mip_count == 0)
        return;
    info.file_levels = header.mip_count;
    info.levels =
        std::min(header.mip_count, static_cast<std::uint32_t>(std::bit_width(std::max(info.width, info.height))));
    if (level_limit != 0)
        info.levels = std::min(info.levels, level_limit);
}

void fill_info(DdsInfo& info, const DdsHeader& header, const DdsFormat& format, std::uint32_t level_limit) {
    info = DdsInfo{};
    info.pixel_format = header.pixel_format;
    info.width = header.width;
    info.height = header.height;
    info.depth = (header.flags & flag_depth) != 0 ? header.depth : 0;
    info.cube_bits = header.caps2 & caps2_cube_bits;
    const int flat_kind = info.cube_bits != 0 ? 1 : 0;
    info.kind = info.depth != 0 ? 2 : flat_kind;
    fill_levels(info, header, level_limit);
    info.bits_per_channel = format.bits_per_channel;
    info.channels = format.channels;
    info.compressed = format.block_bytes != 0 ? 1 : 0;
    info.palette_entries = format.palette_entries;
    info.d3d_format = format.d3d_format;
    info.library_format = format.library_format;
}

bool has_sound_size(const DdsInfo& info) {
    return info.width >= 1 && info.height >= 1 && info.width <= longest_side && info.height <= longest_side &&
           info.depth <= most_slices;
}

std::optional<DdsHeader> read_header(ByteSource& source) {
    DdsMagic magic{};
    DdsHeaderBytes bytes{};
    if (!source.read(magic.data(), magic.size()) || magic != dds_magic || !source.read(bytes.data(), bytes.size()))
        return std::nullopt;
    return decode_dds_header(bytes);
}

bool read_images(DdsInfo& info, ImageReader& reader) {
    if (info.kind == 0)
        return reader.read_chain(info.images);
    if (info.kind == 2)
        return reader.read_slices(info.slices);
    return std::all_of(info.faces.begin(), info.faces.end(), [&](auto& face) { return reader.read_chain(face); });
}

} // namespace

std::int32_t read_dds(DdsInfo& info, std::int32_t output_form, std::uint32_t level_limit, ReadCallback read,
                      void* user) {
    ByteSource source(read, user);
    const std::optional<DdsHeader> header = read_header(source);
    if (!header || output_form != 0)
        return UNSUPPORTED_FILE;
    const DdsFormat format = identify_dds_format(header->pixel_format);
    fill_info(info, *header, format, level_limit);
    if (format.decode == nullptr || !has_sound_size(info))
        return UNSUPPORTED_FILE;
    ImageReader reader(info, format, source);
    return read_images(info, reader) ? OK : UNSUPPORTED_FILE;
}

} // namespace compression
