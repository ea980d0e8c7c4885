#pragma once

#include "objects/controllers/keys.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace kst {

/// Keys in order of rising time, and how a time between them is found.
///
///     keys          k0        k1     k2
///     time    ------+---------+------+--------------
///              k0   | k0..k1  |k1..k2|  k2             not looping
///              the same, from start + (time - start) modulo (end - start)   looping, outside start..end
///
/// `start` and `end` are those of the keys, unless they are set. Behind the last key of a looping track the segment
/// runs from the last key to the first one of the next round.
///
/// In a stream: flags, 32 bits (1 empty, 2 looping); start; end; a 32-bit count; the keys. Keys of a stream may stand in
/// any order and times may be no numbers: values are meaningless then, but look-ups stay among the keys.
template <class Key>
class KeyTrack {
public:
    using Content = typename Key::Content;

    /// A place between two keys, the same one twice outside of the keys.
    struct Segment {
        const Content* previous = nullptr;
        const Content* next = nullptr;
        float alpha = 0; ///< from 0 at the previous to 1 at the next key
        float delta = 0; ///< the time between them
    };

    float start() const { return start_; }
    float end() const { return end_; }
    void set_range(float start, float end) {
        start_ = start;
        end_ = end;
    }
    bool looping() const { return looping_; }
    void set_looping(bool looping) { looping_ = looping; }
    /// True until the first key.
    bool empty() const { return empty_; }
    const std::vector<Key>& keys() const { return keys_; }

    /// False for a track without keys. The values live until the keys are changed.
    ///
    /// The segment of the last look-up is tried first, ends included. So a time that is exactly a key's may be found
    /// as the end of the segment before it, which a search gives, or as the beginning of the one behind it.
    bool find_segment(float time, Segment& out) {
        if (empty_ || keys_.empty())
            return false;
        if (previous_ != no_key && keys_[previous_].time <= time && time <= keys_[next_].time)
            out = between(previous_, next_, time, keys_[next_].time);
        else
            out = search(time);
        return true;
    }

    /// A key at a time that is taken already gets the new content. Widens start..end to hold the time.
    void add_key(float time, const Content& content) {
        const auto place = keys_.begin() + static_cast<std::ptrdiff_t>(first_at_or_behind(time));
        if (place != keys_.end() && place->time == time)
            place->value = content;
        else
            keys_.insert(place, Key{time, content});
        if (empty_)
            start_ = end_ = time;
        empty_ = false;
        start_ = std::min(start_, time);
        end_ = std::max(end_, time);
        forget_segment();
    }

    void set_content(std::size_t index, const Content& content) {
        keys_[index].value = content;
        forget_segment();
    }

    /// Takes the times and flags of a track of another kind of key, and keys of one's own, in order of time.
    template <class OtherKey>
    void assign(const KeyTrack<OtherKey>& track, std::vector<Key> keys) {
        start_ = track.start();
        end_ = track.end();
        looping_ = track.looping();
        empty_ = track.empty();
        keys_ = std::move(keys);
        forget_segment();
    }

    template <class Self, class Form>
    static void fields(Self& self, Form& form) {
        std::uint32_t flags = (self.empty_ ? flag_empty : 0) | (self.looping_ ? flag_looping : 0);
        form.value("flags", flags);
        form.value("start", self.start_);
        form.value("end", self.end_);
        form.values("keys", self.keys_);
        if constexpr (Form::loads) {
            self.empty_ = (flags & flag_empty) != 0;
            self.looping_ = (flags & flag_looping) != 0;
            self.forget_segment();
        }
    }

private:
    static constexpr std::uint32_t flag_empty = 1;
    static constexpr std::uint32_t flag_looping = 2;
    static constexpr std::size_t no_key = SIZE_MAX;

    void forget_segment() { previous_ = next_ = no_key; }

    /// The place of the first key with `key.time >= time`, the count of keys if there is none. So written that a time
    /// that is no number lies behind all keys.
    std::size_t first_at_or_behind(float time) const {
        const auto found =
            std::partition_point(keys_.begin(), keys_.end(), [time](const Key& key) { return !(key.time >= time); });
        return static_cast<std::size_t>(found - keys_.begin());
    }

    Segment at_key(std::size_t index) const { return {&keys_[index].value, &keys_[index].value, 0, 0}; }

    Segment between(std::size_t previous, std::size_t next, float time, float next_time) const {
        const float delta = next_time - keys_[previous].time;
        const float alpha = delta > 0.000001f ? (time - keys_[previous].time) / delta : 0.0f;
        return {&keys_[previous].value, &keys_[next].value, alpha, delta};
    }

    float wrapped(float time) const {
        const float first = keys_.front().time;
        const float span = end_ - start_;
        if (span <= 0.00001f)
            return first;
        const float r = std::fmod(time - first, span);
        return first + (r < 0 ? r + span : r);
    }

    Segment search(float time) {
        if (looping_ && (time < start_ || time > end_))
            time = wrapped(time);
        const std::size_t found = first_at_or_behind(time);
        const std::size_t last = keys_.size() - 1;
        if (found > last && !looping_)
            return at_key(last);
        // The second question is for keys out of order.
        if (found == 0 || (found <= last && keys_.front().time >= time))
            return at_key(0);
        previous_ = found - 1;
        next_ = found > last ? 0 : found;
        return between(previous_, next_, time, found > last ? time_of_next_round() : keys_[next_].time);
    }

    /// When the first key comes again, seen from the end of a round.
    float time_of_next_round() const {
        const float first = keys_.front().time;
        return first <= start_ ? end_ + (start_ - first) : end_;
    }

    float start_ = 0;
    float end_ = 0;
    bool looping_ = false;
    bool empty_ = true;
    std::size_t previous_ = no_key; ///< the cached segment
    std::size_t next_ = no_key;
    std::vector<Key> keys_;
};

} // namespace kst
