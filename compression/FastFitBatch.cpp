#include "compression/FastFitBatch.h"

#include "compression/ColourLattice.h"

#include <cstring>
#if defined(__x86_64__)
#include <immintrin.h>
#else
#include <cmath>
#endif

// `fast_fit` with a block per lane. Every lane goes through the operations of the one-block form in their order, so the
// bits are the same; a branch becomes a mask. A lane that turns out solid computes on with whatever it holds and is
// replaced at the end. Eight lanes become two registers of four without AVX2.

#define COMPRESSION_INLINE [[gnu::always_inline]] inline
#pragma GCC diagnostic ignored "-Wpsabi" // vectors are passed between inlined functions only

namespace compression {
namespace {

typedef float Floats __attribute__((vector_size(32)));
typedef float HalfFloats __attribute__((vector_size(16)));
typedef std::int32_t Ints __attribute__((vector_size(32)));
typedef double Doubles __attribute__((vector_size(32))); // half of the lanes
typedef std::int64_t Longs __attribute__((vector_size(32)));

struct Floats3 {
    Floats r, g, b;
};
struct Ints3 {
    Ints r, g, b;
};

COMPRESSION_INLINE Floats load(const PerLane<float>& from) {
    Floats v;
    std::memcpy(&v, from.data(), sizeof(v));
    return v;
}

COMPRESSION_INLINE Floats square_root(Floats v) {
#if defined(__x86_64__)
    HalfFloats low;
    HalfFloats high;
    std::memcpy(&low, &v, sizeof(low));
    std::memcpy(&high, reinterpret_cast<const char*>(&v) + sizeof(low), sizeof(high));
    low = _mm_sqrt_ps(low);
    high = _mm_sqrt_ps(high);
    std::memcpy(&v, &low, sizeof(low));
    std::memcpy(reinterpret_cast<char*>(&v) + sizeof(low), &high, sizeof(high));
#else
    for (std::size_t lane = 0; lane < batch_lanes; ++lane)
        v[lane] = std::sqrt(v[lane]);
#endif
    return v;
}

COMPRESSION_INLINE Floats select(Ints mask, Floats yes, Floats no) {
    return mask ? yes : no;
}

COMPRESSION_INLINE Floats dot(const Floats3& a, const Floats3& b) {
    return a.r * b.r + a.g * b.g + a.b * b.b;
}

COMPRESSION_INLINE bool any(Ints mask) {
    Longs pairs;
    std::memcpy(&pairs, &mask, sizeof(pairs));
    return (pairs[0] | pairs[1] | pairs[2] | pairs[3]) != 0;
}

// Nearest whole number, a half to the even one, for values below 2^22.
COMPRESSION_INLINE Floats round_even(Floats v) {
    return (v + 12582912.0f) - 12582912.0f;
}

COMPRESSION_INLINE Floats cut_to_unit(Floats v) {
    v = v > 0.0f ? v : Floats{};
    return 1.0f < v ? Floats{} + 1.0f : v;
}

struct Block8 {
    std::array<Floats3, 16> pixels; // weighted, centred
    Floats3 mean;
    Ints solid;
};

COMPRESSION_INLINE void centre_channel(const FastBatch& batch, std::size_t c, Floats Floats3::*channel, Block8& block) {
    const float weight = batch.weights[c];
    const Floats first = load(batch.colours[c][0]);
    Floats sum{};
    for (std::size_t i = 0; i < 16; ++i) {
        const Floats colour = load(batch.colours[c][i]);
        block.solid &= colour == first;
        block.pixels[i].*channel = colour * weight;
        sum += block.pixels[i].*channel;
    }
    block.mean.*channel = sum / 16.0f;
    for (std::size_t i = 0; i < 16; ++i)
        block.pixels[i].*channel -= block.mean.*channel;
}

COMPRESSION_INLINE void find_axis(Block8& block, Floats3& axis) {
    Floats xx{}, xy{}, xz{}, yy{}, yz{}, zz{};
    for (const Floats3& q : block.pixels) {
        xx += q.r * q.r;
        xy += q.r * q.g;
        xz += q.r * q.b;
        yy += q.g * q.g;
        yz += q.g * q.b;
        zz += q.b * q.b;
    }
    for (int round = 0; round < 9; ++round) {
        for (int square = 0; square < 2; ++square) {
            const Floats nxx = xx * xx + xy * xy + xz * xz;
            const Floats nxy = xx * xy + xy * yy + xz * yz;
            const Floats nxz = xx * xz + xy * yz + xz * zz;
            const Floats nyy = xy * xy + yy * yy + yz * yz;
            const Floats nyz = xy * xz + yy * yz + yz * zz;
            zz = xz * xz + yz * yz + zz * zz;
            xx = nxx;
            xy = nxy;
            xz = nxz;
            yy = nyy;
            yz = nyz;
        }
        const Floats trace = xx + yy + zz;
        block.solid |= trace == 0.0f;
        const Floats scale = 3.0f / trace;
        xx *= scale;
        xy *= scale;
        xz *= scale;
        yy *= scale;
        yz *= scale;
        zz *= scale;
    }
    const Ints second = yy > xx;
    Floats diagonal = select(second, yy, xx);
    const Ints third = zz > diagonal;
    diagonal = select(third, zz, diagonal);
    block.solid |= diagonal < 1.1920929e-07f;
    const Floats root = square_root(diagonal);
    axis.r = select(third, xz, select(second, xy, xx)) / root;
    axis.g = select(third, yz, select(second, yy, xy)) / root;
    axis.b = select(third, zz, select(second, yz, xz)) / root;
}

COMPRESSION_INLINE void clip_end(Floats3& a, const Floats3& b, Floats Floats3::*channel, Floats bound, Ints beyond) {
    if (!any(beyond))
        return;
    const Floats s = (bound - a.*channel) / (b.*channel - a.*channel);
    a.r = select(beyond, a.r + s * (b.r - a.r), a.r);
    a.g = select(beyond, a.g + s * (b.g - a.g), a.g);
    a.b = select(beyond, a.b + s * (b.b - a.b), a.b);
    a.*channel = select(beyond, bound, a.*channel);
}

COMPRESSION_INLINE void clip_channel(Floats3& a, Floats3& b, Floats Floats3::*channel, float upper) {
    const Floats zero{};
    const Floats top = zero + upper;
    clip_end(a, b, channel, zero, (a.*channel < zero) & (b.*channel >= zero));
    clip_end(b, a, channel, zero, (b.*channel < zero) & (a.*channel >= zero));
    clip_end(a, b, channel, top, (a.*channel > top) & (b.*channel <= top));
    clip_end(b, a, channel, top, (b.*channel > top) & (a.*channel <= top));
}

COMPRESSION_INLINE void quantise_channel(const Floats& a, const Floats& b, float weight, float scale, Ints& stored0,
                                         Ints& stored1) {
    Floats x{};
    Floats y{};
    if (weight != 0.0f) {
        x = cut_to_unit(a / weight) * scale;
        y = cut_to_unit(b / weight) * scale;
    }
    const Ints near0 = __builtin_convertvector(round_even(x), Ints);
    const Ints near1 = __builtin_convertvector(round_even(y), Ints);
    const Ints floor0 = __builtin_convertvector(x, Ints);
    const Ints floor1 = __builtin_convertvector(y, Ints);
    // A true mask is -1.
    const Ints ceiling1 = floor1 - (y > __builtin_convertvector(floor1, Floats));
    const Ints equal = near0 == near1;
    stored0 = equal ? floor0 : near0;
    stored1 = equal ? ceiling1 : near1;
}

struct Ends {
    Ints3 stored0;
    Ints3 stored1;
    Ints word0;
    Ints word1;
};

COMPRESSION_INLINE Ends quantise(const Floats3& a, const Floats3& b, const FastBatch& batch) {
    Ends ends;
    quantise_channel(a.r, b.r, batch.weights[0], 31.0f, ends.stored0.r, ends.stored1.r);
    quantise_channel(a.g, b.g, batch.weights[1], 63.0f, ends.stored0.g, ends.stored1.g);
    quantise_channel(a.b, b.b, batch.weights[2], 31.0f, ends.stored0.b, ends.stored1.b);
    const Ints word0 = ends.stored0.r << 11 | ends.stored0.g << 5 | ends.stored0.b;
    const Ints word1 = ends.stored1.r << 11 | ends.stored1.g << 5 | ends.stored1.b;
    const Ints swap = word0 < word1;
    ends.word0 = swap ? word1 : word0;
    ends.word1 = swap ? word0 : word1;
    ends.stored0 = {ends.word0 >> 11, ends.word0 >> 5 & 63, ends.word0 & 31};
    ends.stored1 = {ends.word1 >> 11, ends.word1 >> 5 & 63, ends.word1 & 31};
    return ends;
}

COMPRESSION_INLINE Floats3 weighted_end(const Ints3& stored, const FastBatch& batch) {
    return {__builtin_convertvector(stored.r, Floats) / 31.0f * batch.weights[0],
            __builtin_convertvector(stored.g, Floats) / 63.0f * batch.weights[1],
            __builtin_convertvector(stored.b, Floats) / 31.0f * batch.weights[2]};
}

// The fits' own indices, 2 bits a pixel, with four and with three colours.
struct FitIndices {
    Ints four;
    Ints three;
};

COMPRESSION_INLINE Ends fit_ends(Block8& block, const FastBatch& batch) {
    Floats3 axis;
    find_axis(block, axis);
    const Floats axis_squared = dot(axis, axis);
    Floats smallest{};
    Floats largest{};
    Floats smallest_key{};
    Floats largest_key{};
    for (std::size_t i = 0; i < 16; ++i) {
        const Floats position = dot(block.pixels[i], axis) / axis_squared;
        const Floats key = position + 128.0f; // positive: orders like its bits
        const Ints lower = i == 0 ? Ints{} == 0 : key < smallest_key;
        const Ints higher = i == 0 ? Ints{} == 0 : key > largest_key;
        smallest = select(lower, position, smallest);
        smallest_key = select(lower, key, smallest_key);
        largest = select(higher, position, largest);
        largest_key = select(higher, key, largest_key);
    }
    Floats3 a{block.mean.r + smallest * axis.r, block.mean.g + smallest * axis.g, block.mean.b + smallest * axis.b};
    Floats3 b{block.mean.r + largest * axis.r, block.mean.g + largest * axis.g, block.mean.b + largest * axis.b};
    clip_channel(a, b, &Floats3::r, batch.weights[0]);
    clip_channel(a, b, &Floats3::g, batch.weights[1]);
    clip_channel(a, b, &Floats3::b, batch.weights[2]);
    return quantise(a, b, batch);
}

COMPRESSION_INLINE FitIndices fit_indices(Block8& block, const Ends& ends, const FastBatch& batch) {
    const Floats3 e0 = weighted_end(ends.stored0, batch);
    const Floats3 e1 = weighted_end(ends.stored1, batch);
    const Floats3 d{e1.r - e0.r, e1.g - e0.g, e1.b - e0.b};
    block.solid |= (d.r == 0.0f) & (d.g == 0.0f) & (d.b == 0.0f);
    const Floats3 from_end{block.mean.r - e0.r, block.mean.g - e0.g, block.mean.b - e0.b};
    const Floats start = dot(from_end, d);
    const Floats length = dot(d, d);
    FitIndices indices{};
    for (std::size_t i = 0; i < 16; ++i) {
        const Floats s = cut_to_unit((start + dot(block.pixels[i], d)) / length);
        const Ints of_four = __builtin_convertvector(round_even(s * 3.0f), Ints);
        const Ints of_three = __builtin_convertvector(round_even(s * 2.0f), Ints);
        const Ints one{1, 1, 1, 1, 1, 1, 1, 1};
        // Places 0, 1, 2, 3 have the codes 0, 2, 3, 1, and of three 0, 2, 1.
        const Ints inner = ((of_four == 1) | (of_four == 2)) & 2;
        const Ints code4 = inner | ((of_four >= 2) & one);
        const Ints code3 = ((of_three == 1) & 2) | ((of_three == 2) & one);
        indices.four |= code4 << static_cast<int>(2 * i);
        indices.three |= code3 << static_cast<int>(2 * i);
    }
    return indices;
}

// The double-precision evaluation of four lanes.
struct Doubles3 {
    Doubles r, g, b;
};

COMPRESSION_INLINE Doubles to_doubles(const Ints& v, std::size_t half) {
    typedef std::int32_t HalfInts __attribute__((vector_size(16)));
    HalfInts part;
    std::memcpy(&part, reinterpret_cast<const char*>(&v) + half * sizeof(part), sizeof(part));
    return __builtin_convertvector(part, Doubles);
}

COMPRESSION_INLINE Doubles to_doubles(const PerLane<float>& v, std::size_t half) {
    HalfFloats part;
    std::memcpy(&part, v.data() + half * 4, sizeof(part));
    return __builtin_convertvector(part, Doubles);
}

COMPRESSION_INLINE Ints expand5(Ints v) {
    return v << 3 | v >> 2;
}

COMPRESSION_INLINE Ints expand6(Ints v) {
    return v << 2 | v >> 4;
}

// A third of a whole number up to 765, cut.
COMPRESSION_INLINE Ints third(Ints v) {
    return v * 21846 >> 16; // 3 * 21846 is 2^16 + 2
}

COMPRESSION_INLINE Ints mix_four(Ints near, Ints far) {
    return third(2 * near + far);
}

struct Evaluation {
    Doubles error_four;
    Doubles error_three;
    Longs indices_three; // those of the evaluation
};

COMPRESSION_INLINE Doubles distance(const Doubles3& pixel, const Doubles3& entry, const Doubles3& weights) {
    const Doubles r = weights.r * (pixel.r - entry.r);
    const Doubles g = weights.g * (pixel.g - entry.g);
    const Doubles b = weights.b * (pixel.b - entry.b);
    return r * r + g * g + b * b;
}

COMPRESSION_INLINE void offer(Doubles candidate, Doubles& best) {
    best = candidate < best ? candidate : best;
}

COMPRESSION_INLINE void offer(Doubles candidate, Doubles& best, std::int64_t index, Longs& best_index) {
    const Longs nearer = candidate < best;
    best = nearer ? candidate : best;
    best_index = nearer ? Longs{} + index : best_index;
}

COMPRESSION_INLINE Doubles3 entry_of(const Ints3& bytes, std::size_t half) {
    return {to_doubles(bytes.r, half), to_doubles(bytes.g, half), to_doubles(bytes.b, half)};
}

COMPRESSION_INLINE Evaluation evaluate(const FastBatch& batch, const Ends& ends, std::size_t half) {
    const Ints3 p0{expand5(ends.stored0.r), expand6(ends.stored0.g), expand5(ends.stored0.b)};
    const Ints3 p1{expand5(ends.stored1.r), expand6(ends.stored1.g), expand5(ends.stored1.b)};
    const Doubles3 end0 = entry_of(p0, half);
    const Doubles3 end1 = entry_of(p1, half);
    const Doubles3 four2 = entry_of({mix_four(p0.r, p1.r), mix_four(p0.g, p1.g), mix_four(p0.b, p1.b)}, half);
    const Doubles3 four3 = entry_of({mix_four(p1.r, p0.r), mix_four(p1.g, p0.g), mix_four(p1.b, p0.b)}, half);
    const Doubles3 three2 = entry_of({(p0.r + p1.r) >> 1, (p0.g + p1.g) >> 1, (p0.b + p1.b) >> 1}, half);
    const Doubles zero{};
    const Doubles3 weights{zero + static_cast<double>(batch.weights[0]), zero + static_cast<double>(batch.weights[1]),
                           zero + static_cast<double>(batch.weights[2])};
    Evaluation sum{};
    for (std::size_t i = 0; i < 16; ++i) {
        const Doubles3 pixel{to_doubles(batch.colours[0][i], half) * 255.0,
                             to_doubles(batch.colours[1][i], half) * 255.0,
                             to_doubles(batch.colours[2][i], half) * 255.0};
        Doubles ends_best = distance(pixel, end0, weights);
        Longs index{};
        offer(distance(pixel, end1, weights), ends_best, 1, index);
        Doubles four = ends_best;
        offer(distance(pixel, four2, weights), four);
        offer(distance(pixel, four3, weights), four);
        sum.error_four += four;
        Doubles three = ends_best;
        offer(distance(pixel, three2, weights), three, 2, index);
        if (batch.offers_black)
            offer(distance(pixel, {zero, zero, zero}, weights), three, 3, index);
        sum.error_three += three;
        sum.indices_three |= index << static_cast<int>(2 * i);
    }
    return sum;
}

COMPRESSION_INLINE void choose(const FastBatch& batch, const Ends& ends, FastBatchResult& result) {
    for (std::size_t half = 0; half < 2; ++half) {
        const Evaluation evaluation = evaluate(batch, ends, half);
        for (std::size_t lane = 0; lane < 4; ++lane)
            if (evaluation.error_three[lane] <= evaluation.error_four[lane]) {
                result.colour_count[half * 4 + lane] = 3;
                result.indices[half * 4 + lane] = static_cast<std::uint32_t>(evaluation.indices_three[lane]);
            }
    }
}

// Both ends are the first pixel's colour, and the palette has one colour however it is read.
void take_solid(const FastBatch& batch, std::size_t lane, FastBatchResult& result) {
    std::array<int, 3> stored{};
    for (std::size_t c = 0; c < 3; ++c)
        stored[c] = round_half_up(batch.colours[c][0][lane] * static_cast<float>(channel_max[c]));
    result.word0[lane] = result.word1[lane] = pack_565(stored);
    result.indices[lane] = 0;
    result.colour_count[lane] = 4;
}

COMPRESSION_INLINE void solve_body(const FastBatch& batch, FastBatchResult& result) {
    Block8 block;
    block.solid = Ints{} == 0;
    centre_channel(batch, 0, &Floats3::r, block);
    centre_channel(batch, 1, &Floats3::g, block);
    centre_channel(batch, 2, &Floats3::b, block);
    const Ends ends = fit_ends(block, batch);
    const FitIndices indices = fit_indices(block, ends, batch);
    std::memcpy(&result.word0, &ends.word0, sizeof(ends.word0));
    std::memcpy(&result.word1, &ends.word1, sizeof(ends.word1));
    std::memcpy(&result.indices, &indices.four, sizeof(indices.four));
    result.colour_count.fill(4);
    if (batch.may_choose)
        choose(batch, ends, result);
    if (any(block.solid))
        for (std::size_t lane = 0; lane < batch_lanes; ++lane)
            if (block.solid[lane] != 0)
                take_solid(batch, lane, result);
}

void solve_plain(const FastBatch& batch, FastBatchResult& result) {
    solve_body(batch, result);
}

#if defined(__x86_64__)
__attribute__((target("avx2"))) void solve_avx2(const FastBatch& batch, FastBatchResult& result) {
    solve_body(batch, result);
}
#endif

constexpr std::array kernels {
    FastBatchKernel{SimdLevel::scalar, solve_plain},
#if defined(__x86_64__)
        FastBatchKernel{SimdLevel::avx2, solve_avx2},
#endif
};

} // namespace

std::span<const FastBatchKernel> fast_batch_kernels() {
    return {kernels.data(), best_simd_level() == SimdLevel::avx2 ? kernels.size() : 1};
}

} // namespace compression
