// Whatever an XML file says, its blocks can be made, copied, compared and assigned.

#include "objects/stats/StatsBlockManager.h"
#include "source/utility/xml/XMLDocument.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kst::XMLDocument document;
    try {
        document.parse_string({reinterpret_cast<const char*>(data), size});
    } catch (const std::runtime_error&) {
        return 0;
    }
    kst::StatsBlockManager manager;
    manager.read_definitions(document, "fuzz");
    for (const auto* const prototype : manager.prototypes()) {
        kst::StatsBlock copy = prototype->block;
        copy.assign(prototype->block);
        if (!copy.compare(prototype->block) || copy.values().size() != prototype->block.values().size())
            std::abort();
        copy.make_new();
    }
    return 0;
}
