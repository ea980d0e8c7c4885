#pragma once

#include "tools/kst/report/AtlasAreas.h"
#include "tools/kst/report/RunRecord.h"
#include "tools/kst/report/pictures.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kst::tool::report {

/// What is to be shown: an image of the run, and for an atlas what stands on it.
struct ImageTask {
    const ImageRecord* image = nullptr;
    const std::vector<PlacedTexture>* textures = nullptr; ///< null for an image of a set
};

struct ShownImage {
    std::string format;
    ImagePictures pictures;        ///< without levels when the image could not be shown
    std::vector<Padding> paddings; ///< of the task's textures; zeros when it could not be shown
    std::string fault;             ///< names the file; empty for an image whose head could not be read, too
};

/// Decodes, measures and encodes the images on several threads. The results are in the order of the tasks, and the same
/// however many threads there are.
std::vector<ShownImage> show_images(const std::vector<ImageTask>& tasks, std::int32_t max_side);

} // namespace kst::tool::report
