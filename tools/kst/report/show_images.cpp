#include "tools/kst/report/show_images.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <exception>
#include <thread>
#include <utility>

namespace kst::tool::report {
namespace {

/// Each thread holds the levels of one image.
constexpr unsigned most_threads = 4;

ShownImage show(const ImageTask& task, std::int32_t max_side) {
    ShownImage shown;
    if (task.textures != nullptr)
        shown.paddings.resize(task.textures->size());
    if (task.image->width == 0)
        return shown;
    try {
        DecodedImage decoded = decode_image(*task.image);
        if (task.textures != nullptr)
            shown.paddings = measure_paddings(*task.textures, decoded.levels.front(), decoded.lossy);
        shown.format = decoded.format;
        shown.pictures = encode_pictures(std::move(decoded.levels), max_side);
    } catch (const std::exception& failure) {
        shown.fault = failure.what();
    }
    return shown;
}

} // namespace

std::vector<ShownImage> show_images(const std::vector<ImageTask>& tasks, std::int32_t max_side) {
    std::vector<ShownImage> shown(tasks.size());
    std::atomic<std::size_t> next = 0;
    const auto work = [&] {
        for (std::size_t i = next++; i < tasks.size(); i = next++)
            shown[i] = show(tasks[i], max_side);
    };
    const unsigned threads = std::clamp(std::thread::hardware_concurrency(), 1u, most_threads);
    std::vector<std::jthread> helpers;
    for (unsigned i = 1; i < threads; ++i)
        helpers.emplace_back(work);
    work();
    helpers.clear(); // joins
    return shown;
}

} // namespace kst::tool::report
