#include "script/binding/NativeObjects.h"

#include <algorithm>

#include "script/binding/LibraryHelper.h"

namespace kst::script {

std::uint32_t NativeObjects::enter(LibraryHelper& object) {
    const std::uint32_t index = pool_.take();
    pool_[index] = &object;
    return index;
}

void NativeObjects::leave(std::uint32_t index, std::int32_t left) {
    LibraryHelper* const object = pool_[index];
    if (object == nullptr) {
        if (left == 0)
            pool_.give_back(index);
        return;
    }
    pool_.drop_ref(index);
    pool_[index] = nullptr;
    pool_.give_back(index);
    object->handle_ = LibraryHelper::no_handle;
    object->waiting_ = true;
    waiting_.push_back(object);
    tell_waiting();
}

void NativeObjects::tell_waiting() {
    if (telling_)
        return;
    telling_ = true;
    while (!waiting_.empty()) {
        LibraryHelper* const object = waiting_.back();
        waiting_.pop_back();
        object->waiting_ = false;
        // A value made in the meantime has brought the object back.
        if (object->handle_ == LibraryHelper::no_handle)
            object->on_unreferenced();
    }
    telling_ = false;
}

void NativeObjects::forget(LibraryHelper& object) {
    if (object.waiting_)
        std::erase(waiting_, &object);
    if (object.handle_ == LibraryHelper::no_handle)
        return;
    const auto index = static_cast<std::uint32_t>(object.handle_);
    pool_[index] = nullptr;
    if (pool_.drop_ref(index) == 0)
        pool_.give_back(index);
}

} // namespace kst::script
