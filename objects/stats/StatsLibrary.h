#pragma once

#include <string>

#include "objects/stats/StatsBlockManager.h"
#include "script/binding/bind.h"

namespace kst {

/// The prototypes of a manager as scripts see them.
class StatsLibrary final : public script::Bound<StatsLibrary> {
public:
    static constexpr std::string_view script_name = "StatsLibrary";
    static void bind(script::StaticMemberSet<StatsLibrary>& members);

    /// The manager must outlive the library.
    explicit StatsLibrary(const StatsBlockManager& manager) : manager_(manager) {}

    /// A copy of a prototype, which belongs to scripts. Throws script::DSError for an unknown name.
    script::ScriptValue make(const std::string& name) const;

private:
    const StatsBlockManager& manager_;
};

} // namespace kst
