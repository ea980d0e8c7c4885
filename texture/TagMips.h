#pragma once

#include "texture/Bitmap.h"

namespace mosaicer {

/// Tints every level but level 0 in place, each with the next of ten colours, so that one sees in the engine which
/// level is sampled where. A colour byte becomes a fifth of itself and four fifths of the tint; alpha stays.
void tag_mip_levels(MipChain& chain);

} // namespace mosaicer
