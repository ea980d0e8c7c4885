#include "objects/controllers/thin_keys.h"

// How a run is bounded. The blend from the last kept key P to a next key Q is close to the arc of a great circle that
// leaves P with one velocity u and reaches Q when Q's time has come:
//
//           k  k     k  k
//      P ------------------- Q      arc(t) = the point that lies |u| (t - P.time) along the circle from P towards Q
//         k      k
//
// Two arcs from one point move apart no faster than the difference of their velocities: on a sphere, circles that leave
// a point bend towards each other. So a key that lay within e of the arc with u0 lies within e + (t - P.time) |u - u0|
// of the arc with u, for one subtraction instead of one comparison a key. Along the chord, which `blend` takes for near
// keys, it runs ahead of the arc and falls behind it by at most 0.0165 θ³ (see chord_lead).

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace kst {

namespace {

using Quat = Key<GQuat>;
using Vector = std::array<double, 4>;

constexpr float tolerance = 0.0015f;
/// For rounding, and for keys that are not quite of length 1.
constexpr double slack = 1e-4;
constexpr std::size_t comparisons_per_track = 4'000'000;
constexpr std::size_t comparisons_per_key = 64;
constexpr std::size_t free_run = 64;

Vector components(const GQuat& q) {
    return {q.x, q.y, q.z, q.w};
}

double dot(const Vector& a, const Vector& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2] + a[3] * b[3];
}

Vector sum(double wa, const Vector& a, double wb, const Vector& b) {
    return {wa * a[0] + wb * b[0], wa * a[1] + wb * b[1], wa * a[2] + wb * b[2], wa * a[3] + wb * b[3]};
}

double length(const Vector& v) {
    return std::sqrt(dot(v, v));
}

/// How far the normalised chord of an arc of θ radians is ahead of the even walk along the arc, at most. A share y of
/// the half way from the middle is at the angle atan(y tan(θ/2)) instead of y θ/2; the difference is below
/// (θ/2)³/3 (y - y³), at most 0.0161 θ³, and the next terms of the series add less than 2 in a hundred below 18 degrees.
double chord_lead(double angle) {
    return 0.0165 * angle * angle * angle;
}

/// The blend from one key to another, as an arc.
struct Arc {
    bool bounded = false; ///< false: nothing can be said about it
    Vector from{};
    Vector velocity{}; ///< radians a unit of time
    double lead = 0;   ///< of the blend over the arc

    Vector at(double time) const {
        const double speed = length(velocity);
        if (speed == 0)
            return from;
        return sum(std::cos(speed * time), from, std::sin(speed * time) / speed, velocity);
    }
};

bool is_unit(const Vector& v) {
    return std::abs(dot(v, v) - 1) <= 1e-5;
}

Arc arc_between(const Quat& p, const Quat& q) {
    Vector from = components(p.value);
    Vector to = components(q.value);
    const double time = static_cast<double>(q.time) - static_cast<double>(p.time);
    if (!is_unit(from) || !is_unit(to) || !(time > 0) || !std::isfinite(time))
        return {};
    const double sign = dot(from, to) < 0 ? -1 : 1; // of the very sum that `blend` forms
    from = sum(1 / length(from), from, 0, from);
    to = sum(sign / length(to), to, 0, to);
    const double c = dot(from, to);
    const Vector across = sum(1, to, -c, from);
    const double s = length(across);
    const double angle = std::atan2(s, c);
    const double per_across = s > 1e-12 ? angle / (s * time) : 0;
    return {.bounded = true,
            .from = from,
            .velocity = sum(per_across, across, 0, across),
            // Just below the limit too, where rounding may decide otherwise.
            .lead = c >= 0.9499 ? chord_lead(angle) : 0};
}

bool is_restored(const Quat& key, const Quat& last, const Quat& next) {
    const float a = (key.time - last.time) / (next.time - last.time);
    const GQuat b = blend(last.value, next.value, a);
    const GQuat& v = key.value;
    return !(std::abs(b.x - v.x) > tolerance || std::abs(b.y - v.y) > tolerance || std::abs(b.z - v.z) > tolerance ||
             std::abs(b.w - v.w) > tolerance);
}

double distance(const Vector& a, const GQuat& b) {
    const Vector d = sum(1, a, -1, components(b));
    double most = 0;
    for (const double x : d)
        most = std::max(most, std::abs(x)); // a component that is no number is no distance, as in is_restored
    return most;
}

/// The keys that were dropped since the last one that was kept.
class Run {
public:
    explicit Run(std::span<const Quat> keys)
        : keys_(keys), left_(comparisons_per_track + comparisons_per_key * keys.size()) {}

    void begin_at(std::size_t kept) {
        last_ = kept;
        arc_ = {};
        in_order_ = true;
    }

    /// Whether the key, which comes behind the run, can be dropped like those of the run.
    bool drops(std::size_t index) {
        const Quat& last = keys_[last_];
        const Quat& next = keys_[index + 1];
        if (!is_restored(keys_[index], last, next))
            return false;
        in_order_ = in_order_ && keys_[index - 1].time <= keys_[index].time && keys_[index].time <= next.time;
        const Arc arc = in_order_ ? arc_between(last, next) : Arc{};
        return is_within_bound(arc, index) || is_looked_at(arc, index);
    }

private:
    double since_last(std::size_t index) const {
        return static_cast<double>(keys_[index].time) - static_cast<double>(keys_[last_].time);
    }

    bool is_within_bound(const Arc& arc, std::size_t index) {
        if (!arc.bounded || !arc_.bounded)
            return false;
        const double drift = length(sum(1, arc.velocity, -1, arc_.velocity)) * since_last(index);
        if (!(distance_ + drift + arc.lead + slack <= static_cast<double>(tolerance)))
            return false;
        distance_ = std::max(distance_, distance(arc.at(since_last(index)), keys_[index].value) + drift);
        return true;
    }

    /// Looks at every key of the run, and makes a new bound.
    bool is_looked_at(const Arc& arc, std::size_t index) {
        const std::size_t count = index - last_;
        if (count > free_run && count > left_)
            return false;
        left_ -= std::min(count, left_);
        arc_ = arc;
        distance_ = 0;
        for (std::size_t i = last_ + 1; i <= index; ++i) {
            if (!is_restored(keys_[i], keys_[last_], keys_[index + 1]))
                return false;
            if (arc.bounded)
                distance_ = std::max(distance_, distance(arc.at(since_last(i)), keys_[i].value));
        }
        return true;
    }

    std::span<const Quat> keys_;
    std::size_t left_; ///< comparisons
    std::size_t last_ = 0;
    bool in_order_ = true;
    Arc arc_;             ///< that the bound is for
    double distance_ = 0; ///< of the run's keys from it, at most
};

} // namespace

std::vector<Quat> thin_keys(std::span<const Quat> keys) {
    std::vector<Quat> kept;
    Run run(keys);
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const bool is_end = i == 0 || i + 1 == keys.size();
        if (!is_end && run.drops(i))
            continue;
        kept.push_back(keys[i]);
        run.begin_at(i);
    }
    return kept;
}

} // namespace kst
