// Streams of many small objects, their cloning, and the evaluation of tracks.

#include "objects/controllers/CompositeControllers.h"
#include "objects/controllers/KeyedControllers.h"
#include "objects/controllers/thin_keys.h"
#include "objects/database/CloneManager.h"
#include "objects/database/ObjectDatabase.h"
#include "objects/object_classes.h"
#include "objects/scene/Object3D.h"
#include "source/utility/MemoryDataStore.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

/// A scene: each object with a name, a place, and a parent anywhere in the stream, before or behind it.
kst::ObjectDatabase scene(std::size_t count) {
    kst::ObjectDatabase database;
    for (std::size_t i = 0; i < count; ++i) {
        database.objects.push_back(std::make_unique<kst::Object3D>());
        database.objects.back()->set_name(kst::intern("object" + std::to_string(i % 1000)));
    }
    std::mt19937 random(1);
    for (const auto& object : database.objects)
        static_cast<kst::Object3D&>(*object).set_parent(
            static_cast<kst::Object3D*>(database.objects[random() % count].get()));
    return database;
}

std::string save(const kst::ObjectDatabase& database) {
    kst::Archive archive("stream", std::make_unique<kst::MemoryDataStore>(), 0, 0, /*unbounded=*/true);
    database.save_content(archive);
    const auto bytes = static_cast<const kst::MemoryDataStore*>(archive.store())->bytes();
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

void load(kst::ObjectDatabase& database, const std::string& bytes) {
    kst::Archive archive("stream", std::make_unique<kst::ConstMemoryDataStore>(bytes.data(), bytes.size()), 0,
                         static_cast<std::int64_t>(bytes.size()), /*unbounded=*/false);
    database.load_content(archive);
}

void save_objects(benchmark::State& state) {
    const kst::ObjectDatabase database = scene(static_cast<std::size_t>(state.range(0)));
    const std::size_t size = save(database).size();
    for (auto _ : state) {
        kst::Archive archive("stream", std::make_unique<kst::MemoryDataStore>(), 0, 0, /*unbounded=*/true);
        database.save_content(archive);
        benchmark::DoNotOptimize(archive.size());
    }
    state.SetItemsProcessed(state.range(0) * state.iterations());
    state.SetBytesProcessed(static_cast<std::int64_t>(size) * state.iterations());
}
BENCHMARK(save_objects)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

/// The time includes that of destroying the objects.
void load_objects(benchmark::State& state) {
    kst::ObjectCreatorTable creators;
    kst::register_object_classes(creators);
    const std::string bytes = save(scene(static_cast<std::size_t>(state.range(0))));
    kst::ObjectDatabase check;
    load(check, bytes);
    if (save(check) != bytes)
        return state.SkipWithError("wrong bytes");
    check.objects.clear();
    for (auto _ : state) {
        kst::ObjectDatabase database;
        load(database, bytes);
        benchmark::DoNotOptimize(database.objects.data());
    }
    state.SetItemsProcessed(state.range(0) * state.iterations());
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes.size()) * state.iterations());
}
BENCHMARK(load_objects)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

void clone_graph(benchmark::State& state) {
    const kst::ObjectDatabase database = scene(static_cast<std::size_t>(state.range(0)));
    std::vector<kst::Clonable*> objects;
    for (const auto& object : database.objects)
        objects.push_back(object.get());
    kst::CloneManager manager;
    const auto group = manager.group(manager.clone(objects));
    if (group.size() != objects.size() || group[0].object == objects[0])
        return state.SkipWithError("wrong copies");
    manager.clear();
    for (auto _ : state) {
        benchmark::DoNotOptimize(manager.clone(objects));
        manager.clear();
    }
    state.SetItemsProcessed(state.range(0) * state.iterations());
}
BENCHMARK(clone_graph)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

kst::GQuat turned(std::size_t key) {
    return kst::rotation_about({1, 2, static_cast<float>(key % 7)}, 0.3f * static_cast<float>(key));
}

template <class Controller, class Content>
void evaluate(benchmark::State& state, Content content_of, bool rising) {
    constexpr std::size_t keys = 1000;
    Controller controller;
    for (std::size_t i = 0; i < keys; ++i)
        controller.add_key(static_cast<float>(i), content_of(i));
    std::vector<float> times(65'536);
    std::mt19937 random(1);
    for (std::size_t i = 0; i < times.size(); ++i)
        times[i] = rising ? static_cast<float>(i) * keys / static_cast<float>(times.size())
                          : static_cast<float>(random() % (keys * 64)) / 64;
    typename Controller::Value value{};
    if (!controller.get(0.5f, value))
        return state.SkipWithError("no value");
    for (auto _ : state)
        for (const float time : times) {
            controller.get(time, value);
            benchmark::DoNotOptimize(value);
        }
    state.SetItemsProcessed(static_cast<std::int64_t>(times.size()) * state.iterations());
}

void rotation_at_rising_times(benchmark::State& state) {
    evaluate<kst::QuatLinearRotationController>(state, turned, /*rising=*/true);
}
void rotation_at_random_times(benchmark::State& state) {
    evaluate<kst::QuatLinearRotationController>(state, turned, /*rising=*/false);
}
void packed_rotation_at_rising_times(benchmark::State& state) {
    const auto packed = [](std::size_t i) { return kst::pack(turned(i)); };
    evaluate<kst::QuatLinearRotationControllerPacked>(state, packed, /*rising=*/true);
}
void vector_at_rising_times(benchmark::State& state) {
    const auto vector = [](std::size_t i) { return kst::Vector3{static_cast<float>(i), 0, 1}; };
    evaluate<kst::LinearVector3Controller>(state, vector, /*rising=*/true);
}
BENCHMARK(rotation_at_rising_times);
BENCHMARK(rotation_at_random_times);
BENCHMARK(packed_rotation_at_rising_times);
BENCHMARK(vector_at_rising_times);

/// Keys evenly on an arc, of which two remain.
void thin_even_arc(benchmark::State& state) {
    std::vector<kst::Key<kst::GQuat>> keys;
    for (int i = 0; i < state.range(0); ++i)
        keys.push_back({static_cast<float>(i), kst::rotation_about({1, 2, 3}, 1e-6f * static_cast<float>(i))});
    if (kst::thin_keys(keys).size() != 2)
        return state.SkipWithError("keys remain");
    for (auto _ : state)
        benchmark::DoNotOptimize(kst::thin_keys(keys));
    state.SetItemsProcessed(state.range(0) * state.iterations());
}
BENCHMARK(thin_even_arc)->Arg(10'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

} // namespace
