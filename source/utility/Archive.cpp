#include "source/utility/Archive.h"

#include "source/utility/StoreReferences.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace kst {

namespace {

constexpr std::size_t text_step = 512;

/// Positions come from files, so a sum that would pass 64 bits stays at the end instead of wrapping.
std::int64_t saturated_sum(std::int64_t a, std::int64_t b) {
    std::int64_t sum = 0;
    if (!__builtin_add_overflow(a, b, &sum))
        return sum;
    return b > 0 ? std::numeric_limits<std::int64_t>::max() : std::numeric_limits<std::int64_t>::min();
}

} // namespace

Archive::Archive() = default;

Archive::Archive(std::string name, std::unique_ptr<DataStore> store, std::int64_t base, std::int64_t size,
                 bool unbounded)
    : name_(std::move(name)), base_(base), size_(size), unbounded_(unbounded) {
    if (store) {
        store_ref_ = store_references::take();
        store_ = store.release();
    }
}

Archive::Archive(const Archive& parent, std::int64_t offset, std::int64_t size, bool unbounded)
    : name_(parent.name_), base_(saturated_sum(parent.base_, offset)), size_(size), unbounded_(unbounded) {
    const bool ends_inside = offset >= 0 && size >= 0 && offset <= parent.size_ && size <= parent.size_ - offset;
    const bool could_leave = !parent.unbounded_ && (unbounded || !ends_inside);
    if (could_leave || offset < 0 || size < 0)
        throw std::range_error("Attempt to grow archive " + name_ + " beyond limits");
    store_ = parent.store_;
    store_ref_ = parent.store_ref_;
    if (store_)
        store_references::add(store_ref_);
}

Archive::Archive(const Archive& other)
    : name_(other.name_),
      store_(other.store_),
      store_ref_(other.store_ref_),
      base_(other.base_),
      size_(other.size_),
      position_(other.position_),
      unbounded_(other.unbounded_) {
    if (store_)
        store_references::add(store_ref_);
}

Archive::Archive(Archive&& other) noexcept {
    swap(other);
}

Archive& Archive::operator=(const Archive& other) {
    Archive copy(other);
    swap(copy);
    return *this;
}

Archive& Archive::operator=(Archive&& other) noexcept {
    Archive taken(std::move(other));
    swap(taken);
    return *this;
}

Archive::~Archive() {
    if (store_ && store_references::release(store_ref_))
        delete store_;
}

void Archive::swap(Archive& other) noexcept {
    std::swap(name_, other.name_);
    std::swap(store_, other.store_);
    std::swap(store_ref_, other.store_ref_);
    std::swap(base_, other.base_);
    std::swap(size_, other.size_);
    std::swap(position_, other.position_);
    std::swap(unbounded_, other.unbounded_);
}

std::size_t Archive::read(void* data, std::size_t count) {
    check_room(count, "Archive::checked_read() Attempt to read past end of archive '");
    if (!store_)
        return 0;
    const std::size_t done = store_->read(saturated_sum(base_, position_), data, count);
    position_ = saturated_sum(position_, static_cast<std::int64_t>(done));
    return done;
}

std::size_t Archive::write(const void* data, std::size_t count) {
    check_room(count, "Archive::checked_write() Attempt to write past end of archive '");
    if (!store_)
        return 0;
    const std::size_t done = store_->write(saturated_sum(base_, position_), data, count);
    position_ = saturated_sum(position_, static_cast<std::int64_t>(done));
    size_ = std::max(size_, position_);
    return done;
}

void Archive::check_room(std::size_t count, const char* refusal) const {
    // A bounded archive's position never passes its size, so the difference is the room that is left.
    if (!unbounded_ && count > static_cast<std::uint64_t>(size_ - position_))
        throw std::range_error(refusal + name_ + "'");
}

void Archive::set_position(std::int64_t offset, int origin) {
    std::int64_t target = offset;
    if (origin == 1)
        target = saturated_sum(position_, offset);
    else if (origin == 2)
        target = offset == std::numeric_limits<std::int64_t>::min() ? std::numeric_limits<std::int64_t>::max()
                                                                    : saturated_sum(size_, -offset);
    if (target < 0)
        throw std::range_error("Archive::set_position() Attempt to seek before start of archive '" + name_ + "'");
    if (!unbounded_ && target > size_)
        throw std::range_error("Archive::set_position() Attempt to seek past end of archive '" + name_ + "'");
    position_ = target;
    size_ = std::max(size_, position_);
}

void Archive::read_string(std::string& out) {
    read_until(out, std::string_view("\0", 1));
}

void Archive::read_line(std::string& out) {
    if (read_until(out, std::string_view("\n\0", 2)) == '\n' && out.ends_with('\r'))
        out.pop_back();
}

/// Reads straight from the store, not through `read`: a text that lacks its terminator ends with the data. Gives the
/// terminator that was met, 0 if none was.
char Archive::read_until(std::string& out, std::string_view terminators) {
    out.clear();
    const std::int64_t start = position_;
    std::size_t length = std::string::npos;
    char terminator = 0;
    while (store_ && length == std::string::npos) {
        const std::size_t before = out.size();
        const std::int64_t at = saturated_sum(start, static_cast<std::int64_t>(before));
        const std::size_t wanted =
            unbounded_ ? text_step : static_cast<std::size_t>(std::clamp<std::int64_t>(size_ - at, 0, text_step));
        out.resize(before + text_step);
        const std::size_t got = store_->read(saturated_sum(base_, at), out.data() + before, wanted);
        length = std::string_view(out).substr(0, before + got).find_first_of(terminators, before);
        if (length != std::string::npos)
            terminator = out[length];
        else if (got < text_step)
            length = before + got;
    }
    if (store_)
        out.resize(length);
    position_ = std::min(size_, saturated_sum(start, static_cast<std::int64_t>(out.size()) + 1));
    return terminator;
}

} // namespace kst
