#pragma once

#include "script/binding/bind.h"

namespace kst::script {

/// The library `containers`: makes the containers of scripts. Its members, one by one: docs/script-containers.md.
class ContainersLibrary : public Bound<ContainersLibrary> {
public:
    static constexpr std::string_view script_name = "ContainersLibrary";
    static void bind(StaticMemberSet<ContainersLibrary>& members);
};

} // namespace kst::script
