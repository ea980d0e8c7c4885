#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/image/CheckerTextureProducer.h"
#include "source/utility/image/write_targa.h"
#include "tests/utility/ImageFileBuilder.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace kst {
namespace {

using namespace test_support;

using Targa = Opened<TargaImageParser>;
using Dds = Opened<DDSImageParser>;
using Mip = Opened<MIPImageParser>;

const Bytes bgra_2x2{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};

TEST(ImageParsers, test_their_type_by_identifier) {
    const TargaImageParser parser("a.tga");
    EXPECT_TRUE(parser.is_a(0x3E134044) && parser.is_a(0x2CB20689));
    EXPECT_FALSE(parser.is_a(0x3ECA1DDA));
    EXPECT_EQ(parser.type_id(), 0x2CB20689u);
    const CheckerTextureProducer checker;
    EXPECT_TRUE(checker.is_a(0x3E134044) && checker.is_a(0x2CB20689) && checker.is_a(0x3ECA1DDA));
    EXPECT_EQ(checker.type_id(), 0x3ECA1DDAu);
    EXPECT_EQ(checker.file_name(), "");
    EXPECT_EQ(parser.file_name(), "a.tga");
}

TEST(ImageParsers, fail_to_open_a_missing_file_by_name) {
    BytesFileSystem files(nullptr, 0, false);
    TargaImageParser parser("missing");
    parser.set_file_system(&files);
    try {
        parser.open();
        FAIL();
    } catch (const ErrorWithCStack& failure) {
        EXPECT_STREQ(failure.what(), "Image parser cannot open missing.");
    }
    DDSImageParser lost("a.dds");
    EXPECT_THROW(lost.open(), AssertionException); // no file system at all
    VirtualFileSystem process_wide;
    EXPECT_THROW(lost.open(), ErrorWithCStack);
}

struct RefusedTarga {
    TargaHead head;
    const char* message;
};

TEST(TargaImageParser, refuses_what_it_does_not_know) {
    const char* type = "the.file: Unsupported TARGA type";
    const char* palette =
        "the.file: Palettized TARGA files with palette resolution other than 24 or 32 bits unsupported";
    const char* depth = "the.file: Unsupported color depth";
    const RefusedTarga cases[] = {{{.image_type = 10}, type},
                                  {{.image_type = 0}, type},
                                  {{.image_type = 1, .colormap_depth = 16, .depth = 8}, palette},
                                  {{.image_type = 3, .depth = 8, .descriptor = 32}, depth},
                                  {{.image_type = 1, .colormap_depth = 24, .depth = 8, .descriptor = 0}, depth},
                                  {{.depth = 16, .descriptor = 1}, depth},
                                  {{.depth = 24, .descriptor = 8}, depth},
                                  {{.depth = 32, .descriptor = 0}, depth},
                                  {{.depth = 15, .descriptor = 0}, depth}};
    for (const RefusedTarga& refused : cases)
        EXPECT_EQ(open_failure<TargaImageParser>(refused.head.bytes()), refused.message);
}

struct TargaFormat {
    TargaHead head;
    std::uint32_t format;
    std::size_t pixel_bytes;
};

TEST(TargaImageParser, tells_format_and_size_and_gives_the_files_pixels) {
    const TargaFormat cases[] = {
        {{.image_type = 3, .depth = 8}, 0, 1},
        {{.image_type = 2, .depth = 8}, 0, 1},
        {{.colormap_type = 1, .image_type = 1, .colormap_length = 2, .colormap_depth = 24, .depth = 8}, 12, 1},
        {{.id_length = 5, .depth = 16, .descriptor = 32}, 3, 2},
        {{.depth = 24, .descriptor = 32}, 9, 3},
        {{.depth = 32}, 11, 4}};
    for (TargaFormat c : cases) {
        c.head.width = 3;
        c.head.height = 2;
        const Bytes pixels = counting(6 * c.pixel_bytes, 100);
        const std::size_t skipped = std::size_t{c.head.id_length} + c.head.colormap_length * 3U;
        Targa targa(c.head.bytes() + Bytes(skipped) + pixels);
        EXPECT_EQ(targa.format(), (ImageDescription{c.format, 3, 2}));
        EXPECT_EQ(targa.parser.mip_count(), 1u);
        EXPECT_EQ(targa.parser.face_count(), 1u);
        EXPECT_FALSE(targa.parser.has_palette());
        EXPECT_EQ(targa.read(), pixels);
    }
}

TEST(TargaImageParser, turns_rows_and_pixels_by_the_descriptor) {
    struct Turned {
        std::uint8_t descriptor;
        Bytes first_bytes; ///< of the four pixels
    };
    for (const Turned& c : {Turned{32 | 8, {1, 5, 9, 13}}, Turned{8, {9, 13, 1, 5}}, Turned{32 | 16 | 8, {5, 1, 13, 9}},
                            Turned{16 | 8, {13, 9, 5, 1}}}) {
        Targa targa(TargaHead{.width = 2, .height = 2, .descriptor = c.descriptor}.bytes() + bgra_2x2);
        const Bytes direct = targa.read();
        const Bytes converted = targa.read({FORMAT_XRGB_8888, 2, 2});
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_EQ(direct[4 * i], c.first_bytes[i]);
            EXPECT_EQ(converted[4 * i], c.first_bytes[i]);
            EXPECT_EQ(converted[4 * i + 3], 0);
        }
    }
}

