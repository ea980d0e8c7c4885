#include "objects/database/dump_objects.h"

#include "objects/database/ObjectDatabase.h"
#include "source/utility/Errors.h"

#include <algorithm>
#include <map>
#include <sstream>

namespace kst {

namespace {

class StreamDump {
public:
    StreamDump(Archive& archive, std::span<const PersistentClass> classes, std::ostream& out)
        : archive_(archive), out_(out) {
        for (const PersistentClass& row : classes)
            rows_.emplace(row.type_id, &row);
    }

    void dump() {
        const auto count = read_value<std::uint32_t>(archive_);
        defined_.reserve(expected_objects(archive_, count));
        for (std::uint32_t i = 0; i < count; ++i)
            dump_object(read_value<ObjectHeader>(archive_));
        check_references();
    }

private:
    const PersistentClass& class_of(std::uint32_t type_id) const {
        const auto found = rows_.find(type_id);
        if (found != rows_.end())
            return *found->second;
        std::ostringstream text;
        text << "ObjectDatabase::load_content() unknown object type ";
        print_type_id(text, type_id);
        text << " in " << archive_.name();
        throw ErrorWithCStack(text.str());
    }

    /// The line goes out whole or not at all.
    void dump_object(const ObjectHeader& header) {
        const PersistentClass& row = class_of(header.type_id);
        Archive data(archive_, archive_.position(), header.size, /*unbounded=*/false);
        std::ostringstream line;
        line << row.name << ' ';
        print_type_id(line, header.type_id);
        line << " ref=" << header.reference << " size=" << header.size;
        DumpForm form(data, line, requested_);
        std::string name;
        form.text("name", name);
        row.dump_fields(form);
        if (bytes_left(data) > 0)
            line << " unread=" << bytes_left(data);
        out_ << line.str() << '\n';
        defined_.push_back(header.reference);
        archive_.set_position(header.size, 1);
    }

    void check_references() {
        std::sort(defined_.begin(), defined_.end());
        if (std::adjacent_find(defined_.begin(), defined_.end()) != defined_.end())
            fail("ReferenceMap::register_ref() a reference is already registered with a different object");
        const bool resolved = std::all_of(requested_.begin(), requested_.end(), [this](std::uint32_t number) {
            return std::binary_search(defined_.begin(), defined_.end(), number);
        });
        if (!resolved)
            fail("ReferenceMap::check_unresolved() The reference map contains unresolved references");
    }

    [[noreturn]] void fail(const std::string& text) const { throw ErrorWithCStack(text + " in " + archive_.name()); }

    Archive& archive_;
    std::ostream& out_;
    std::map<std::uint32_t, const PersistentClass*> rows_;
    std::vector<std::uint32_t> defined_;
    std::vector<std::uint32_t> requested_;
};

} // namespace

void dump_objects(Archive& archive, std::span<const PersistentClass> classes, std::ostream& out) {
    StreamDump(archive, classes, out).dump();
}

} // namespace kst
