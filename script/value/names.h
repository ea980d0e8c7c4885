#pragma once

#include "source/utility/xml/idstring.h"

namespace kst::script {

/// The identifiers that the language itself gives a meaning.
struct WellKnownNames {
    idstring extension = intern("extension");
    idstring member = intern("member");
    idstring super = intern("super");
    idstring type_string = intern("type_string");
};

inline const WellKnownNames& names() {
    static const WellKnownNames instance;
    return instance;
}

/// True for the members that every value has, whatever its class: see ScriptValue::member.
inline bool is_universal_member(idstring id) {
    return id == names().extension || id == names().member;
}

} // namespace kst::script
