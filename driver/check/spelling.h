#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace mosaicer {

/// How many single changes turn one word into the other: a letter put in, left out, changed, or two neighbours swapped.
/// Case of A to Z does not count. Anything beyond `most` is told as most + 1.
std::size_t edit_distance(std::string_view a, std::string_view b, std::size_t most);

/// The candidate that the word is a misspelling of, the first of those equally near; empty if none is near enough. A
/// word of up to 3 letters may differ by 1 change, one of up to 8 by 2, a longer one by 3, and always by less than half
/// of its letters.
std::string_view nearest_word(std::string_view word, const std::vector<std::string_view>& candidates);

} // namespace mosaicer
