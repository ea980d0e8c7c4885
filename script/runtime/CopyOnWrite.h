#pragma once

#include <cstdint>
#include <utility>

namespace kst::script {

/// A value whose copies share one storage until one of them is written to. What walks a container holds such a copy: it
/// costs nothing while nobody changes the container, however deep walks nest. Not for use by several threads.
///
/// `release_elements(T&)` is called before the storage is freed.
template <typename T>
class CopyOnWrite {
public:
    CopyOnWrite() = default;
    explicit CopyOnWrite(T value) : shared_(new Shared{std::move(value)}) {}
    CopyOnWrite(const CopyOnWrite& other) : shared_(other.shared_) {
        if (shared_ != nullptr)
            ++shared_->holders;
    }
    CopyOnWrite(CopyOnWrite&& other) noexcept : shared_(std::exchange(other.shared_, nullptr)) {}
    CopyOnWrite& operator=(CopyOnWrite other) noexcept {
        std::swap(shared_, other.shared_);
        return *this;
    }
    ~CopyOnWrite() {
        if (shared_ == nullptr || --shared_->holders > 0)
            return;
        release_elements(shared_->value);
        delete shared_;
    }

    /// Valid until this holder is written to or goes.
    const T& read() const { return shared_ != nullptr ? shared_->value : nothing(); }
    /// The storage of this holder alone.
    T& write() {
        if (shared_ == nullptr || shared_->holders > 1) {
            Shared* const own = new Shared{read()};
            if (shared_ != nullptr)
                --shared_->holders;
            shared_ = own;
        }
        return shared_->value;
    }

private:
    struct Shared {
        T value;
        std::uint32_t holders = 1;
    };

    static const T& nothing() {
        static const T& nothing = *new T;
        return nothing;
    }

    Shared* shared_ = nullptr; ///< Null for the value of the default constructor.
};

} // namespace kst::script
