#include "source/utility/image/ImageParser.h"

#include "source/utility/filesystem/VirtualFileSystem.h"

namespace kst {

Archive ImageParser::open_file() const {
    Archive archive = file_system_ != nullptr ? file_system_->open(name_, "r") : kst::open(name_, "r");
    if (!archive)
        throw ErrorWithCStack("Image parser cannot open " + name_ + ".");
    return archive;
}

} // namespace kst