TEST(TargaImageParser, reads_the_palette_from_its_first_entry_on) {
    std::vector<std::uint32_t> palette(256, 7);
    TargaHead head{.colormap_type = 1,
                   .image_type = 1,
                   .colormap_first = 254,
                   .colormap_length = 2,
                   .colormap_depth = 24,
                   .width = 1,
                   .height = 1,
                   .depth = 8};
    Targa narrow(head.bytes() + Bytes{1, 2, 3, 4, 5, 6} + Bytes{99});
    EXPECT_EQ(narrow.read(narrow.format(), palette.data()), Bytes{99});
    EXPECT_EQ(palette[253], 7u);
    EXPECT_EQ(palette[254], 0xFF030201u);
    EXPECT_EQ(palette[255], 0xFF060504u);
    head.colormap_depth = 32;
    Targa wide(head.bytes() + Bytes{1, 2, 3, 4, 5, 6, 7, 8} + Bytes{99});
    EXPECT_EQ(wide.read(wide.format(), palette.data()), Bytes{99});
    EXPECT_EQ(palette[254], 0x04030201u);
    EXPECT_EQ(wide.read(), Bytes{99}); // and skips it where none is wanted
    head.colormap_length = 3;
    Targa over(head.bytes() + Bytes(12) + Bytes{99});
    EXPECT_THROW(over.read(over.format(), palette.data()), ImageParserException);
}

TEST(TargaImageParser, resizes_by_nearest_neighbour) {
    const Bytes row{10, 20, 30};
    Targa targa(TargaHead{.image_type = 3, .width = 3, .height = 1, .depth = 8}.bytes() + row);
    EXPECT_EQ(targa.read({0, 6, 1}), (Bytes{10, 10, 20, 20, 30, 30}));
    EXPECT_EQ(targa.read({0, 2, 2}), (Bytes{10, 20, 10, 20}));
    // The step 3 / 5 is cut in its 16th binary place, so position 5 falls just short of column 3.
    EXPECT_EQ(targa.read({0, 5, 1}), (Bytes{10, 10, 20, 20, 30}));
    EXPECT_EQ(targa.read({FORMAT_RGB_888, 1, 1}), (Bytes{10, 10, 10}));
    EXPECT_EQ(targa.read({0, 0, 4}), Bytes{});
}

