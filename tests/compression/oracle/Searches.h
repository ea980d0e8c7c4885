#pragma once

#include "compression/AlphaRamp.h"
#include "compression/LatticeSearch.h"
#include "compression/LineFit.h"

namespace compression::oracle {

// The searches in their plain form: every candidate in turn, each sum in order. They define the results of the fast
// forms of the same names. `fast_fit` of one block is plain as it stands; its form for eight blocks is held to it.

void solve_alpha(AlphaContext& alpha);
double evaluate_palette(BlockContext& block);
LineFit fit_line(const DistinctColours& colours, const Order& order, int step_limit);
LineFit fit_line_in_box(const DistinctColours& colours, const Order& order, int step_limit, const Vector3& weights);
LatticeResult lattice_search(const DistinctColours& colours, const Vector3& weights, int levels, const Vector3& end0,
                             const Vector3& end1);
double exhaustive_search(BlockContext& block, double error);

} // namespace compression::oracle
