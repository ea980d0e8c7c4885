// Any bytes as compiled script: read or refused, verified or refused.

#include "script/language/CompiledFile.h"
#include "script/language/Verifier.h"
#include "source/utility/MemoryDataStore.h"

#include <cstddef>
#include <cstdint>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kst::Archive archive("fuzz.kvx", std::make_unique<kst::ConstMemoryDataStore>(data, size), 0,
                         static_cast<std::int64_t>(size), false);
    try {
        if (const auto file = kst::script::read_compiled_file(archive, /*skip_debug_block=*/false))
            kst::script::verify_code(file->code, archive.name());
    } catch (const kst::script::CompiledFileError&) {
    }
    return 0;
}