TEST(TargaImageParser, reads_back_what_the_writer_wrote) {
    for (const std::uint32_t format : {10u, 11u}) {
        Archive archive("out", std::make_unique<MemoryDataStore>(), 0, 0, /*unbounded=*/true);
        ASSERT_TRUE(write_targa(archive, {format, 2, 2}, bgra_2x2.data()));
        Bytes file(static_cast<std::size_t>(archive.size()));
        archive.set_position(0);
        archive.read(file.data(), file.size());
        EXPECT_EQ(file, (TargaHead{.width = 2, .height = 2}.bytes() + bgra_2x2));
        EXPECT_EQ(Targa(file).read(), bgra_2x2);
    }
    Archive archive("out", std::make_unique<MemoryDataStore>(), 0, 0, /*unbounded=*/true);
    EXPECT_FALSE(write_targa(archive, {9, 2, 2}, bgra_2x2.data()));
    EXPECT_FALSE(write_targa(archive, {10, 70000, 1}, bgra_2x2.data()));
    EXPECT_EQ(archive.size(), 0);
}

TEST(DDSImageParser, tells_format_levels_and_faces) {
    for (const auto& [digit, format] : {std::pair{'1', 20u}, {'2', 22u}, {'3', 23u}, {'4', 24u}, {'5', 25u}})
        EXPECT_EQ(Dds(DdsHead::compressed(digit, 8, 4).bytes()).format(), (ImageDescription{format, 8, 4}));
    EXPECT_EQ(Dds(DdsHead::argb(3, 5).bytes()).format(), (ImageDescription{11, 3, 5}));
    EXPECT_EQ(Dds(DdsHead{.width = 1, .height = 1, .bits = 16, .masks = {0xFF, 0, 0, 0xFF00}}.bytes()).format().format,
              14u);
    EXPECT_EQ(Dds(DdsHead{.width = 1, .height = 1, .code = 116}.bytes()).format().format, 18u);

    DdsHead head = DdsHead::argb(4, 4);
    head.caps2 = 0xFE00;
    head.magic = 0;
    Dds cube(head.bytes());
    EXPECT_EQ(cube.parser.mip_count(), 1u);
    EXPECT_EQ(cube.parser.face_count(), 6u);
    head.caps2 = 0;
    head.mip_count = 0xFFFFFFFF;
    Dds deep(head.bytes());
    EXPECT_EQ(deep.parser.mip_count(), 0xFFFFFFFFu);
    EXPECT_EQ(deep.parser.face_count(), 1u);

    const char* unrecognized = "the.fileHas an unrecognized DDS file type.";
    EXPECT_EQ(open_failure<DDSImageParser>(DdsHead{.code = 111}.bytes()), unrecognized);
    EXPECT_EQ(open_failure<DDSImageParser>(DdsHead{.bits = 32, .masks = {0xFF0000, 0xFF00, 0xFF, 0}}.bytes()),
              unrecognized);
}

struct LevelPlace {
    DdsHead head;
    std::uint32_t face;
    std::uint32_t long_side;
    std::size_t offset;
    std::size_t size;
};

