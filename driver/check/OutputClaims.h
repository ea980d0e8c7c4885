#pragma once

#include <map>
#include <string>

namespace kst {
class XMLNode;
}

namespace mosaicer {

class Findings;

/// Which set writes which file below the output root.
class OutputClaims {
public:
    explicit OutputClaims(Findings& findings) : findings_(findings) {}

    /// Claims a file, named at `node`, for a set. Tells if it is another's already, or lies outside of the root.
    void claim(const std::string& path, const kst::XMLNode& node, const std::string& set);

private:
    struct Owner {
        const kst::XMLNode* node;
        std::string set;
    };

    Findings& findings_;
    std::map<std::string, Owner> owners_;
};

} // namespace mosaicer
