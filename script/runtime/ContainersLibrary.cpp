#include "script/runtime/ContainersLibrary.h"

#include "script/runtime/ScriptBitField.h"
#include "script/runtime/ScriptList.h"
#include "script/runtime/ScriptMap.h"
#include "script/runtime/ScriptTCList.h"
#include "script/runtime/ScriptVector.h"

namespace kst::script {

namespace {

template <typename Container>
constexpr auto filled = [](ContainersLibrary&, Arguments elements) { return make_script_owned<Container>(elements); };
constexpr auto callback_handler = [](ContainersLibrary&) { return make_script_owned<ScriptTCList>(); };

} // namespace

void ContainersLibrary::bind(StaticMemberSet<ContainersLibrary>& members) {
    members.method<callback_handler>("callback_handler");
    members.method<callback_handler>("CallbackHandler");
    members.method<filled<ScriptBitField>>("Bitfield");
    members.method<filled<ScriptVector>>("Vector");
    members.method<filled<ScriptVector>>("Range");
    members.method<filled<ScriptList>>("List");
    members.method<filled<ScriptMap>>("Map");
}

} // namespace kst::script
