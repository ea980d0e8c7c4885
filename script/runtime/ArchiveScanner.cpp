#include "script/runtime/ArchiveScanner.h"

namespace kst::script {

int ScriptRTE::ArchiveScanner::next_character() {
    if (next_ == line_text_.size()) {
        if (archive_.position() >= archive_.size())
            return 0;
        archive_.read_line(line_text_);
        line_text_ += '\n';
        next_ = 0;
    }
    return static_cast<unsigned char>(line_text_[next_++]);
}

} // namespace kst::script
