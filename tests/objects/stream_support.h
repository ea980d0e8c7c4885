#pragma once

#include "objects/database/CloneManager.h"
#include "objects/database/ObjectCreatorTable.h"
#include "objects/database/ObjectDatabase.h"
#include "objects/database/PersistentForm.h"
#include "objects/object_classes.h"
#include "source/utility/MemoryDataStore.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace test_support {

/// Bytes of a stream, a number at a time.
class StreamBytes {
public:
    StreamBytes& u32(std::uint32_t value) { return raw(&value, 4); }
    StreamBytes& f32(std::initializer_list<float> values) {
        for (const float value : values)
            raw(&value, 4);
        return *this;
    }
    StreamBytes& text(std::string_view text) {
        bytes += text;
        bytes += '\0';
        return *this;
    }
    /// Type, reference, size and data.
    StreamBytes& object(std::uint32_t type, std::uint32_t reference, const StreamBytes& data) {
        u32(type).u32(reference).u32(static_cast<std::uint32_t>(data.bytes.size()));
        bytes += data.bytes;
        return *this;
    }

    std::string bytes;

private:
    StreamBytes& raw(const void* data, std::size_t size) {
        bytes.append(static_cast<const char*>(data), size);
        return *this;
    }
};

/// Bounded; on an exact copy in the heap, so that a sanitizer sees one byte too many.
inline kst::Archive reading(std::string_view bytes) {
    class Store : public kst::ConstMemoryDataStore {
    public:
        Store(std::unique_ptr<char[]> copy, std::size_t size)
            : ConstMemoryDataStore(copy.get(), size), copy_(std::move(copy)) {}

    private:
        std::unique_ptr<char[]> copy_;
    };
    auto copy = std::make_unique<char[]>(bytes.size());
    bytes.copy(copy.get(), bytes.size());
    return {"test.objects", std::make_unique<Store>(std::move(copy), bytes.size()), 0,
            static_cast<std::int64_t>(bytes.size()), /*unbounded=*/false};
}

inline kst::Archive writing() {
    return {"test.objects", std::make_unique<kst::MemoryDataStore>(), 0, 0, /*unbounded=*/true};
}

inline std::string written(const kst::Archive& archive) {
    const auto bytes = static_cast<const kst::MemoryDataStore*>(archive.store())->bytes();
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

inline std::string saved(const kst::ObjectDatabase& database) {
    kst::Archive archive = writing();
    database.save_content(archive);
    return written(archive);
}

inline void load(kst::ObjectDatabase& database, std::string_view bytes) {
    kst::Archive archive = reading(bytes);
    database.load_content(archive);
}

/// An object with any number of references, which tells what is done to it.
class Node : public kst::Persistent<Node, kst::PersistentObject> {
public:
    static constexpr std::string_view class_name = "Node";
    static constexpr std::uint32_t class_type_id = 0x10DE;

    explicit Node(std::string_view name = {}) {
        set_name(kst::intern(name));
        ++live;
    }
    Node(const Node& other) : Persistent(other), value(other.value), references(other.references) { ++live; }
    ~Node() override { --live; }

    template <class Self, class Form>
    static void fields(Self& self, Form& form) {
        form.value("value", self.value);
        auto count = static_cast<std::uint32_t>(self.references.size());
        form.value("count", count);
        if constexpr (Form::loads)
            self.references.assign(count % 1000, nullptr);
        for (auto& reference : self.references)
            form.reference("to", reference);
    }
    void post_load() override { post_loads += 1; }

    void collect_references(kst::CloneSet& set) const override {
        for (Node* const reference : references)
            set.add(reference);
    }
    std::unique_ptr<kst::Clonable> clone() const override { return std::make_unique<Node>(*this); }
    void patch_references(const kst::CloneMapping& mapping) override {
        for (Node*& reference : references)
            mapping.patch(reference);
    }
    void clone_finished() override { clones_finished += 1; }

    std::uint32_t value = 0;
    std::vector<Node*> references;
    int post_loads = 0;
    int clones_finished = 0;

    static inline int live = 0;
};

/// The process's creators, with Node among them.
class Creators {
public:
    Creators() {
        kst::register_object_classes(table_);
        table_.register_creator(Node::class_type_id, kst::persistent_class<Node>().create);
    }

private:
    kst::ObjectCreatorTable table_;
};

} // namespace test_support
