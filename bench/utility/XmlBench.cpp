// Loading a definition file of 20 MB from the disk: the dialect's parser and the compiled form of the same tree beside
// tinyxml2, pugixml and expat, each from the file to a tree (expat, which makes none, to counted elements).

#include "source/utility/filesystem/DiskFileSystem.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/xml/XMLCompiledForm.h"
#include "source/utility/xml/XMLDocument.h"

#include <benchmark/benchmark.h>

#include <expat.h>
#include <malloc.h>
#include <pugixml.hpp>
#include <tinyxml2.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace {

constexpr std::size_t file_bytes = 20'000'000;

/// Groups, sets and entries as a large project has them, with settings, names below folders, and comments.
std::string definition_text() {
    std::mt19937 random(20);
    const char* const folders[] = {"walls", "terrain/grass", "ui/icons", "particles/smoke", "liquids"};
    const char* const filters[] = {"KAISER_GAMMA", "BOX", "KEEP"};
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<sets texel_format=\"AF_DXT5\" nr_mips=\"4\">\n";
    for (std::size_t set = 0; text.size() < file_bytes; ++set) {
        text += "  <group name=\"level" + std::to_string(set) + "\" pad_texels_u=\"2\" pad_texels_v=\"2\">\n";
        text += "    <!-- made by the level tool -->\n    <atlas name=\"main\" width=\"2048\" height=\"2048\" "
                "autosplit=\"true\">\n";
        for (std::size_t entry = 0; entry < 400; ++entry) {
            text += "      <texture name=\"" + std::string(folders[random() % 5]) + "/tex_" +
                    std::to_string(random() % 50000) + "\" width=\"" + std::to_string(8 << (random() % 8)) +
                    "\" height=\"" + std::to_string(8 << (random() % 8)) + "\"";
            if (random() % 3 == 0)
                text += " mip_filter=\"" + std::string(filters[random() % 3]) + "\" rotation=\"90\"";
            text += "/>\n";
        }
        text += "    </atlas>\n  </group>\n";
    }
    return text + "</sets>\n";
}

/// A file to load, and the name space to load it from.
class Files {
public:
    Files() : directory_(std::filesystem::temp_directory_path() / "mosaicer_xml_bench") {
        std::filesystem::create_directories(directory_);
        text_ = definition_text();
        std::ofstream(source(), std::ios::binary) << text_;
        names_.mount("/", &disk_, /*owned=*/false);
        kst::XMLDocument document;
        document.load(source());
        elements_ = count(document);
        kst::Archive compiled = kst::open(compiled_source() + ".bin", "w");
        document.write_compiled(compiled);
        compiled_bytes_ = compiled.size();
    }
    ~Files() { std::filesystem::remove_all(directory_); }

    std::string source() const { return (directory_ / "sets.xml").string(); }
    /// Has only a compiled form.
    std::string compiled_source() const { return (directory_ / "compiled.xml").string(); }
    const std::string& text() const { return text_; }
    std::size_t elements() const { return elements_; }
    std::int64_t compiled_bytes() const { return compiled_bytes_; }

    static std::size_t count(const kst::XMLNode& node) {
        std::size_t elements = 1;
        for (const kst::XMLNode& child : node.children())
            elements += count(child);
        return elements;
    }

private:
    kst::VirtualFileSystem names_;
    kst::DiskFileSystem disk_;
    std::filesystem::path directory_;
    std::string text_;
    std::size_t elements_ = 0;
    std::int64_t compiled_bytes_ = 0;
};

/// The heap keeps its pages between loads, for all readers alike: otherwise a row tells less of its reader than of what
/// the rows before it left of the C library's thresholds for giving memory back.
void keep_pages() {
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
}

Files& files() {
    static const bool kept = (keep_pages(), true);
    static_cast<void>(kept);
    static Files the_files;
    return the_files;
}

void tell_speed(benchmark::State& state) {
    state.counters["MB/s"] = {static_cast<double>(files().text().size()) / 1e6,
                              benchmark::Counter::kIsIterationInvariantRate};
}

void load(benchmark::State& state, const std::string& path) {
    {
        kst::XMLDocument document;
        if (!document.load(path) || Files::count(document) != files().elements())
            return state.SkipWithError("wrong tree");
    }
    for (auto _ : state) {
        kst::XMLDocument document;
        benchmark::DoNotOptimize(document.load(path));
    }
    tell_speed(state);
}

void BM_Source(benchmark::State& state) {
    load(state, files().source());
}

void BM_CompiledForm(benchmark::State& state) {
    load(state, files().compiled_source());
    state.counters["file MB"] = static_cast<double>(files().compiled_bytes()) / 1e6;
}

void BM_TinyXml2(benchmark::State& state) {
    const std::string path = files().source();
    for (auto _ : state) {
        tinyxml2::XMLDocument document;
        if (document.LoadFile(path.c_str()) != tinyxml2::XML_SUCCESS)
            return state.SkipWithError("not parsed");
        benchmark::DoNotOptimize(document.RootElement());
    }
    tell_speed(state);
}

void BM_PugiXml(benchmark::State& state) {
    const std::string path = files().source();
    for (auto _ : state) {
        pugi::xml_document document;
        if (!document.load_file(path.c_str()))
            return state.SkipWithError("not parsed");
        benchmark::DoNotOptimize(document.document_element());
    }
    tell_speed(state);
}

void BM_Expat(benchmark::State& state) {
    const std::string path = files().source();
    for (auto _ : state) {
        std::ifstream file(path, std::ios::binary);
        const std::string text(std::istreambuf_iterator<char>(file), {});
        std::size_t elements = 0;
        XML_Parser parser = XML_ParserCreate(nullptr);
        XML_SetUserData(parser, &elements);
        XML_SetStartElementHandler(
            parser, [](void* data, const XML_Char*, const XML_Char**) { ++*static_cast<std::size_t*>(data); });
        XML_Parse(parser, text.data(), static_cast<int>(text.size()), 1);
        XML_ParserFree(parser);
        if (elements != files().elements())
            return state.SkipWithError("not parsed");
    }
    tell_speed(state);
}

BENCHMARK(BM_Source)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CompiledForm)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TinyXml2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PugiXml)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Expat)->Unit(benchmark::kMillisecond);

} // namespace
