#include "script/runtime/UnionLibrary.h"

#include <algorithm>

#include "script/value/IndexPool.h"

namespace kst::script {

/// The data word is the index of the union's record, which holds one count for the union itself.
class UnionLibrary::LibraryInstance final : public ScriptClass {
public:
    static LibraryInstance& instance() {
        static LibraryInstance& instance = *new LibraryInstance;
        return instance;
    }

    Data take(UnionLibrary& library) {
        const Data data = pool_.take();
        pool_[data] = &library;
        return data;
    }
    void forget(Data data) {
        pool_[data] = nullptr;
        release(data);
    }

    void add_ref(Data data) override { pool_.add_ref(data); }
    void release(Data data) override {
        if (pool_.drop_ref(data) == 0)
            pool_.give_back(data);
    }
    bool to_boolean(Data) override { return true; }
    std::string to_string(Data data) override { return type_name(data); }
    ScriptValue member(Data data, idstring id, bool must_exist) override {
        return has_member(data, id) ? pool_[data]->get(id) : ScriptClass::member(data, id, must_exist);
    }
    bool has_member(Data data, idstring id) override { return pool_[data] != nullptr && pool_[data]->has(id); }
    std::string type_name(Data) override { return "<union_library>"; }

private:
    LibraryInstance() : ScriptClass(Counting::pooled) {}

    IndexPool<UnionLibrary*> pool_;
};

UnionLibrary::~UnionLibrary() {
    if (number_ != no_number)
        LibraryInstance::instance().forget(number_);
}

Library* UnionLibrary::find(idstring id) const {
    const auto found = std::ranges::find_if(libraries_, [id](Library* library) { return library->has(id); });
    return found == libraries_.end() ? nullptr : *found;
}

ScriptValue UnionLibrary::value() {
    if (number_ == no_number)
        number_ = LibraryInstance::instance().take(*this);
    return {LibraryInstance::instance(), number_};
}

ScriptValue UnionLibrary::get(idstring id) {
    Library* const library = find(id);
    return library == nullptr ? ScriptValue() : library->get(id);
}

void UnionLibrary::visit(LibraryVisitor& visitor) {
    for (Library* library : libraries_)
        library->visit(visitor);
}

} // namespace kst::script
