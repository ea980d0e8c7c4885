#include "objects/stats/StatsLibrary.h"

namespace kst {

void StatsLibrary::bind(script::StaticMemberSet<StatsLibrary>& members) {
    members.method<&StatsLibrary::make>("make");
}

script::ScriptValue StatsLibrary::make(const std::string& name) const {
    const StatsBlockManager::Prototype* const prototype = manager_.find(name);
    if (prototype == nullptr)
        throw script::DSError("There is no stats block " + name);
    return prototype->block.make_new();
}

} // namespace kst
