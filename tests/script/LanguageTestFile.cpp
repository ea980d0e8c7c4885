#include "script/language/CompiledFile.h"
#include "source/utility/MemoryDataStore.h"

#include <gtest/gtest.h>

#include <memory>
#include <numeric>
#include <string>
#include <vector>

using namespace kst::script;

namespace {

using Bytes = std::vector<std::uint8_t>;

std::optional<CompiledFile> read(const Bytes& bytes, bool skip_debug_block = false) {
    kst::Archive archive("a.kvx", std::make_unique<kst::ConstMemoryDataStore>(bytes.data(), bytes.size()), 0,
                         static_cast<std::int64_t>(bytes.size()), false);
    return read_compiled_file(archive, skip_debug_block);
}

Bytes written(const CodeBuffer& code, bool with_debug_block) {
    auto owned = std::make_unique<kst::MemoryDataStore>();
    const kst::MemoryDataStore& store = *owned;
    kst::Archive archive("a.kvx", std::move(owned), 0, 0, true);
    write_compiled_file(archive, code, "d\\a.kvs", with_debug_block);
    Bytes bytes(store.bytes().size());
    std::transform(store.bytes().begin(), store.bytes().end(), bytes.begin(),
                   [](std::byte b) { return std::to_integer<std::uint8_t>(b); });
    return bytes;
}

/// "begin class f", a return, a branch back to it: 6 + 1 + 5 bytes.
CodeBuffer sample() {
    CodeBuffer code(true);
    code.begin(Opcode::begin_class, 0);
    code.put_text("f");
    code.begin(Opcode::return_, 0);
    code.begin(Opcode::bra, 258);
    code.put_32(6);
    return code;
}

const Bytes sample_file = {'K', 'V', 'X', 0,   12,  0,    0,   0,   28,  0,   0,   0,   0,   0,   0,   0, // header
                           4,   'f', 0,   0,   0,   0,    0,   41,  6,   0,   0,   0,                     // code
                           0,   0,   0,   0,   'd', '\\', 'a', '.', 'k', 'v', 's', 0, // format word, path
                           0,   0,   0,   0,   255, 255,  255, 255, 255, 255, 255, 255, 255, 255, 255, 255,
                           255, 255, 255, 255, 255, 255,  255, 255, 0,   0,   0,   0,   2,   1,   0,   0,
                           255, 255, 255, 255, 255, 255,  255, 255, 255, 255, 255, 255, 255, 255, 255, 255};

std::string error_of(const Bytes& bytes) {
    try {
        read(bytes);
    } catch (const CompiledFileError& error) {
        return error.what();
    }
    return "";
}

} // namespace

TEST(LanguageCompiledFile, is_laid_out_byte_for_byte) {
    EXPECT_EQ(written(sample(), true), sample_file);
    Bytes bare(sample_file.begin(), sample_file.begin() + 28);
    bare[8] = 0;
    EXPECT_EQ(written(sample(), false), bare);
    const auto file = read(sample_file);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->source_path, "d\\a.kvs");
    EXPECT_EQ(file->lines, (std::vector<std::int32_t>{0, -1, -1, -1, -1, -1, 0, 258, -1, -1, -1, -1}));
    EXPECT_EQ(file->code, Bytes(sample_file.begin() + 16, sample_file.begin() + 28));
    EXPECT_TRUE(read(sample_file, true)->lines.empty());
}

TEST(LanguageCompiledFile, ignores_a_debug_block_of_another_format) {
    Bytes bytes = sample_file;
    bytes[28] = 1;
    EXPECT_TRUE(read(bytes)->lines.empty());
    EXPECT_EQ(read(bytes)->code.size(), 12U);
}

TEST(LanguageCompiledFile, every_prefix_is_refused_or_no_compiled_script) {
    for (std::size_t size = 0; size < sample_file.size(); ++size) {
        const Bytes prefix(sample_file.begin(), sample_file.begin() + static_cast<std::ptrdiff_t>(size));
        if (size < 4)
            EXPECT_FALSE(read(prefix));
        else
            EXPECT_EQ(error_of(prefix).rfind("a.kvx: damaged compiled script: ", 0), 0U) << size;
    }
}
