// A document with the files that it includes: the input is cut at each line "#file", the pieces are "a.xml", "b.xml"
// and so on, and "a.xml" is loaded. It loads or fails with one of the promised errors; a tree that was made passes
// through the compiled form unchanged.

#include "source/utility/Errors.h"
#include "source/utility/MemoryDataStore.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/xml/XMLCompiledForm.h"
#include "source/utility/xml/XMLDocument.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

/// Files in memory, by their normalised names.
class MemoryFiles : public kst::FileSystem {
public:
    explicit MemoryFiles(std::string_view input) {
        constexpr std::string_view separator = "#file\n";
        for (char name = 'a'; name <= 'z'; ++name) {
            const std::size_t end = input.find(separator);
            files_[std::string(1, name).append(".xml")] = std::string(input.substr(0, end));
            if (end == std::string_view::npos)
                return;
            input.remove_prefix(end + separator.size());
        }
    }

    bool exists(const std::string& path) override { return files_.contains(path); }
    std::string locate(const std::string& path, std::int64_t&, std::int32_t&) override { return path; }
    std::string system_path(const std::string& path) override { return path; }
    std::string full_path(const std::string& path) override { return path; }
    kst::Archive open(const std::string& path, const std::string&) override {
        const auto file = files_.find(path);
        if (file == files_.end())
            return {};
        const std::string& bytes = file->second;
        return {path, std::make_unique<kst::ConstMemoryDataStore>(bytes.data(), bytes.size()), 0,
                static_cast<std::int64_t>(bytes.size()), false};
    }
    bool make_dir(const std::string&) override { return false; }
    bool delete_file(const std::string&) override { return false; }
    void list(std::vector<std::string>&, const std::string&, const std::string&, bool) override {}
    std::uint64_t last_modified(const std::string&) override { return 0; }

private:
    std::map<std::string, std::string> files_;
};

void expect_compiled_form_to_keep(const kst::XMLDocument& document) {
    const std::string form = kst::compile_xml(document, document.included_files());
    kst::XMLDocument again;
    again.read_compiled({"form", std::make_unique<kst::ConstMemoryDataStore>(form.data(), form.size()), 0,
                         static_cast<std::int64_t>(form.size()), false});
    if (!(again == document) || again.included_files() != document.included_files())
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kst::VirtualFileSystem names;
    MemoryFiles files({reinterpret_cast<const char*>(data), size});
    names.mount("/", &files, /*owned=*/false);
    kst::XMLDocument document;
    try {
        document.load("a.xml");
    } catch (const kst::ErrorWithCStack&) {
        return 0;
    } catch (const std::range_error&) {
        return 0;
    }
    if (document.type() != kst::XML_NONE)
        expect_compiled_form_to_keep(document);
    return 0;
}
