#pragma once

#include "source/utility/xml/idstring.h"

namespace kst {

/// The names that the dialect itself knows, interned once.
struct XMLWords {
    idstring name = intern("name");
    idstring xdefine = intern("xdefine");
    idstring value = intern("value");
    idstring expression = intern("expression");
    idstring href = intern("href");
    idstring parse = intern("parse");
    idstring xi_include = intern("xi:include");
    idstring xinclude_include = intern("xinclude:include");
};

inline const XMLWords& xml_words() {
    static const XMLWords words;
    return words;
}

} // namespace kst
