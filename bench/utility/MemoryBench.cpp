// Pairs of new and delete with 100,000 live objects, and the memory that each object costs. The same program is built
// with and without the allocator chain; other allocators are preloaded. scripts/memory_table.sh puts them side by side.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <limits>
#include <new>
#include <numeric>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr std::size_t live_objects = 100'000;
constexpr int rounds = 40;
constexpr std::array sizes{4, 16, 20, 24, 64, 512};

enum Order : int { LIFO, FIFO, RANDOM };
constexpr std::array order_names{"LIFO", "FIFO", "random"};

std::vector<std::size_t> order_of_frees(Order order) {
    std::vector<std::size_t> indices(live_objects);
    std::iota(indices.begin(), indices.end(), std::size_t{0});
    if (order == LIFO)
        std::reverse(indices.begin(), indices.end());
    if (order == RANDOM)
        std::shuffle(indices.begin(), indices.end(), std::mt19937(1));
    return indices;
}

/// Makes all objects, touches each, and frees them in order. Nanoseconds for one object's new and delete.
double pass(std::vector<unsigned char*>& objects, const std::vector<std::size_t>& order, std::size_t size) {
    const auto start = std::chrono::steady_clock::now();
    for (auto& object : objects) {
        object = static_cast<unsigned char*>(operator new(size));
        *object = 1;
    }
    for (const std::size_t i : order)
        operator delete(objects[i]);
    const std::chrono::duration<double, std::nano> time = std::chrono::steady_clock::now() - start;
    return time.count() / live_objects;
}

/// No two objects share a byte.
bool objects_are_apart(std::size_t size) {
    std::vector<unsigned char*> objects(live_objects);
    for (std::size_t i = 0; i < live_objects; ++i)
        std::memset(objects[i] = static_cast<unsigned char*>(operator new(size)), static_cast<int>(i % 251), size);
    bool apart = true;
    for (std::size_t i = 0; i < live_objects; ++i)
        apart =
            apart && std::all_of(objects[i], objects[i] + size, [i](unsigned char byte) { return byte == i % 251; });
    for (unsigned char* const object : objects)
        operator delete(object);
    return apart;
}

/// The best of the rounds: what other programs take of a shared machine is not the allocator's.
void pairs(benchmark::State& state, std::size_t size, Order order) {
    if (!objects_are_apart(size))
        return state.SkipWithError("objects overlap");
    const auto indices = order_of_frees(order);
    std::vector<unsigned char*> objects(live_objects);
    double best = std::numeric_limits<double>::max();
    for (auto _ : state)
        best = std::min(best, pass(objects, indices, size));
    state.counters["ns_per_pair"] = {best, benchmark::Counter::kAvgThreads};
}

std::size_t resident_bytes() {
    std::size_t all = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> all >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

/// What the process grew by for each object beyond its bytes. Means something once in a process, before other memory is
/// freed.
void overhead(benchmark::State& state, std::size_t size) {
    const std::size_t count = std::min<std::size_t>(1'000'000, (std::size_t{128} << 20) / size);
    std::vector<void*> objects(count, &state); // touched before the count
    for (auto _ : state) {
        const std::size_t before = resident_bytes();
        for (void*& object : objects)
            std::memset(object = operator new(size), 1, size);
        const std::size_t grown = resident_bytes() - before;
        state.counters["overhead_bytes"] =
            static_cast<double>(grown) / static_cast<double>(count) - static_cast<double>(size);
        for (void* const object : objects)
            operator delete(object);
    }
}

const bool registered = [] {
    for (const int size : sizes) {
        const auto bytes = static_cast<std::size_t>(size);
        const std::string name = std::to_string(size);
        for (const Order order : {LIFO, FIFO, RANDOM})
            for (const int threads : {1, 2})
                benchmark::RegisterBenchmark(
                    ("pairs/" + name + "/" + order_names[order] + "/" + std::to_string(threads)).c_str(),
                    [bytes, order](benchmark::State& state) { pairs(state, bytes, order); })
                    ->Iterations(rounds)
                    ->Threads(threads);
        benchmark::RegisterBenchmark(("overhead/" + name).c_str(), [bytes](benchmark::State& state) {
            overhead(state, bytes);
        })->Iterations(1);
    }
    return true;
}();

} // namespace
