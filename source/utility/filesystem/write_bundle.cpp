#include "source/utility/filesystem/write_bundle.h"

#include "source/utility/Errors.h"
#include "source/utility/FileDataStore.h"
#include "source/utility/MemoryDataStore.h"
#include "source/utility/filesystem/BundleDirectory.h"
#include "source/utility/filesystem/normalize_path.h"
#include "source/utility/platform/Directory.h"

#include <algorithm>
#include <array>
#include <limits>
#include <memory>

namespace kst {

namespace {

/// Walks a host directory into a tree of items.
class TreeBuilder {
public:
    explicit TreeBuilder(const std::string& leave_out) {
        platform::PathInfo info;
        if (!leave_out.empty() && platform::path_info(leave_out, info) == platform::PathResult::ok)
            left_out_.push_back(info.identity);
    }

    void fill(BundleItem& directory, const std::string& path) {
        enter(path);
        std::vector<platform::DirectoryEntry> entries;
        if (platform::list_directory(path, entries) != platform::PathResult::ok)
            throw_disk_error("Cannot list dir " + path);
        for (const auto& entry : entries)
            add(directory, entry, path + "/" + entry.name);
        sort_by_name(directory.items);
        above_.pop_back();
    }

private:
    void enter(const std::string& path) {
        platform::PathInfo info;
        if (platform::path_info(path, info) != platform::PathResult::ok)
            throw_disk_error("Cannot list dir " + path);
        if (std::find(above_.begin(), above_.end(), info.identity) != above_.end())
            throw ErrorWithCStack("Directory " + path + " leads back to one above it");
        above_.push_back(info.identity);
        if (above_.size() > BundleDirectory::most_levels)
            throw ErrorWithCStack("Directory " + path + " is nested too deep for a bundle");
    }

    void add(BundleItem& directory, const platform::DirectoryEntry& entry, const std::string& path) {
        if (!is_plain_name(entry.name))
            throw ErrorWithCStack("A bundle cannot hold the name of " + path);
        platform::PathInfo info;
        if (platform::path_info(path, info) != platform::PathResult::ok)
            throw ErrorWithCStack("Cannot pack " + path + ", it leads nowhere");
        if (std::find(left_out_.begin(), left_out_.end(), info.identity) != left_out_.end())
            return;
        BundleItem item{.name = normalize_path(entry.name, /*trailing_separator=*/false,
                                               /*keep_leading_separator=*/false),
                        .is_directory = entry.is_directory,
                        .host_path = path};
        if (item.is_directory)
            fill(item, path);
        else
            item.size = info.size;
        directory.items.push_back(std::move(item));
    }

    static void sort_by_name(std::vector<BundleItem>& items) {
        std::stable_sort(items.begin(), items.end(),
                         [](const BundleItem& a, const BundleItem& b) { return a.name < b.name; });
        const auto twin = std::adjacent_find(items.begin(), items.end(),
                                             [](const BundleItem& a, const BundleItem& b) { return a.name == b.name; });
        if (twin != items.end())
            throw ErrorWithCStack("A bundle cannot hold both " + twin->host_path + " and " +
                                  std::next(twin)->host_path);
    }

    std::vector<platform::FileIdentity> left_out_;
    std::vector<platform::FileIdentity> above_;
};

void put(Archive& output, std::uint64_t value, int width) {
    std::array<std::uint8_t, 8> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::uint8_t>(value >> (8 * i));
    output.write(bytes.data(), static_cast<std::size_t>(width));
}

void put(Archive& output, const std::string& text) {
    output.write(text.c_str(), text.size() + 1);
}

/// Writes the entries of a directory. The data of its files begins at `data_offset`.
class DirectoryWriter {
public:
    DirectoryWriter(Archive& output, int version, std::int64_t data_offset)
        : output_(output), version_(version), data_offset_(data_offset) {}

    void write(const BundleItem& directory) {
        for (const BundleItem& item : directory.items)
            item.is_directory ? write_directory(item) : write_file(item);
        put_tag(BundleTag::end, bundle_v1_end);
    }

private:
    void write_directory(const BundleItem& item) {
        put_tag(BundleTag::directory, bundle_v1_directory);
        put(output_, item.present ? 1 : 0, 1);
        put(output_, item.name);
        write(item);
    }

