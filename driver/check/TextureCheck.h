#pragma once

#include "driver/TextureIndex.h"

#include <cstddef>
#include <set>
#include <string>

namespace mosaicer {

class Findings;

/// Follows the walks of a texture index: which files were found, which of them are used, and what was passed over.
class TextureCheck {
public:
    TextureCheck(const TextureIndex& index, Findings& findings) : index_(index), findings_(findings) {}

    /// To be called whenever the index may have walked its roots anew. Tells what a walk passed over.
    void look_at_walk();

    void use(const SourceTexture& texture) { used_.insert(texture.image.file_path); }

    /// At the end: what was found and never used.
    void tell_unused();

private:
    void tell(const IndexFinding& finding);

    const TextureIndex& index_;
    Findings& findings_;
    std::int32_t seen_walks_ = 0;
    std::set<std::string> found_;
    std::set<std::string> used_;
};

} // namespace mosaicer
