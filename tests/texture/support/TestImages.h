#pragma once

#include "texture/Bitmap.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include <unistd.h>

/// Small pictures and files for the tests of this room.
namespace mosaicer::test {

/// Pixels as words 0xAARRGGBB, top row first.
using Rows = std::vector<std::vector<std::uint32_t>>;

inline Bitmap from_rows(const Rows& rows) {
    Bitmap bitmap(static_cast<std::int32_t>(rows.front().size()), static_cast<std::int32_t>(rows.size()));
    for (std::size_t y = 0; y < rows.size(); ++y)
        for (std::size_t x = 0; x < rows[y].size(); ++x)
            for (std::size_t c = 0; c < 4; ++c)
                bitmap.row(static_cast<std::int32_t>(y))[4 * x + c] = static_cast<std::uint8_t>(rows[y][x] >> (8 * c));
    return bitmap;
}

inline Rows rows_of(const Bitmap& bitmap) {
    Rows rows(static_cast<std::size_t>(bitmap.height()));
    for (std::size_t y = 0; y < rows.size(); ++y) {
        const std::uint8_t* row = bitmap.row(static_cast<std::int32_t>(y));
        for (std::size_t x = 0; x < static_cast<std::size_t>(bitmap.width()); ++x)
            rows[y].push_back(row[4 * x] | std::uint32_t{row[4 * x + 1]} << 8 | std::uint32_t{row[4 * x + 2]} << 16 |
                              std::uint32_t{row[4 * x + 3]} << 24);
    }
    return rows;
}

inline Bitmap noise(std::int32_t width, std::int32_t height, std::mt19937& random) {
    Bitmap bitmap(width, height);
    for (std::uint8_t& byte : bitmap.pixels())
        byte = static_cast<std::uint8_t>(random());
    return bitmap;
}

inline std::string read_file(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void write_file(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

/// A folder of its own for one test, removed with it.
class TempDir {
public:
    TempDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "mosaicer-XXXXXX").string();
        path_ = mkdtemp(pattern.data());
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    const std::string& path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

} // namespace mosaicer::test
