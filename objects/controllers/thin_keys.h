#pragma once

#include "objects/controllers/keys.h"

#include <span>
#include <vector>

namespace kst {

/// The keys of a rotation track that remain when those are dropped that `blend` between their neighbours restores to
/// within 0.0015 a component. The first and the last key always remain.
///
/// A key is dropped if it and all that were dropped since the last one that remains lie on the blend from that one to
/// the next key. Looked at one by one, these are as many comparisons as half the square of a run's length. So a run
/// carries a bound on the distance of its keys from the curve, and is looked at again only when the curve has moved too
/// far for the bound to tell. Keys that no bound can be given for (not of length 1, times that fall), or that keep to the
/// edge of the tolerance, are looked at every time: up to four million comparisons and 64 for each key of the track,
/// which is all that a track of 2,800 keys can take. Once these are spent, a run in question ends with its key kept when
/// it is longer than 64. More keys than needed remain then, never fewer.
std::vector<Key<GQuat>> thin_keys(std::span<const Key<GQuat>> keys);

} // namespace kst
