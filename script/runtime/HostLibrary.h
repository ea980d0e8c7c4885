#pragma once

#include <concepts>
#include <map>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "script/binding/LibraryHelper.h"
#include "script/value/Library.h"

namespace kst::script {

/// What a host gives to its programs: native objects by the names that they are imported under. The objects belong to
/// the library; values of them that outlive it are dead.
class HostLibrary final : public Library, public ScriptInterface {
public:
    HostLibrary() = default;
    HostLibrary(const HostLibrary&) = delete;
    HostLibrary& operator=(const HostLibrary&) = delete;
    ~HostLibrary() override = default;

    /// Makes the object; one of that name that was there before goes.
    template <std::derived_from<LibraryHelper> T, typename... A>
    T& add(std::string_view name, A&&... arguments) {
        auto object = std::make_unique<T>(std::forward<A>(arguments)...);
        T& added = *object;
        objects_[intern(name)] = std::move(object);
        return added;
    }

    bool has(idstring id) override { return objects_.contains(id); }
    /// The library answers by name alone and is no value itself.
    ScriptValue value() override { return {}; }
    ScriptValue get(idstring id) override {
        const auto found = objects_.find(id);
        return found == objects_.end() ? ScriptValue() : found->second->value();
    }

private:
    std::map<idstring, std::unique_ptr<LibraryHelper>> objects_;
};

} // namespace kst::script
