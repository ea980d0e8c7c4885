#include "driver/records/Report.h"

namespace mosaicer {

std::ostream& discarding_stream() {
    static std::ostream stream(nullptr);
    return stream;
}

ReportChannels Report{&discarding_stream(), &discarding_stream(), &discarding_stream(), &discarding_stream(),
                      &discarding_stream()};

} // namespace mosaicer
