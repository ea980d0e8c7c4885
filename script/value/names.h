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

} // namespace kst::script
