#pragma once

#include "objects/database/CloneManager.h"
#include "objects/database/PersistentForm.h"

#include <memory>
#include <string_view>

namespace kst {

/// Gives a controller that refers to a scene its cloning, from a list of its references:
///
///     template <class Self, class Visit>
///     static void references(Self& self, Visit visit) { visit("target", self.target_); ... }
template <class Class, class Family>
class SceneReferences : public Persistent<Class, Family> {
public:
    void collect_references(CloneSet& set) const override {
        Class::references(static_cast<const Class&>(*this), [&](std::string_view, auto* target) { set.add(target); });
    }
    std::unique_ptr<Clonable> clone() const override {
        return std::make_unique<Class>(static_cast<const Class&>(*this));
    }
    void patch_references(const CloneMapping& mapping) override {
        Class::references(static_cast<Class&>(*this), [&](std::string_view, auto*& target) { mapping.patch(target); });
    }

    void print(std::ostream& out) const override { out << Class::class_name; }
};

} // namespace kst
