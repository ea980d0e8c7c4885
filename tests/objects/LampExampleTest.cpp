// The example of docs/objects.md, as it stands there.

#include "tests/objects/stream_support.h"

#include <gtest/gtest.h>

#include <array>

#include "objects/controllers/ConstControllers.h"
#include "objects/database/CloneManager.h"
#include "objects/database/PersistentForm.h"
#include "objects/scene/Object3D.h"

namespace {

class Lamp : public kst::Persistent<Lamp, kst::PersistentObject> {
public:
    static constexpr std::string_view class_name = "Lamp";
    static constexpr std::uint32_t class_type_id = 0x51A4B6C2; // stands in files: never changes

    kst::Vector3 colour{1, 1, 1};
    kst::FloatController* brightness = nullptr; // not owned
    kst::Object3D* place = nullptr;             // not owned

    // What is stored, in this order, behind the name.
    template <class Self, class Form>
    static void fields(Self& self, Form& form) {
        form.value("colour", self.colour);
        form.reference("brightness", self.brightness);
        form.reference("place", self.place);
    }

    // What a clone manager follows, copies and rewires.
    void collect_references(kst::CloneSet& set) const override {
        set.add(brightness);
        set.add(place);
    }
    std::unique_ptr<kst::Clonable> clone() const override { return std::make_unique<Lamp>(*this); }
    void patch_references(const kst::CloneMapping& mapping) override {
        mapping.patch(brightness);
        mapping.patch(place);
    }
};

TEST(LampExample, IsStoredAndCloned) {
    kst::ObjectCreatorTable creators; // one in the process, at start-up
    kst::register_object_classes(creators);
    creators.register_creator(Lamp::class_type_id, kst::persistent_class<Lamp>().create);

    auto lamp = std::make_unique<Lamp>();
    auto glow = std::make_unique<kst::ConstFloatController>(0.75f);
    lamp->set_name(kst::intern("desk"));
    lamp->brightness = glow.get();
    kst::ObjectDatabase database;
    database.objects.push_back(std::move(lamp));
    database.objects.push_back(std::move(glow));
    const std::string bytes = test_support::saved(database);

    kst::ObjectDatabase loaded;
    test_support::load(loaded, bytes);
    auto& again = dynamic_cast<Lamp&>(*loaded.objects[0]);
    EXPECT_EQ(again.brightness, loaded.objects[1].get());
    EXPECT_EQ(again.place, nullptr);

    kst::CloneManager clones;
    const std::uint32_t group = clones.clone(std::array<kst::Clonable*, 1>{&again});
    // A controller without `clone` is shared by the copy.
    EXPECT_EQ(dynamic_cast<Lamp&>(*clones.group(group)[0].object).brightness, again.brightness);
}

} // namespace