    void write_file(const BundleItem& item) {
        const std::int64_t offset = item.present ? data_offset_ : 0;
        const std::int64_t size = item.present ? item.size : 0;
        constexpr std::int64_t most_offset_v1 = std::numeric_limits<std::int32_t>::max();
        if (size > std::numeric_limits<std::uint32_t>::max() || (version_ == 1 && offset > most_offset_v1))
            throw ErrorWithCStack("A bundle of version " + std::to_string(version_) + " has no room for " +
                                  item.host_path);
        put_tag(BundleTag::file, static_cast<std::int32_t>(version_ == 1 ? offset : 0));
        if (version_ == 2)
            put(output_, static_cast<std::uint64_t>(offset), 8);
        put(output_, static_cast<std::uint64_t>(size), 4);
        put(output_, item.present ? 1 : 0, 1);
        put(output_, item.name);
        data_offset_ += size;
    }

    void put_tag(BundleTag tag, std::int32_t value_v1) {
        if (version_ == 1)
            put(output_, static_cast<std::uint32_t>(value_v1), 4);
        else
            put(output_, static_cast<std::uint8_t>(tag), 1);
    }

    Archive& output_;
    int version_;
    std::int64_t data_offset_;
};

void write_head(Archive& output, const BundleItem& root, int version, std::int64_t data_offset) {
    output.write("BNDL", 4);
    put(output, static_cast<std::uint64_t>(version), 4);
    put(output, 0, 8);
    DirectoryWriter(output, version, data_offset).write(root);
}

void copy_data(Archive& output, const BundleItem& item) {
    FileDataStore file(item.host_path, platform::Disposition::open_existing, platform::Access::read, ShareMode::read);
    std::array<std::byte, 65'536> block; // NOLINT(cppcoreguidelines-pro-type-member-init)
    std::int64_t copied = 0;
    while (const std::size_t bytes = file.is_valid() ? file.read(copied, block.data(), block.size()) : 0) {
        output.write(block.data(), bytes);
        copied += static_cast<std::int64_t>(bytes);
    }
    if (copied != item.size || !file.is_valid())
        throw ErrorWithCStack("File " + item.host_path + " changed while it was packed");
}

void copy_all_data(Archive& output, const BundleItem& directory) {
    for (const BundleItem& item : directory.items) {
        if (item.is_directory)
            copy_all_data(output, item);
        else if (item.present)
            copy_data(output, item);
    }
}

} // namespace

BundleItem bundle_tree(const std::string& host_directory, const std::string& leave_out) {
    BundleItem root{.is_directory = true, .host_path = host_directory};
    TreeBuilder(leave_out).fill(root, host_directory);
    return root;
}

void write_bundle(Archive& output, const BundleItem& root, int version) {
    if (version != 1 && version != 2)
        throw ErrorWithCStack("Bundle version " + std::to_string(version) + " is neither 1 nor 2");
    // A dry run tells how long the directory is, and so where the data begins.
    Archive dry("bundle", std::make_unique<NullDataStore>(), 0, 0, /*unbounded=*/true);
    write_head(dry, root, version, 0);
    // Gathered in memory first: a file takes one system call a write.
    auto store = std::make_unique<MemoryDataStore>();
    const MemoryDataStore& bytes = *store;
    Archive head("bundle", std::move(store), 0, 0, /*unbounded=*/true);
    write_head(head, root, version, dry.size());
    output.write(bytes.bytes().data(), bytes.bytes().size());
    copy_all_data(output, root);
}

void create_bundle(const std::string& bundle, const std::string& host_directory, int version) {
    const BundleItem root = bundle_tree(host_directory, bundle);
    const std::string part = bundle + ".part";
    try {
        auto store = std::make_unique<FileDataStore>(part, platform::Disposition::create_always,
                                                     platform::Access::write, ShareMode::none);
        if (!store->is_valid())
            throw_disk_error("Cannot open " + bundle);
        Archive output(bundle, std::move(store), 0, 0, /*unbounded=*/true);
        write_bundle(output, root, version);
    } catch (...) {
        platform::remove_file(part);
        throw;
    }
    if (platform::rename_file(part, bundle))
        return;
    platform::remove_file(part);
    throw_disk_error("Cannot write to file " + bundle);
}

} // namespace kst
