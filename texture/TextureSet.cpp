#include "texture/TextureSet.h"

#include "driver/records/PathText.h"
#include "driver/records/Report.h"
#include "texture/ImageOutput.h"
#include "texture/OutputFile.h"
#include "texture/TextureDatabase.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace mosaicer {
namespace {

/// From the last dot on, or nothing.
std::string extension_with_dot(const std::string& path) {
    const std::size_t dot = path.rfind('.');
    return dot == std::string::npos ? std::string() : path.substr(dot);
}

/// A set may be written into the folder that its sources lie in.
bool is_same_file(const std::string& a, const std::string& b) {
    std::error_code missing;
    return std::filesystem::equivalent(a, b, missing);
}

void copy_cube(const std::string& from, const std::string& to) {
    if (is_same_file(from, to))
        return; // opening the target would empty the source
    std::ifstream source(from, std::ios::binary);
    OutputFile target(to);
    std::array<char, 2048> block;
    const auto fail = [&](const char* text, const std::string& path) {
        target.discard();
        throw std::runtime_error(text + path);
    };
    while (!source.eof()) {
        if (!source.good())
            fail("Failure reading cube texture ", from);
        if (!target.good())
            fail("Failure writing cube texture ", to);
        source.read(block.data(), block.size());
        target.write(block.data(), static_cast<std::size_t>(source.gcount()));
    }
    if (!target.close())
        fail("Failure writing cube texture ", to);
}

} // namespace

void write_texture_image(const TextureImage& image, LoadedTexture& loaded, const std::string& target,
                         TextureFileFormat file_format, TexelFormat texel_format, std::int32_t nr_mips) {
    if (image.is_cube)
        return copy_cube(image.file_path, target + extension_with_dot(image.file_path));
    MipChain& mips = loaded.mips;
    if (nr_mips > 0 && static_cast<std::size_t>(nr_mips) < mips.size())
        mips.erase(mips.begin() + nr_mips, mips.end());
    save_image(mips, texel_format, file_format, target + "." + std::string(file_extension(file_format)));
}

void create_texture_set(const AtlasSetDefinition& definition, const std::string& output_root) {
    *Report.verbose << "Creating texture set " << definition.name << "..." << std::endl;
    const std::string folder = join_path(output_root, definition.name);
    create_directories(folder);

    OutputFile database(join_path(folder, "tdb_texture_set.xml"));
    database.write(texture_set_head(definition));
    for (const SetTextureEntry& entry : definition.textures) {
        const TextureImage& image = entry.texture->image;
        LoadedTexture loaded = load_image(image, {.with_mips = definition.nr_mips != 1,
                                                  .top_level_only = definition.file_format != TextureFileFormat::DDS,
                                                  .forced_width = entry.width,
                                                  .forced_height = entry.height,
                                                  .mip_filter = entry.mip_filter});
        // The line goes first: an image that fails leaves it as the last of a database without an end.
        database.write(texture_set_line(entry));
        write_texture_image(image, loaded, join_path(folder, output_name(entry)), definition.file_format,
                            definition.texel_format, definition.nr_mips);
    }
    database.write(texture_set_end());
    if (!database.close())
        database.discard();
    *Report.verbose << "Done." << std::endl;
}

} // namespace mosaicer
