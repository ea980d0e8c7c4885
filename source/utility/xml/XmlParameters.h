#pragma once

#include "source/utility/xml/XMLNode.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace kst {

// One parameter of an element as a value of some kind. Each answers false, and leaves the target alone, if the element
// has no such parameter. No reading fails and none asks the locale.

bool read_parameter(const XMLNode& node, std::string_view name, std::string& target);
/// The leading decimal digits with an optional sign, after white space; 0 if there are none; cut to what 32 bits hold.
bool read_parameter(const XMLNode& node, std::string_view name, std::int32_t& target);
/// The leading decimal number, after white space, with optional sign, fraction and exponent; 0 if there is none. Too
/// large a number is infinite.
bool read_parameter(const XMLNode& node, std::string_view name, float& target);
/// True for the exact text "true", false for every other.
bool read_parameter(const XMLNode& node, std::string_view name, bool& target);
/// Up to three numbers apart by white space. Each that can be read replaces its component; from the first that cannot,
/// the components stay as they are.
bool read_parameter(const XMLNode& node, std::string_view name, std::array<float, 3>& target);

/// The number at the front of the text, as above.
std::int32_t leading_integer(std::string_view text);
float leading_float(std::string_view text);

} // namespace kst
