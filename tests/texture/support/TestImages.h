#pragma once

#include "driver/records/Report.h"
#include "driver/records/RunFlags.h"
#include "texture/Bitmap.h"

#include <array>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

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

/// Gathers all that is said while it lives, and starts from fresh run flags.
class ReportCapture {
public:
    std::ostringstream progress; ///< verbose and debug as one console shows them under -v -d
    std::ostringstream warnings;
    std::ostringstream errors;
    std::ostringstream statistics;

    ReportCapture() {
        Report = {&progress, &progress, &warnings, &errors, &statistics};
        RunFlags = {};
    }
    ReportCapture(const ReportCapture&) = delete;
    ReportCapture& operator=(const ReportCapture&) = delete;
    ~ReportCapture() {
        Report = channels_;
        RunFlags = flags_;
    }

private:
    ReportChannels channels_ = Report;
    RunFlagValues flags_ = RunFlags;
};

/// The text of the exception that `action` ends with; empty if it ends well.
template <class Action>
std::string failure_text(Action action) {
    try {
        action();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return {};
}

/// A DDS file of 32 bits a pixel. `levels` top row first; `depth` and `caps2` go into the head.
inline std::string dds_file(const std::vector<Rows>& levels, std::uint32_t caps2 = 0, std::uint32_t depth = 0) {
    const auto width = static_cast<std::uint32_t>(levels[0][0].size());
    const auto height = static_cast<std::uint32_t>(levels[0].size());
    std::array<std::uint32_t, 32> head{
        0x20534444,         124,   0x000A1007u | (depth == 0 ? 0u : 0x800000u), height, width,
        width * height * 4, depth, static_cast<std::uint32_t>(levels.size())};
    const std::array<std::uint32_t, 8> format{32, 0x41, 0, 32, 0xFF0000, 0xFF00, 0xFF, 0xFF000000};
    std::copy(format.begin(), format.end(), head.begin() + 19);
    head[27] = 0x00401008;
    head[28] = caps2;
    std::string bytes(reinterpret_cast<const char*>(head.data()), 128);
    for (const Rows& level : levels)
        for (const auto& row : level)
            bytes.append(reinterpret_cast<const char*>(row.data()), row.size() * 4);
    return bytes;
}

inline Rows solid(std::size_t width, std::size_t height, std::uint32_t pixel) {
    return Rows(height, std::vector<std::uint32_t>(width, pixel));
}

} // namespace mosaicer::test
