#include "driver/records/Keywords.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace mosaicer {
namespace {

template <class Enum>
class Keywords : public testing::Test {};

using AllTables = testing::Types<TexelFormat, TextureFileFormat, MipFilter, PrecookStrategy, PackingOrder,
                                 InsertionStrategy, RemovalKind>;
TYPED_TEST_SUITE(Keywords, AllTables);

TYPED_TEST(Keywords, are_listed_by_value_and_found_in_both_directions) {
    int value = 0;
    for (const auto& entry : KeywordTable<TypeParam>::entries) {
        EXPECT_EQ(static_cast<int>(entry.value), value++);
        EXPECT_EQ(parse_keyword<TypeParam>(entry.word), entry.value);
        EXPECT_EQ(keyword_of(entry.value), entry.word);
    }
    EXPECT_THROW(keyword_of(static_cast<TypeParam>(value)), std::runtime_error);
}

template <class Enum>
std::string failure_text(std::string_view word) {
    try {
        parse_keyword<Enum>(word);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "nothing was thrown";
}

TEST(KeywordFailure, names_the_word_and_the_lookup) {
    EXPECT_EQ(failure_text<TexelFormat>("AF_DXT7"),
              "No enum element named AF_DXT7 found when doing atlas format lookup");
    EXPECT_EQ(failure_text<TextureFileFormat>("dds"),
              "No enum element named dds found when doing texture file format lookup");
    EXPECT_EQ(failure_text<MipFilter>("SOFT"), "No enum element named SOFT found when doing mip filter lookup");
    EXPECT_EQ(failure_text<PrecookStrategy>("RAW"),
              "No enum element named RAW found when doing precook strategy lookup");
    EXPECT_EQ(failure_text<PackingOrder>("ANY"),
              "No enum element named ANY found when doing packing order strategy lookup");
    EXPECT_EQ(failure_text<InsertionStrategy>("HOP"),
              "No enum element named HOP found when doing insertion strategy lookup");
    EXPECT_EQ(failure_text<RemovalKind>("ALL"), "No enum element named ALL found when doing removal strategy lookup");
}

} // namespace
} // namespace mosaicer