TEST(DDSImageParser, finds_each_level_of_each_face) {
    const auto with = [](DdsHead head, std::uint32_t mips, std::uint32_t caps2 = 0, std::uint32_t linear = 0) {
        head.mip_count = mips;
        head.caps2 = caps2;
        if (linear != 0)
            head.flags |= 0x80000;
        head.linear_size = linear;
        return head;
    };
    const DdsHead dxt1 = DdsHead::compressed('1', 16, 16); // 128, 32, 8, 8, 8
    const DdsHead dxt5 = DdsHead::compressed('5', 16, 8);  // 4 * 2 * 16 = 128, 32, 8
    const LevelPlace cases[] = {
        {with(dxt1, 5), 0, 16, 0, 128},
        {with(dxt1, 5), 0, 4, 160, 8},
        {with(dxt1, 5), 0, 1, 176, 8},
        {with(dxt1, 5), 0, 3, 176, 8}, // no such level: the last
        {with(dxt1, 5, 0x200), 2, 8, 2 * 184 + 128, 32},
        {with(dxt5, 3), 0, 16, 0, 128},
        {with(dxt5, 3), 0, 8, 128, 32},
        {with(dxt1, 3, 0, 64), 0, 8, 64, 16},   // the header's size counts
        {with(dxt1, 2, 0, 400), 0, 16, 0, 128}, // but no more than the image takes
        {with(DdsHead::argb(5, 5), 2), 0, 5, 0, 100},
        {with(DdsHead::argb(5, 5), 2), 0, 2, 100, 16}, // a quarter is 25, the level has 2 by 2 pixels
        {with(DdsHead::argb(1, 1), 1, 0x200), 5, 1, 20, 4},
    };
    for (const LevelPlace& c : cases) {
        const Bytes body = counting(1200);
        Dds dds(c.head.bytes() + body);
        dds.parser.set_face(c.face);
        ImageDescription wanted = dds.format();
        const std::uint32_t shift = wanted.width == 5 && c.long_side == 2 ? 1 : 0;
        if (wanted.format == FORMAT_ARGB_8888)
            wanted = {wanted.format, wanted.width >> shift, wanted.height >> shift};
        else
            wanted = {wanted.format, c.long_side, c.long_side == 16 ? wanted.height : c.long_side};
        Bytes pixels(2000, 0xEE);
        dds.parser.read(pixels.data(), nullptr, wanted);
        const auto expected = body.begin() + static_cast<std::ptrdiff_t>(c.offset);
        EXPECT_TRUE(std::equal(expected, expected + static_cast<std::ptrdiff_t>(c.size), pixels.begin())) << c.offset;
        EXPECT_EQ(pixels[c.size], 0xEE) << c.offset;
    }
}

TEST(DDSImageParser, converts_pixels_but_no_blocks) {
    Dds argb(DdsHead::argb(2, 1).bytes() + Bytes{1, 2, 3, 4, 5, 6, 7, 8});
    EXPECT_EQ(argb.read({FORMAT_RGB_888, 2, 1}), (Bytes{1, 2, 3, 5, 6, 7}));
    Dds blocks(DdsHead::compressed('1', 4, 4).bytes() + Bytes(8));
    try {
        blocks.read({FORMAT_ARGB_8888, 4, 4});
        FAIL();
    } catch (const ImageParserException& failure) {
        EXPECT_STREQ(failure.what(), "the.file: Cannot convert a compressed image");
    }
}

TEST(MIPImageParser, reads_levels_and_palette_of_the_current_form) {
    // 4 by 2 in format 9: 24, 6 and, with no row left, 0 bytes.
    Mip mip(words({0x3250494D, 1, 9, 4, 2, 3}) + counting(30));
    EXPECT_EQ(mip.format(), (ImageDescription{9, 4, 2}));
    EXPECT_EQ(mip.parser.mip_count(), 3u);
    EXPECT_FALSE(mip.parser.has_palette());
    EXPECT_EQ(mip.read(), counting(24));
    EXPECT_EQ(mip.read({9, 2, 1}), counting(6, 24));
    EXPECT_EQ(mip.read({9, 1, 1}), (Bytes{0xEE, 0xEE, 0xEE}));
    EXPECT_EQ(mip.read({FORMAT_ARGB_8888, 2, 1}), (Bytes{24, 25, 26, 255, 27, 28, 29, 255}));

    std::vector<std::uint32_t> palette(256);
    Mip indexed(words({0x3250494D, 1, 12, 2, 1, 1}) + counting(768) + Bytes{40, 41});
    EXPECT_EQ(indexed.read({12, 2, 1}, palette.data()), (Bytes{40, 41}));
    EXPECT_EQ(palette[0], 0x00000102u);
    EXPECT_EQ(palette[80], 0x00F0F1F2u);
    Mip other_type(words({0x3250494D, 2, 9, 1, 1, 1}) + counting(3));
    EXPECT_EQ(other_type.read(), (Bytes{0xEE, 0xEE, 0xEE}));
}

