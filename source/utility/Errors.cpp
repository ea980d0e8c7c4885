#include "source/utility/Errors.h"

namespace kst {

void throw_disk_error(const std::string& message, int line) {
    throw DiskError("source/utility/Archive", line, message);
}

} // namespace kst
