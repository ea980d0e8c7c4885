#pragma once

#include "source/utility/Errors.h"

#include <gmock/gmock.h>
#include <string>

namespace test_support {

/// The call throws a DiskError of the archive layer with this message, behind whatever line it tells.
inline auto throws_disk_error(const std::string& message) {
    return testing::Throws<kst::DiskError>(testing::Property(
        &kst::DiskError::what, testing::MatchesRegex("source/utility/Archive\\([0-9]+\\)" + message)));
}

} // namespace test_support