TEST(MIPImageParser, reads_the_older_form) {
    Mip narrow(Bytes{0x46, 0xC4, 0x53, 0x4B} + words({9, 1, 4}) + counting(12));
    EXPECT_EQ(narrow.parser.mip_count(), 1u);
    EXPECT_EQ(narrow.read(), counting(12));
    Mip argb(Bytes{0x46, 0xC4, 0x53, 0x4B} + words({11, 4, 4}) + counting(64 + 16 + 4));
    EXPECT_EQ(argb.parser.mip_count(), 3u);
    EXPECT_EQ(argb.read({11, 2, 2}), counting(16, 64));
    EXPECT_EQ(argb.read({11, 1, 1}), counting(4, 80));
}

TEST(MIPImageParser, refuses_other_files) {
    const char* message = "the.file appears to be corrupted, or has the wrong file format";
    EXPECT_EQ(open_failure<MIPImageParser>(words({0x3350494D, 1, 9, 1, 1, 1})), message);
    EXPECT_EQ(open_failure<MIPImageParser>(words({0x3250494D, 1, 27, 1, 1, 1})), message);
}

/// Opens and reads; true if that went well.
template <class Parser>
bool reads(const Bytes& bytes, bool unbounded) {
    try {
        Opened<Parser> opened(bytes, unbounded);
        if (image_byte_count(opened.format()) <= 4096)
            opened.read();
        opened.read({FORMAT_XRGB_8888, 3, 3});
        return true;
    } catch (const std::range_error&) {
        EXPECT_FALSE(unbounded);
    } catch (const ErrorWithCStack&) {
    }
    return false;
}

template <class Parser>
void cut_everywhere(const Bytes& file) {
    for (const bool unbounded : {false, true}) {
        EXPECT_TRUE(reads<Parser>(file, unbounded));
        for (std::size_t size = 0; size < file.size(); ++size)
            EXPECT_FALSE(
                reads<Parser>(Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size)), unbounded))
                << size;
        Bytes flipped = file;
        for (std::uint8_t& byte : flipped) {
            byte ^= 0xFF;
            reads<Parser>(flipped, unbounded);
            byte ^= 0xFF;
        }
    }
}

TEST(ImageParsers, fail_at_every_place_where_a_file_can_end) {
    cut_everywhere<TargaImageParser>(TargaHead{.width = 3, .height = 3}.bytes() + counting(36));
    cut_everywhere<DDSImageParser>(DdsHead::argb(3, 3).bytes() + counting(36));
    cut_everywhere<MIPImageParser>(words({0x3250494D, 1, 11, 3, 3, 1}) + counting(36));
}

TEST(ImageParsers, take_no_memory_for_what_a_header_promises) {
    DdsHead head = DdsHead::argb(0xFFFFFFFF, 0xFFFFFFFF);
    head.mip_count = 0xFFFFFFFF;
    head.caps2 = 0x200;
    for (const bool unbounded : {false, true}) {
        Dds dds(head.bytes() + counting(100), unbounded);
        dds.parser.set_face(5);
        EXPECT_ANY_THROW(dds.read({FORMAT_XRGB_8888, 16, 16}));
        Mip mip(words({0x3250494D, 1, 18, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF}) + counting(100), unbounded);
        EXPECT_ANY_THROW(mip.read({FORMAT_ARGB_FLOAT, 0xFFFF, 1}));
    }
}

TEST(CheckerTextureProducer, gives_four_quadrants) {
    CheckerTextureProducer checker;
    ImageDescription description;
    checker.get_format(description);
    EXPECT_EQ(description, (ImageDescription{10, 8, 8}));
    EXPECT_EQ(checker.mip_count(), 1u);
    std::uint32_t pixels[15];
    checker.read(pixels, nullptr, {11, 5, 3});
    const std::uint32_t y = 0x00FFFF00;
    const std::uint32_t b = 0x000000FF;
    const std::uint32_t expected[15] = {y, y, b, b, b, b, b, y, y, y, b, b, y, y, y};
    EXPECT_TRUE(std::equal(pixels, pixels + 15, expected));
    Bytes narrow(12);
    checker.read(narrow.data(), nullptr, {9, 2, 2});
    EXPECT_EQ(narrow, (Bytes{0, 255, 255, 255, 0, 0, 255, 0, 0, 0, 255, 255}));
}

} // namespace
} // namespace kst
