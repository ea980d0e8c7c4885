// The engine's Targa parser on any bytes: header, pixels and conversions.

#include "fuzz/ImageParserFuzz.h"
#include "source/utility/image/TargaImageParser.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::run_image_parser<kst::TargaImageParser>(data, size);
    return 0;
}
