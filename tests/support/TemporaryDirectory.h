#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace test_support {

/// An empty directory for one test, removed with all that is in it.
class TemporaryDirectory {
public:
    TemporaryDirectory() {
        std::string name = (std::filesystem::temp_directory_path() / "mosaicer_test_XXXXXX").string();
        if (!mkdtemp(name.data()))
            throw std::runtime_error("cannot make a temporary directory");
        path_ = name;
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::filesystem::path& path() const { return path_; }
    std::string operator/(std::string_view name) const { return (path_ / name).string(); }

    /// Writes a file, with the directories above it, and gives its whole path.
    std::string write(std::string_view name, std::string_view bytes) const {
        const auto file = path_ / name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return file.string();
    }
    std::string read(std::string_view name) const {
        std::ifstream file(path_ / name, std::ios::binary);
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

} // namespace test_support
