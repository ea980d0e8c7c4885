// Reads the input as a bundle: either it is refused with the promised error, or all its entries can be told, looked up
// and read.

#include "source/utility/Errors.h"
#include "source/utility/MemoryDataStore.h"
#include "source/utility/filesystem/BundleDirectory.h"

#include <cstdint>
#include <cstdlib>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kst::Archive archive("fuzz", std::make_unique<kst::ConstMemoryDataStore>(data, size), 0,
                         static_cast<std::int64_t>(size), /*unbounded=*/false);
    try {
        const kst::BundleDirectory bundle(archive);
        for (std::size_t i = 1; i < bundle.entries().size(); ++i) {
            const kst::BundleEntry& entry = bundle.entries()[i];
            if (entry.parent >= i || bundle.path_of(i).size() > kst::BundleDirectory::most_path_bytes)
                std::abort();
            bundle.find(bundle.path_of(i));
            if (!entry.present || entry.is_directory || entry.size == 0)
                continue;
            char last = 0;
            kst::Archive window(archive, entry.offset, entry.size, /*unbounded=*/false);
            window.set_position(1, 2);
            if (window.read(&last, 1) != 1)
                std::abort();
        }
    } catch (const kst::ErrorWithCStack&) {
        return 0;
    }
    return 0;
}
