#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kst {

/// An interned string: its index in one process-wide table, which never changes. 0 is the empty string. Two strings
/// are equal exactly when their numbers are, so names are compared, stored and searched as numbers.
///
/// Numbers depend on the order in which strings were first seen: they never go into a file, and nothing is ordered by
/// them. The table is made on first use, lives to the end of the process and has no lock.
using idstring = std::int32_t;

/// The number of `text`, which is added to the table if it is new.
idstring intern(std::string_view text);

/// The number of `text`, or -1 if it was never interned. Adds nothing.
idstring find_interned(std::string_view text);

/// The string of a number that `intern` gave. The reference stays good to the end of the process.
const std::string& idstring_text(idstring id);

/// How many strings the table holds; all numbers are below it.
std::size_t idstring_count();

} // namespace kst
