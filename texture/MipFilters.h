#pragma once

#include "texture/MipChain.h"

#include <cstddef>

namespace mosaicer {

/// Makes every level above 0 from the bytes of level 0, gamma as it stands: point sampling, or the bitmap library's
/// rescaling with or without a sharpening.
///
/// The chain holds level 0; further levels that it holds are dropped and made anew up to the full count. Throws
/// std::runtime_error "Unrecognized free image filter" for a filter of another way, if there is a level to make.
void filter_mips(MipChain& chain, MipFilter filter);

/// One level of that, made from level 0. Throws as filter_mips().
Bitmap resample_level(std::size_t level, const Bitmap& base, MipFilter filter);

} // namespace mosaicer
