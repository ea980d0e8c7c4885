#pragma once

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include <stdlib.h> // mkdtemp

namespace mosaicer::test {

/// A folder of its own for one test, gone with it.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "mosaicer_test_XXXXXX").string();
        path_ = ::mkdtemp(name.data());
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    std::string path(std::string_view below = {}) const {
        return below.empty() ? path_.string() : (path_ / below).string();
    }

    /// Makes the folders on the way; returns the whole path.
    std::string write(std::string_view below, std::string_view bytes) const {
        const std::filesystem::path file = path_ / below;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return file.string();
    }

    std::string read(std::string_view below) const {
        std::ifstream file(path_ / below, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /// Every file below, relative, in ascending order.
    std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const auto& item : std::filesystem::recursive_directory_iterator(path_))
            if (item.is_regular_file())
                names.push_back(item.path().lexically_relative(path_).string());
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    std::filesystem::path path_;
};

/// A TARGA of 32 bits in one colour, top row first.
inline std::string tga_bytes(int width, int height, std::uint32_t argb = 0xFF336699u) {
    std::string bytes(18, '\0');
    bytes[2] = 2;
    bytes[12] = static_cast<char>(width & 255);
    bytes[13] = static_cast<char>(width >> 8);
    bytes[14] = static_cast<char>(height & 255);
    bytes[15] = static_cast<char>(height >> 8);
    bytes[16] = 32;
    bytes[17] = 0x28;
    for (int i = 0; i < width * height; ++i)
        for (int shift = 0; shift < 32; shift += 8)
            bytes.push_back(static_cast<char>((argb >> shift) & 255));
    return bytes;
}

} // namespace mosaicer::test
