// The grammar in use recurs to the left and runs actions between its symbols; both could move the place where an error
// is found or where the parser goes on. The literal grammar does neither. Damaged programs have the same errors under
// both.

#include "script/language/ParserActions.h"
#include "script/language/StreamScanner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

/// Made from LiteralGrammar.y.
bool run_literal_automaton(kst::script::ParserActions& actions);

using namespace kst::script;

namespace {

using Words = std::vector<std::string>;

Words words_of(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), std::istream_iterator<std::string>()};
}

const std::array programs{
    words_of("f ( a ) { x . m ( 1 ) ; if ( a ) { } else if ( b ) { ; } else { } return ( a or b ) ( 2 ) ; }"),
    words_of("class C { object m ; g ( ) { while ( x ) { x := 1 ; } } h ( ) { for ( x in y ) { return ; } } } f ( ) { "
             "object a , b := 2 ; { object c ; } }"),
    words_of(
        "import a . b , c ; import d ; object e , g ; f ( a , b ) { return not a ; } k ( ) { for ( a , b in c ) { } }"),
};

const Words vocabulary =
    words_of("if else object import return and or class not void this while for in ; , . ( ) { } := = "
             "< + - 1 x \"s\" $ '");

using Random = std::mt19937;
std::size_t below(Random& random, std::size_t bound) {
    return random() % bound;
}

void damage(Words& words, Random& random) {
    const auto place = words.begin() + static_cast<std::ptrdiff_t>(below(random, words.size()));
    const std::string& word = vocabulary[below(random, vocabulary.size())];
    switch (below(random, 4)) {
    case 0:
        words.insert(place, word);
        break;
    case 1:
        *place = word;
        break;
    case 2:
        std::iter_swap(place, words.begin());
        break;
    default:
        if (words.size() > 8)
            words.erase(place, place + std::min<std::ptrdiff_t>(words.end() - place, 4));
    }
}

std::string damaged_program(Random& random) {
    Words words = programs[below(random, programs.size())];
    for (std::size_t count = 1 + below(random, 4); count > 0; --count)
        damage(words, random);
    std::string source;
    for (const std::string& word : words)
        source += word + (below(random, 7) == 0 ? '\n' : ' ');
    return source;
}

/// Leaves out what only actions find, and what then stands twice in a row.
std::string syntax_errors(const std::string& errors) {
    constexpr std::array found_by_actions{"already", "name two", "unique", "cannot have", "\"this\""};
    std::istringstream lines(errors);
    std::string kept;
    std::string last;
    for (std::string line; std::getline(lines, line);) {
        const bool semantic = std::any_of(found_by_actions.begin(), found_by_actions.end(),
                                          [&](const char* words) { return line.find(words) != std::string::npos; });
        if (semantic || line == last)
            continue;
        kept += line + "\n";
        last = line;
    }
    return kept;
}

std::string literal_errors(const std::string& source) {
    std::istringstream stream(source);
    StreamScanner scanner(stream, "a.kvs");
    Parser parser(scanner);
    ParserActions actions(parser, scanner);
    const bool accepted = run_literal_automaton(actions);
    EXPECT_TRUE(accepted || parser.error_count() > 0);
    return syntax_errors(parser.errors());
}

std::string parser_errors(const std::string& source) {
    std::istringstream stream(source);
    StreamScanner scanner(stream, "a.kvs");
    Parser parser(scanner);
    const bool accepted = parser.parse();
    EXPECT_EQ(accepted, parser.error_count() == 0);
    return syntax_errors(parser.errors());
}

} // namespace

TEST(LanguageRecovery, is_that_of_the_literal_grammar) {
    Random random(1);
    int sound = 0;
    for (int i = 0; i < 4000; ++i) {
        const std::string source = damaged_program(random);
        const std::string expected = literal_errors(source);
        sound += expected.empty() ? 1 : 0;
        ASSERT_EQ(parser_errors(source), expected) << source;
    }
    EXPECT_GT(sound, 10) << "some programs survive their damage, and are accepted by both";
}
