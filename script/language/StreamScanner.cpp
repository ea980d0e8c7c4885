#include "script/language/StreamScanner.h"

namespace kst::script {

int StreamScanner::next_character() {
    using Traits = std::istream::traits_type;
    std::streambuf& buffer = *stream_.rdbuf();
    const auto character = buffer.sbumpc();
    if (Traits::eq_int_type(character, Traits::eof()))
        return 0;
    if (character == '\n' || character == '\r')
        return take_partner(character == '\n' ? '\r' : '\n') || character == '\n' ? '\n' : '\r';
    return character;
}

bool StreamScanner::take_partner(char partner) {
    std::streambuf& buffer = *stream_.rdbuf();
    if (buffer.sgetc() != partner)
        return false;
    buffer.sbumpc();
    return true;
}

} // namespace kst::script
