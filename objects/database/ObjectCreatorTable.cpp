#include "objects/database/ObjectCreatorTable.h"

#include "source/utility/Errors.h"

namespace kst {

namespace {

ObjectCreatorTable* the_instance = nullptr;

} // namespace

ObjectCreatorTable::ObjectCreatorTable() {
    if (the_instance != nullptr)
        throw AssertionException("!ObjectCreatorTable::instance()", "objects/database/ObjectCreatorTable", __LINE__);
    the_instance = this;
}

ObjectCreatorTable::~ObjectCreatorTable() {
    if (the_instance == this)
        the_instance = nullptr;
}

ObjectCreatorTable* ObjectCreatorTable::instance() {
    return the_instance;
}

ObjectCreator ObjectCreatorTable::find(std::uint32_t type_id) const {
    const auto found = creators_.find(type_id);
    return found != creators_.end() ? found->second : nullptr;
}

} // namespace kst
