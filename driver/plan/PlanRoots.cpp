#include "driver/plan/PlanRoots.h"

#include "source/utility/xml/XMLDocument.h"

#include <stdexcept>

namespace mosaicer {

void load_definition(kst::XMLDocument& definition, const std::string& path) {
    definition.load(path);
    if (definition.type() == kst::XML_NONE)
        throw std::runtime_error("cannot load " + path);
}

} // namespace mosaicer
