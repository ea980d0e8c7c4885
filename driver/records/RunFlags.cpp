#include "driver/records/RunFlags.h"

namespace mosaicer {

RunFlagValues RunFlags;

} // namespace mosaicer
