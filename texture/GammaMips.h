#pragma once

#include "compression/SimdLevel.h"
#include "texture/MipChain.h"

namespace mosaicer {

/// Makes every level above 0 by a kernel over level 0 in linear light: BOX_GAMMA, KAISER_GAMMA or KAISER_GAMMA_CRISP.
/// Alpha goes through the same curves as the colours.
///
/// The chain holds level 0, which stays; further levels that it holds are dropped and made anew up to the full count.
/// All SIMD levels give the same bytes.
void filter_mips_gamma(MipChain& chain, MipFilter filter, compression::SimdLevel simd = compression::best_simd_level());

} // namespace mosaicer
