#include "driver/check/spelling.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

namespace mosaicer {
namespace {

/// The definition of the distance, letter by letter from the end.
std::size_t plain_distance(std::string_view a, std::string_view b) {
    if (a.empty() || b.empty())
        return a.size() + b.size();
    const auto cut = [](std::string_view text, std::size_t count) { return text.substr(0, text.size() - count); };
    std::size_t least = std::min(plain_distance(cut(a, 1), b), plain_distance(a, cut(b, 1))) + 1;
    least = std::min(least, plain_distance(cut(a, 1), cut(b, 1)) + (a.back() == b.back() ? 0 : 1));
    if (a.size() > 1 && b.size() > 1 && a.back() == b[b.size() - 2] && b.back() == a[a.size() - 2])
        least = std::min(least, plain_distance(cut(a, 2), cut(b, 2)) + 1);
    return least;
}

TEST(Spelling, counts_the_changes_between_words) {
    std::mt19937 random(7);
    const auto word = [&random] {
        std::string letters(random() % 6, 'a');
        for (char& letter : letters)
            letter = static_cast<char>('a' + random() % 3);
        return letters;
    };
    for (int i = 0; i < 500; ++i) {
        const std::string a = word();
        const std::string b = word();
        for (std::size_t most = 0; most < 6; ++most)
            ASSERT_EQ(edit_distance(a, b, most), std::min(plain_distance(a, b), most + 1)) << a << ' ' << b;
    }
    EXPECT_EQ(edit_distance("Width", "wIDTH", 3), 0u);
}

TEST(Spelling, names_the_nearest_word_if_one_is_near) {
    const std::vector<std::string_view> words{"width", "height", "DDS", "KAISER_GAMMA", "KAISER_GAMMA_CRISP", "name"};
    struct Case {
        std::string_view word;
        std::string_view nearest;
    };
    for (const auto& [word, nearest] : {Case{"widht", "width"},
                                        {"hieght", "height"},
                                        {"dds", "DDS"},
                                        {"DDX", "DDS"},
                                        {"kaiser_gama", "KAISER_GAMMA"},
                                        {"KAISER_GAMMA_CRSP", "KAISER_GAMMA_CRISP"},
                                        {"xy", ""},
                                        {"", ""},
                                        {"depth", ""},
                                        {"nmae", "name"},
                                        {"nx", ""}})
        EXPECT_EQ(nearest_word(word, words), nearest) << word;
    EXPECT_EQ(nearest_word("rok", {"rock", "roc"}), "rock") << "the first of those equally near";
}

} // namespace
} // namespace mosaicer
