#include "source/utility/Errors.h"

namespace kst {

void throw_disk_error(const std::string& message, std::source_location where) {
    throw DiskError("source/utility/Archive", static_cast<int>(where.line()), message);
}

} // namespace kst
