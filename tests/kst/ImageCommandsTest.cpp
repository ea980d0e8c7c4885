#include "tests/kst/KstProgram.h"
#include "tests/support/tga_bytes.h"

namespace mosaicer {
namespace {

using test_support::KstProgram;
using test_support::tga_bytes;
using testing::HasSubstr;

class KstImage : public KstProgram {};

std::string words(std::initializer_list<std::uint32_t> values) {
    std::string bytes;
    for (const std::uint32_t value : values)
        for (int shift = 0; shift < 32; shift += 8)
            bytes += static_cast<char>(value >> shift & 255);
    return bytes;
}

/// The head of a DDS file without mip levels, with flags, bits and masks of its pixel format.
std::string dds_head(std::uint32_t width, std::uint32_t height, std::initializer_list<std::uint32_t> pixel_format) {
    return "DDS " + words({124, 0x1007, height, width, 0, 0, 0}) + std::string(44, '\0') + words({32}) +
           words(pixel_format) + words({0x1000, 0, 0, 0, 0});
}

TEST_F(KstImage, measures_how_far_two_pictures_are_apart) {
    std::string picture = tga_bytes(2, 2, 0xFF808080u);
    folder.write("a.tga", picture);
    picture[18 + 3 * 4 + 1] = static_cast<char>(0x80 + 51); // green of the lower right pixel
    folder.write("green.tga", picture);
    picture[18 + 4 + 3] = 0; // alpha of the upper right pixel, and a larger difference
    folder.write("alpha.tga", picture);
    // One of 12 colour samples is off by 51, a fifth of the range: the mean square is 25 / 12 hundredths of its square.
    // 10 lg(25 * 12) = 24.77. One of 4 alpha samples is off by all of it: 10 lg 4 = 6.02.
    expect({"image", "diff", "a.tga", "green.tga"}, 0,
           "psnr_colour=24.77 psnr_alpha=inf largest=51 x=1 y=1 channel=green\n", "");
    expect({"image", "diff", "a.tga", "alpha.tga"}, 0,
           "psnr_colour=24.77 psnr_alpha=6.02 largest=255 x=1 y=0 channel=alpha\n", "");
    expect({"image", "diff", "a.tga", "a.tga"}, 0, "psnr_colour=inf psnr_alpha=inf largest=0\n", "");
    folder.write("wide.tga", tga_bytes(3, 2));
    expect({"image", "diff", "a.tga", "wide.tga"}, 1, "", "kst: the sizes differ: 2x2 and 3x2\n");
    EXPECT_EQ(run({"image", "diff", "a.tga"}).exit_code, 2);
}

TEST_F(KstImage, tells_and_converts_what_the_bitmap_library_reads) {
    folder.write("a.tga", tga_bytes(5, 3, 0x80112233u));
    for (const char* const name : {"a.png", "a.bmp", "A.PNG"}) {
        expect({"image", "convert", "a.tga", name}, 0, "", "");
        expect({"image", "info", name}, 0, "format=11 width=5 height=3 levels=1 faces=1\n", "");
        EXPECT_THAT(run({"image", "diff", "a.tga", name}).out, HasSubstr("psnr_colour=inf"));
    }
    expect({"image", "convert", "a.png", "b.tga", "--level", "1"}, 1, "", "kst: no level 1 in a.png: it has 1\n");
    folder.write("bad.png", folder.read("a.png").substr(0, 20));
    for (const char* const name : {"bad.png", "none.bmp"})
        expect({"image", "info", name}, 1, "", std::string("kst: cannot decode ") + name + "\n");
    expect({"image", "info", "a.gif"}, 1, "",
           "kst: cannot tell the format of a.gif: its name must end in .dds, .tga, .mip, .png or .bmp\n");
}

/// Types that the engine's parser refuses: run lengths, and grey without alpha bits.
TEST_F(KstImage, takes_tga_files_of_every_kind) {
    std::string runs = tga_bytes(4, 1, 0).substr(0, 18);
    runs[2] = 10;
    folder.write("runs.tga", runs + std::string("\x83\x33\x22\x11\x80", 5));
    std::string grey = tga_bytes(4, 1, 0).substr(0, 18);
    grey[2] = 3;
    grey[16] = 8;
    grey[17] = 0x20;
    folder.write("grey.tga", grey + "abcd");
    for (const char* const name : {"runs.tga", "grey.tga"})
        expect({"image", "info", name}, 0, "format=11 width=4 height=1 levels=1 faces=1\n", "");
    folder.write("flat.tga", tga_bytes(4, 1, 0x80112233u));
    expect({"image", "diff", "runs.tga", "flat.tga"}, 0, "psnr_colour=inf psnr_alpha=inf largest=0\n", "");
    expect({"image", "convert", "grey.tga", "out.tga"}, 0, "", "");
    EXPECT_EQ(folder.read("out.tga").substr(18, 4), "aaa\xFF");
    folder.write("cut.tga", runs);
    expect({"image", "info", "cut.tga"}, 1, "", "kst: cut.tga: Unsupported TARGA type\n");
}

TEST_F(KstImage, tells_and_converts_dds_formats_that_the_parser_has_no_number_for) {
    folder.write("565.dds", dds_head(2, 1, {0x40, 0, 16, 0xF800, 0x7E0, 0x1F, 0}) + std::string("\0\xF8\x1F\0", 4));
    expect({"image", "info", "565.dds"}, 0, "format=3 width=2 height=1 levels=1 faces=1\n", "");
    expect({"image", "convert", "565.dds", "out.tga"}, 0, "", "");
    EXPECT_EQ(folder.read("out.tga").substr(18, 8), std::string("\0\0\xFF\0\xFF\0\0\0", 8));
    folder.write("unknown.dds", dds_head(2, 1, {4, 0x30315844, 0, 0, 0, 0, 0}) + "data");
    expect({"image", "info", "unknown.dds"}, 1, "", "kst: unknown.ddsHas an unrecognized DDS file type.\n");
}

struct MipCase {
    std::uint32_t format;
    std::string pixel;
    std::string bgra;
};

TEST_F(KstImage, converts_mip_files_of_every_format_with_channels) {
    const std::string one = words({0x3F800000});
    const std::string half = words({0x3F000000});
    const MipCase cases[] = {
        {1, "x", std::string("\0\0\0x", 4)},
        {14, "xy", "xxxy"},
        {15, "xy", std::string("xy\0\xFF", 4)},
        {17, "0a0b0c0d", "abcd"},
        {18, half + one + words({0}) + words({0xBF800000}), std::string("\x80\xFF\0\0", 4)},
        {19, "abcd", "abcd"},
    };
    for (const MipCase& each : cases) {
        folder.write("p.mip", "MIP2" + words({1, each.format, 1, 1, 1}) + each.pixel);
        expect({"image", "convert", "p.mip", "out.tga"}, 0, "", "");
        EXPECT_EQ(folder.read("out.tga").substr(18, 4), each.bgra) << each.format;
    }
    folder.write("p.mip", "MIP2" + words({1, 16, 1, 1, 1}) + "abcd");
    expect({"image", "convert", "p.mip", "out.tga"}, 1, "", "kst: cannot convert image format 16 of p.mip\n");
}

} // namespace
} // namespace mosaicer
