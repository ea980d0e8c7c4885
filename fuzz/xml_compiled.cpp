// A compiled form loads, and then is written as it would be from its tree, or fails with an error that names it.

#include "source/utility/Errors.h"
#include "source/utility/MemoryDataStore.h"
#include "source/utility/xml/XMLCompiledForm.h"
#include "source/utility/xml/XMLDocument.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

namespace {

kst::Archive archive_of(const void* data, std::size_t size) {
    return {"form.bin", std::make_unique<kst::ConstMemoryDataStore>(data, size), 0, static_cast<std::int64_t>(size),
            false};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kst::XMLDocument document;
    try {
        document.read_compiled(archive_of(data, size));
    } catch (const kst::ErrorWithCStack& error) {
        if (!std::string_view(error.what()).starts_with("form.bin: "))
            std::abort();
        return 0;
    }
    const std::string written = kst::compile_xml(document, document.included_files());
    kst::XMLDocument again;
    again.read_compiled(archive_of(written.data(), written.size()));
    if (!(again == document) || again.included_files() != document.included_files())
        std::abort();
    return 0;
}
