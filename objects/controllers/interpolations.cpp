#include "objects/controllers/interpolations.h"

#include "objects/controllers/thin_keys.h"

namespace kst {

KeyTrack<Key<GQuat>> PackedSlerpInterpolation::unpacked(const Track& track) {
    std::vector<Key<GQuat>> keys;
    keys.reserve(track.keys().size());
    for (const Key<PackedQuat>& key : track.keys())
        keys.push_back({key.time, unpack(key.value)});
    KeyTrack<Key<GQuat>> whole;
    whole.assign(track, std::move(keys));
    return whole;
}

std::vector<Key<PackedQuat>> PackedSlerpInterpolation::packed(const KeyTrack<Key<GQuat>>& whole) {
    std::vector<Key<PackedQuat>> keys;
    for (const Key<GQuat>& key : thin_keys(whole.keys()))
        keys.push_back({key.time, pack(key.value)});
    return keys;
}

} // namespace kst
