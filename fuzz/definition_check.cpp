// Definitions of any bytes over a small tree of textures: every finding names a file, and there is always an end.

#include "driver/check/DefinitionCheck.h"
#include "source/utility/filesystem/DiskFileSystem.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/tga_bytes.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace {

class Tree {
public:
    Tree() {
        folder.write("tex/a.tga", test_support::tga_bytes(4, 4));
        folder.write("tex/maps/b_x_.tga", test_support::tga_bytes(3, 5));
        folder.write("tex/maps/c.tga", "cut");
    }

    test_support::TemporaryDirectory folder;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Tree tree;
    const std::string definition = tree.folder.write("d.xml", {reinterpret_cast<const char*>(data), size});
    kst::VirtualFileSystem files;
    kst::DiskFileSystem disk;
    files.mount("/", &disk, /*owned=*/false);
    for (const mosaicer::Finding& finding : mosaicer::check_definition(tree.folder / "tex", definition))
        if (finding.file.empty() || finding.message.empty())
            std::abort();
    return 0;
}
