#include "objects/database/PersistentObject.h"

#include "objects/database/archive_values.h"

#include <string>

namespace kst {

void PersistentObject::load(Archive& archive, ReferenceMap& /*references*/) {
    std::string text;
    archive.read_string(text);
    name_ = intern(text);
}

void PersistentObject::save(Archive& archive, ReferenceMap& /*references*/) const {
    write_string(archive, idstring_text(name_));
}

} // namespace kst
