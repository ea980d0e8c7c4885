#pragma once

#include <string>

namespace kst {
class XMLDocument;
}

namespace mosaicer {

/// What a run is given, as a plan is made for it: both roots end in a slash.
struct PlanRoots {
    std::string textures_root;
    std::string definition_path;
    std::string output_root;
};

/// Loads a definition file. One that is absent makes nothing and is no failure of a run, but nobody wants a plan of it:
/// throws std::runtime_error "cannot load PATH", and what the XML reader throws.
void load_definition(kst::XMLDocument& definition, const std::string& path);

} // namespace mosaicer
