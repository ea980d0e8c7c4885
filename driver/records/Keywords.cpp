#include "driver/records/Keywords.h"

#include <stdexcept>
#include <string>

namespace mosaicer {

void throw_unknown_keyword(std::string_view word, std::string_view lookup) {
    throw std::runtime_error("No enum element named " + std::string(word) + " found when doing " + std::string(lookup) +
                             " lookup");
}

void throw_unknown_value(std::string_view lookup) {
    throw std::runtime_error("No enum element found when doing " + std::string(lookup) + " lookup");
}

std::string_view file_extension(TextureFileFormat format) {
    constexpr std::array<std::string_view, 4> extensions{"dds", "tga", "png", "bmp"};
    const auto index = static_cast<std::size_t>(format);
    if (index >= extensions.size())
        throw_unknown_value(KeywordTable<TextureFileFormat>::lookup);
    return extensions[index];
}

} // namespace mosaicer
