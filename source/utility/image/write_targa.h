#pragma once

#include "source/utility/Archive.h"
#include "source/utility/image/ImageFormat.h"

#include <cstdint>

namespace kst {

/// Writes an uncompressed TARGA of 32 bits, first row at the top. `pixels` are rows from the top, packed, in the
/// description's format. False, with nothing written, for a format other than 10 and 11 or a side that the header's
/// 16 bits do not hold.
bool write_targa(Archive& archive, const ImageDescription& description, const void* pixels);

} // namespace kst
