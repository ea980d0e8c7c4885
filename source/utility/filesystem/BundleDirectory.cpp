#include "source/utility/filesystem/BundleDirectory.h"

#include "source/utility/Errors.h"
#include "source/utility/filesystem/normalize_path.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <utility>

namespace kst {

/// Gives the bytes of an archive one by one, reading it in blocks.
class BundleDirectory::ByteReader {
public:
    explicit ByteReader(Archive archive) : archive_(std::move(archive)) { archive_.set_position(0); }

    [[noreturn]] void fail(const std::string& why) const {
        throw ErrorWithCStack("Bundle " + archive_.name() + ": " + why);
    }

    std::uint8_t byte() {
        if (next_ == filled_)
            refill();
        return static_cast<std::uint8_t>(block_[next_++]);
    }

    std::uint64_t number(int width) {
        std::uint64_t value = 0;
        for (int i = 0; i < width; ++i)
            value |= std::uint64_t{byte()} << (8 * i);
        return value;
    }

    std::string name(std::size_t longest) {
        std::string text;
        while (const std::uint8_t c = byte()) {
            if (text.size() == longest)
                fail("a path in the directory is too long");
            text.push_back(static_cast<char>(c));
        }
        return text;
    }

    std::int64_t archive_size() const { return archive_.size(); }

private:
    void refill() {
        const std::int64_t left = archive_.size() - archive_.position();
        filled_ = archive_.read(block_.data(), std::min(block_.size(), static_cast<std::size_t>(left)));
        next_ = 0;
        if (filled_ == 0)
            fail("the directory is cut off");
    }

    Archive archive_;
    std::array<std::byte, 16'384> block_;
    std::size_t next_ = 0;
    std::size_t filled_ = 0;
};

/// Reads the entries of all levels in one loop, so that deep nesting costs no stack.
class BundleDirectory::Reader {
public:
    Reader(BundleDirectory& directory, Archive archive) : directory_(directory), bytes_(std::move(archive)) {}

    void run() {
        if (bytes_.archive_size() < bundle_header_size)
            bytes_.fail("the header is cut off");
        bytes_.number(4);
        directory_.version_ = static_cast<std::int32_t>(bytes_.number(4));
        bytes_.number(8);
        if (directory_.version_ != 1 && directory_.version_ != 2)
            return;
        levels_.push_back({.index = 0, .path_bytes = 0});
        while (!levels_.empty())
            directory_.version_ == 1 ? read_entry_v1() : read_entry_v2();
    }

private:
    struct Level {
        std::uint32_t index = 0;    ///< of the directory's entry
        std::size_t path_bytes = 0; ///< of its path with a separator
    };

    void read_entry_v1() {
        const auto value = static_cast<std::int32_t>(bytes_.number(4));
        if (value == bundle_v1_directory)
            read_directory();
        else if (value == bundle_v1_end)
            levels_.pop_back();
        else
            read_file(value);
    }

    void read_entry_v2() {
        const std::uint8_t tag = bytes_.byte();
        if (tag == static_cast<std::uint8_t>(BundleTag::directory))
            read_directory();
        else if (tag == static_cast<std::uint8_t>(BundleTag::file))
            read_file(static_cast<std::int64_t>(bytes_.number(8)));
        else if (tag == static_cast<std::uint8_t>(BundleTag::end))
            levels_.pop_back();
        else
            bytes_.fail("unknown tag " + std::to_string(tag) + " in the directory");
    }

    void read_directory() {
        BundleEntry entry{.is_directory = true};
        read_flags_and_name(entry);
        const std::size_t path_bytes = levels_.back().path_bytes + entry.name.size() + 1;
        levels_.push_back({.index = add(std::move(entry)), .path_bytes = path_bytes});
        if (levels_.size() > most_levels)
            bytes_.fail("directories are nested too deep");
    }

    void read_file(std::int64_t offset) {
        BundleEntry entry{.offset = offset};
        entry.size = static_cast<std::int64_t>(bytes_.number(4));
        read_flags_and_name(entry);
        const bool inside =
            offset >= 0 && offset <= bytes_.archive_size() && entry.size <= bytes_.archive_size() - offset;
        if (entry.present && !inside)
            bytes_.fail("the data of " + entry.name + " lies outside the file");
        add(std::move(entry));
    }

    void read_flags_and_name(BundleEntry& entry) {
        entry.present = bytes_.byte() != 0;
        const std::size_t above = levels_.back().path_bytes;
        if (above > most_path_bytes)
            bytes_.fail("a path in the directory is too long");
        entry.name = bytes_.name(most_path_bytes - above);
        entry.parent = levels_.back().index;
    }

    std::uint32_t add(BundleEntry&& entry) {
        directory_.entries_.push_back(std::move(entry));
        return static_cast<std::uint32_t>(directory_.entries_.size() - 1);
    }

    BundleDirectory& directory_;
    ByteReader bytes_;
    std::vector<Level> levels_;
};

bool is_plain_name(std::string_view name) {
    return !name.empty() && name != "." && name != ".." &&
           name.find_first_of(std::string_view("/\\\0", 3)) == std::string_view::npos;
}

BundleDirectory::BundleDirectory() : entries_{BundleEntry{.is_directory = true}} {}

BundleDirectory::BundleDirectory(Archive archive) : BundleDirectory() {
    Reader(*this, std::move(archive)).run();
    // Only now that the entries no longer move in memory.
    for (std::uint32_t i = 1; i < entries_.size(); ++i)
        children_[entries_[i].parent][entries_[i].name] = i;
}

std::string BundleDirectory::path_of(std::size_t index) const {
    std::string path;
    for (; index != 0; index = entries_[index].parent)
        path.insert(0, path.empty() ? entries_[index].name : entries_[index].name + "/");
    return path;
}

const BundleEntry* BundleDirectory::find(const std::string& path) const {
    if (path == last_path_)
        return last_answer_;
    last_answer_ = walk(normalize_path(path, /*trailing_separator=*/false, /*keep_leading_separator=*/false));
    last_path_ = path;
    return last_answer_;
}

const BundleEntry* BundleDirectory::walk(std::string_view normalized) const {
    const BundleEntry* entry = &root();
    for (std::size_t start = 0; start <= normalized.size();) {
        const std::size_t end = std::min(normalized.find('\\', start), normalized.size());
        const auto& level = children_of(*entry);
        const auto found = level.find(normalized.substr(start, end - start));
        if (found == level.end())
            return nullptr;
        entry = &entries_[found->second];
        if (!entry->present)
            return entry;
        start = end + 1;
    }
    return entry;
}

const std::map<std::string_view, std::uint32_t>& BundleDirectory::children_of(const BundleEntry& directory) const {
    static const std::map<std::string_view, std::uint32_t> none;
    assert(&directory >= entries_.data() && &directory < entries_.data() + entries_.size());
    const auto found = children_.find(static_cast<std::uint32_t>(&directory - entries_.data()));
    return found == children_.end() ? none : found->second;
}

} // namespace kst
