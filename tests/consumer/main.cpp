// Packs two made-up textures and writes one level as a DDS file, with installed headers and libraries alone.

#include "compression/compress_mip_chain.h"
#include "packing/AtlasSurface.h"
#include "texture/Bitmap.h"

#include <cstdio>

namespace {

std::int32_t count_bytes(const void*, std::size_t count, const compression::LevelRecord*, void* user) {
    *static_cast<std::size_t*>(user) += count;
    return 0;
}

} // namespace

int main() {
    mosaicer::SourceTexture texture;
    texture.image.width = texture.image.height = 16;
    mosaicer::SetTextureEntry entry;
    entry.texture = &texture;
    mosaicer::AtlasSurface surface(32, 16);
    const bool placed = surface.insert(entry, true, false) && surface.insert(entry, true, false);
    const bool full = !surface.insert(entry, true, false);

    compression::CompressionOptions options;
    options.g_texture_format = compression::FORMAT_A8R8G8B8;
    options.g_mip_map_type = 31;
    options.g_specified_mip_maps = 1;
    const std::vector<compression::LevelImage> levels{{4, 4, std::vector<std::uint8_t>(64)}};
    std::size_t bytes = 0;
    const auto code = compression::compress_mip_chain(levels, options, count_bytes, &bytes);

    const mosaicer::Bitmap bitmap(2, 2);
    const bool good = placed && full && code == 0 && bytes == 128 + 64 && bitmap.width() == 2;
    std::puts(good ? "consumer: good" : "consumer: bad");
    return good ? 0 : 1;
}
