#include "packing/AtlasSurface.h"

namespace mosaicer {

AtlasSurface::AtlasSurface(std::int32_t width, std::int32_t height) : width_(width), height_(height) {}

} // namespace mosaicer
