#include "tools/kst/report/Page.h"

#include "tools/kst/report/AtlasAreas.h"
#include "tools/kst/report/show_images.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <iterator>
#include <utility>

namespace kst::tool::report {
namespace {

using nlohmann::ordered_json;

constexpr std::int32_t largest_side = 2048;
constexpr std::int32_t smallest_side = 256;
constexpr std::int64_t texel_budget = std::int64_t{1} << 27;

ordered_json rectangle_json(const Rectangle& r) {
    return {r.x, r.y, r.width, r.height};
}

ordered_json origin_json(const TextureOrigin& origin) {
    return {{"original", origin.orig_name},
            {"filter", origin.mip_filter},
            {"forced", {origin.forced_width, origin.forced_height}}};
}

/// The texels that a cube's faces have on the picture of the opened cube.
ordered_json faces_json(std::int32_t width, std::int32_t height) {
    ordered_json faces = ordered_json::array();
    for (const CubeFace& face : cube_faces)
        faces.push_back({{"name", face.name}, {"rect", {face.column * width, face.row * height, width, height}}});
    return faces;
}

std::vector<ImageTask> tasks_of(const RunRecord& run) {
    std::vector<ImageTask> tasks;
    for (const Atlas& atlas : run.atlases)
        tasks.push_back({&atlas.image, &atlas.textures});
    for (const TextureSet& set : run.sets)
        for (const SetImage& image : set.images)
            tasks.push_back({&image.image, nullptr});
    return tasks;
}

ordered_json texture_json(const PlacedTexture& texture, const Padding& padding) {
    ordered_json json = {{"name", texture.name},
                         {"rect", rectangle_json(texture.inner)},
                         {"padding", {padding.u, padding.v}},
                         {"rotation", texture.rotation},
                         {"tiled", {texture.tiled_u, texture.tiled_v}},
                         {"groups", texture.groups}};
    json.update(origin_json(texture.origin));
    return json;
}

class Builder {
public:
    explicit Builder(std::int32_t max_side) : max_side_(max_side) {}

    Page build(const RunRecord& run) && {
        std::vector<ShownImage> images = show_images(tasks_of(run), max_side_);
        auto image = images.begin();
        ordered_json json = {
            {"maxSide", max_side_}, {"atlases", ordered_json::array()}, {"sets", ordered_json::array()}};
        for (const Atlas& atlas : run.atlases)
            json["atlases"].push_back(atlas_json(atlas, *image++));
        for (const TextureSet& set : run.sets) {
            ordered_json set_images = ordered_json::array();
            for (const SetImage& set_image : set.images)
                set_images.push_back(set_image_json(set_image, *image++));
            json["sets"].push_back({{"folder", set.folder},
                                    {"name", set.name},
                                    {"autoload", set.allow_autoload},
                                    {"images", std::move(set_images)},
                                    {"faults", kept(set.faults, {})}});
        }
        const std::string text = json.dump(-1, ' ', /*ensure_ascii=*/true, ordered_json::error_handler_t::replace);
        // "<" stands in strings alone, where an escape means the same. It could begin "</script" or "<!--".
        for (const char c : text)
            page_.run_json += c == '<' ? std::string("\\u003c") : std::string(1, c);
        return std::move(page_);
    }

private:
    ordered_json atlas_json(const Atlas& atlas, ShownImage& shown) {
        const AtlasAreas areas = measure_areas(atlas.textures, shown.paddings, atlas.image.width, atlas.image.height);
        ordered_json textures = ordered_json::array();
        for (std::size_t i = 0; i < atlas.textures.size(); ++i)
            textures.push_back(texture_json(atlas.textures[i], shown.paddings[i]));
        return {{"folder", atlas.folder},
                {"name", atlas.name},
                {"category", atlas.category},
                {"autoload", atlas.allow_autoload},
                {"image", image_json(atlas.image, shown)},
                {"areas", {areas.textures, areas.padding, areas.total}},
                {"textures", std::move(textures)},
                {"faults", kept(atlas.faults, shown.fault)}};
    }

    ordered_json set_image_json(const SetImage& image, ShownImage& shown) {
        ordered_json json = {
            {"name", image.name}, {"category", image.category}, {"image", image_json(image.image, shown)}};
        json.update(origin_json(image.origin));
        json["faults"] = kept(image.faults, shown.fault);
        return json;
    }

    ordered_json image_json(const ImageRecord& record, ShownImage& shown) {
        ordered_json json = {{"file", record.file}, {"bytes", record.bytes}, {"size", {record.width, record.height}}};
        ImagePictures& pictures = shown.pictures;
        if (pictures.levels.empty())
            return json;
        json["format"] = shown.format;
        if (record.is_cube)
            json["faces"] = faces_json(record.width, record.height);
        const std::size_t first = page_.pictures.size();
        json["levels"] = ordered_json::array();
        for (const Level& level : pictures.levels)
            json["levels"].push_back(
                {{"size", {level.width, level.height}}, {"picture", picture_json(pictures, level.picture, first)}});
        json["thumbnail"] = picture_json(pictures, pictures.thumbnail, first);
        page_.thumbnails.push_back(first + pictures.thumbnail);
        std::move(pictures.pictures.begin(), pictures.pictures.end(), std::back_inserter(page_.pictures));
        return json;
    }

    /// Number, width, height and whether there is an alpha channel.
    static ordered_json picture_json(const ImagePictures& pictures, std::size_t index, std::size_t first) {
        const Picture& picture = pictures.pictures[index];
        return {first + index, picture.width, picture.height, picture.alpha_png.empty() ? 0 : 1};
    }

    /// Notes the faults for the whole run.
    std::vector<std::string> kept(std::vector<std::string> faults, const std::string& one_more) {
        if (!one_more.empty())
            faults.push_back(one_more);
        page_.faults.insert(page_.faults.end(), faults.begin(), faults.end());
        return faults;
    }

    std::int32_t max_side_;
    Page page_;
};

} // namespace

std::int32_t choose_max_side(const RunRecord& run) {
    const std::vector<ImageTask> tasks = tasks_of(run);
    const auto shown = [&tasks](std::int32_t max_side) {
        std::int64_t texels = 0;
        for (const auto& [image, textures] : tasks) {
            const std::int64_t columns = image->is_cube ? 4 : 1;
            const std::int64_t rows = image->is_cube ? 3 : 1;
            texels += std::min<std::int64_t>(image->width * columns, max_side) *
                      std::min<std::int64_t>(image->height * rows, max_side);
        }
        return texels;
    };
    std::int32_t side = largest_side;
    while (side > smallest_side && shown(side) > texel_budget)
        side /= 2;
    return side;
}

Page build_page(const RunRecord& run, std::int32_t max_side) {
    return Builder(max_side).build(run);
}

} // namespace kst::tool::report
