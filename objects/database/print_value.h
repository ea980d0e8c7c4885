#pragma once

#include "source/utility/math/GQuat.h"

#include <cstdint>
#include <ostream>
#include <string_view>

// Values as text: components with a blank between them, in the stream's own number form.
namespace kst {

inline void print_value(std::ostream& out, std::uint32_t v) {
    out << v;
}
inline void print_value(std::ostream& out, float v) {
    out << v;
}
inline void print_value(std::ostream& out, const Vector2& v) {
    out << v.x << ' ' << v.y;
}
inline void print_value(std::ostream& out, const Vector3& v) {
    out << v.x << ' ' << v.y << ' ' << v.z;
}
inline void print_value(std::ostream& out, const GQuat& v) {
    out << v.x << ' ' << v.y << ' ' << v.z << ' ' << v.w;
}

/// As one word of a dump's line: a single number as it is, a record in parentheses.
inline void print_record(std::ostream& out, std::uint32_t v) {
    out << v;
}
inline void print_record(std::ostream& out, float v) {
    out << v;
}
template <class T>
void print_record(std::ostream& out, const T& v) {
    out << '(';
    print_value(out, v);
    out << ')';
}

/// In double quotes, on one line, with nothing that a terminal would obey: a quote and a backslash behind a backslash,
/// control characters and bytes that are no UTF-8 as \xNN.
void print_quoted(std::ostream& out, std::string_view text);

/// `0x` and eight digits.
void print_type_id(std::ostream& out, std::uint32_t type_id);

} // namespace kst
