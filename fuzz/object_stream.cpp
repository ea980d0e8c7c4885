// Any stream loads or fails; what loads is saved as a stream that loads and is saved as the same bytes again, and that
// a dump can print.

#include "objects/controllers/Controller.h"
#include "objects/controllers/KeyedControllers.h"
#include "objects/database/ObjectDatabase.h"
#include "objects/database/dump_objects.h"
#include "objects/object_classes.h"
#include "source/utility/Errors.h"
#include "source/utility/MemoryDataStore.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>

namespace {

kst::Archive archive_of(const void* data, std::size_t size) {
    return {"stream", std::make_unique<kst::ConstMemoryDataStore>(data, size), 0, static_cast<std::int64_t>(size),
            false};
}

bool load(kst::ObjectDatabase& database, const void* data, std::size_t size) {
    kst::Archive archive = archive_of(data, size);
    try {
        database.load_content(archive);
        return true;
    } catch (const std::range_error&) {
    } catch (const kst::ErrorWithCStack&) {
    }
    return false;
}

bool dump(const void* data, std::size_t size) {
    kst::Archive archive = archive_of(data, size);
    std::ostringstream out;
    try {
        kst::dump_objects(archive, kst::object_classes(), out);
        return true;
    } catch (const std::range_error&) {
    } catch (const kst::ErrorWithCStack&) {
    }
    return false;
}

std::string save(const kst::ObjectDatabase& database) {
    kst::Archive archive("saved", std::make_unique<kst::MemoryDataStore>(), 0, 0, true);
    database.save_content(archive);
    const auto bytes = static_cast<const kst::MemoryDataStore*>(archive.store())->bytes();
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

template <class Family>
void evaluate(kst::PersistentObject& object) {
    auto* const controller = dynamic_cast<Family*>(&object);
    typename Family::Value value{};
    if (controller == nullptr)
        return;
    for (const float time : {controller->start_time(), controller->end_time(), 0.5f, -1e9f, 1e9f})
        try {
            controller->get(time, value);
        } catch (const kst::ErrorWithCStack&) { // parents in a circle
        }
    controller->smooth_ends(3);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static kst::ObjectCreatorTable creators;
    static const bool registered = (kst::register_object_classes(creators), true);
    static_cast<void>(registered);

    kst::ObjectDatabase database;
    const bool loaded = load(database, data, size);
    if (dump(data, size) != loaded)
        std::abort();
    if (loaded) {
        const std::string saved = save(database);
        kst::ObjectDatabase again;
        if (!load(again, saved.data(), saved.size()) || save(again) != saved || !dump(saved.data(), saved.size()))
            std::abort();
    }
    for (const auto& object : database.objects) {
        evaluate<kst::FloatController>(*object);
        evaluate<kst::Vector2Controller>(*object);
        evaluate<kst::Vector3Controller>(*object);
        evaluate<kst::RotationController>(*object);
    }
    return 0;
}
