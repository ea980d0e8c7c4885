#include "objects/database/ObjectDatabase.h"

#include "objects/database/ObjectCreatorTable.h"
#include "objects/database/ReferenceMap.h"
#include "objects/database/archive_values.h"
#include "source/utility/Errors.h"
#include "source/utility/MemoryDataStore.h"

#include <algorithm>
#include <string>
#include <utility>

namespace kst {

namespace {

static_assert(sizeof(ObjectHeader) == 12);

/// Gathers objects in memory and hands them on in large pieces.
class StreamWriter {
public:
    explicit StreamWriter(Archive& output) : output_(output) { start_piece(); }

    void add(const PersistentObject& object, std::uint32_t number, ReferenceMap& references) {
        const std::int64_t start = piece_.position();
        const auto header_size = static_cast<std::int64_t>(sizeof(ObjectHeader));
        Archive data(piece_, start + header_size, 0, /*unbounded=*/true);
        object.save(data, references);
        if (data.size() > piece_limit)
            throw ErrorWithCStack("ObjectDatabase::save_content() an object has 2 GiB of data or more");
        write_value(piece_, ObjectHeader{.type_id = object.type_id(),
                                         .reference = number,
                                         .size = static_cast<std::uint32_t>(data.size())});
        piece_.set_position(start + header_size + data.size());
        if (piece_.position() >= piece_size) {
            flush();
            start_piece();
        }
    }

    void flush() {
        const auto size = static_cast<std::size_t>(piece_.position());
        // What a `save` has skipped at its end is nowhere in the store yet.
        if (store_->bytes().size() < size)
            store_->write(piece_.position() - 1, "", 1);
        write_bytes(output_, store_->bytes().data(), size);
    }

private:
    static constexpr std::int64_t piece_size = std::int64_t{1} << 20;
    static constexpr std::int64_t piece_limit = INT32_MAX;

    /// A new store each time, so that nothing of the last piece shows where a `save` skips bytes.
    void start_piece() {
        auto store = std::make_unique<MemoryDataStore>();
        store_ = store.get();
        store_->write(piece_size, "", 1); // one growth for most pieces
        piece_ = Archive(output_.name(), std::move(store), 0, 0, /*unbounded=*/true);
    }

    Archive& output_;
    Archive piece_;
    MemoryDataStore* store_ = nullptr; ///< the piece's
};

void save_object(StreamWriter& writer, const PersistentObject& object, std::uint32_t number, ReferenceMap& references) {
    try {
        writer.add(object, number, references);
    } catch (const UnkownReferenceError&) {
        throw UnkownReferenceError("Object " + idstring_text(object.name()) +
                                   " tried to create a reference to an unkown object!");
    }
}

std::unique_ptr<PersistentObject> load_object(Archive& archive, ReferenceMap& references,
                                              const ObjectCreatorTable& creators) {
    const auto header = read_value<ObjectHeader>(archive);
    const ObjectCreator create = creators.find(header.type_id);
    if (create == nullptr)
        throw ErrorWithCStack("ObjectDatabase::load_content() unknown object type");
    std::unique_ptr<PersistentObject> object = create();
    Archive data(archive, archive.position(), header.size, /*unbounded=*/false);
    object->load(data, references);
    references.register_ref(header.reference, object.get());
    archive.set_position(header.size, 1);
    return object;
}

} // namespace

void ObjectDatabase::save_content(Archive& archive) const {
    ReferenceMap references;
    references.reserve(objects.size());
    for (const auto& object : objects) {
        if (object == nullptr)
            throw ErrorWithCStack("ObjectDatabase::save_content() a null object cannot be stored");
        references.reference_of(object.get(), /*allow_new=*/true);
    }
    write_value(archive, static_cast<std::uint32_t>(objects.size()));
    StreamWriter writer(archive);
    std::uint32_t number = 0; // reference_of gave them out in this order
    for (const auto& object : objects)
        save_object(writer, *object, ++number, references);
    writer.flush();
}

void ObjectDatabase::load_content(Archive& archive) {
    const ObjectCreatorTable* const creators = ObjectCreatorTable::instance();
    if (creators == nullptr)
        throw AssertionException("ObjectCreatorTable::instance()", "objects/database/ObjectDatabase", __LINE__);
    const auto count = read_value<std::uint32_t>(archive);
    const std::uint32_t expected = expected_objects(archive, count);
    ReferenceMap references(expected);
    objects.reserve(objects.size() + expected);
    for (std::uint32_t i = 0; i < count; ++i)
        objects.push_back(load_object(archive, references, *creators));
    if (references.check_unresolved() != 0)
        throw ErrorWithCStack("ReferenceMap::check_unresolved() The reference map contains unresolved references");
    for (const auto& object : objects)
        object->post_load();
}

std::uint32_t expected_objects(const Archive& archive, std::uint32_t count) {
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(count, bytes_left(archive) / sizeof(ObjectHeader)));
}

} // namespace kst
