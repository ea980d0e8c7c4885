#include "script/value/release_values.h"

#include <utility>

namespace kst::script {

namespace {

struct ReleaseQueue {
    std::vector<ScriptValue> waiting;
    bool draining = false;

    void add(ScriptValue&& value) {
        if (value.value_class().counted())
            waiting.push_back(std::move(value));
    }

    void drain() {
        if (draining)
            return;
        draining = true;
        while (!waiting.empty()) {
            const ScriptValue last = std::move(waiting.back());
            waiting.pop_back();
        }
        draining = false;
    }
};

// Never destroyed: values may go as late as the program's last static object.
ReleaseQueue& queue() {
    static ReleaseQueue& instance = *new ReleaseQueue;
    return instance;
}

} // namespace

void release_value(ScriptValue&& value) noexcept {
    if (!value.value_class().counted())
        return;
    queue().add(std::move(value));
    queue().drain();
}

void release_values(std::vector<ScriptValue>&& values) noexcept {
    std::vector<ScriptValue> taken = std::move(values);
    for (ScriptValue& value : taken)
        queue().add(std::move(value));
    queue().drain();
}

} // namespace kst::script
