#pragma once

#include "driver/records/AtlasSetDefinition.h"

#include <span>
#include <string_view>
#include <vector>

namespace mosaicer {

/// Turns long textures so that their longer side lies along the axis that `strategy` names, by setting their rotation
/// to 90 (a rotation that they had is replaced). Square textures are never touched.
void precook(std::span<SetTextureEntry> textures, PrecookStrategy strategy);

/// The line that tells about a precooking, without its end.
std::string_view precook_text(PrecookStrategy strategy);

/// The order that BY_PRECOOK stands for; any other order as it is. Throws std::runtime_error for BY_PRECOOK without
/// precooking.
PackingOrder resolve_packing_order(PackingOrder order, PrecookStrategy precook_strategy);

/// How the log calls a real order. Throws std::runtime_error "Unknown packing order" for any other value.
std::string_view packing_order_text(PackingOrder order);

/// The textures in packing order, by natural size; what the order can't tell apart stays in list order. The pointers
/// are into `textures`. Throws std::runtime_error "Unknown packing order" for BY_PRECOOK or a value outside the table.
std::vector<const SetTextureEntry*> in_packing_order(std::span<const SetTextureEntry> textures, PackingOrder order);

} // namespace mosaicer
