#pragma once

#include "source/utility/Archive.h"
#include "source/utility/xml/XMLNode.h"

#include <set>
#include <string>

namespace kst {

/// The compiled form of a parsed file: a flat image of its tree that loads without parsing. It stands beside the source
/// under the source's name and ".bin". Integers have 4 bytes, little-endian, unsigned; strings are UTF-8 with a zero
/// byte at their end.
///
///   offset  size  field
///   0       3     the letters X, M, L
///   3       1     version, 1
///   4       4     number of strings in the pool
///   8       ...   the strings, each once, in the order of their first use in the tree
///           ...   the root's node record
///           4     number of included files
///           ...   the included files, strings: normalised paths
///
/// A node record, each integer 4 bytes:
///
///   element   1, name, number of parameters, for each: name, value; number of children, their records
///   text      2, text
///   macro     4, name (string), number of parameters, parameters (strings), number of order entries, order entries,
///             body (string), is_expression (1 byte, 0 or 1)
///
/// Names, values and texts of elements and text nodes are indices into the pool. Lines and read-only flags are not
/// kept.

/// Whether the archive begins, at its position, with the letters and this version. Its position stays.
bool is_compiled_xml(Archive archive);

/// The bytes of the form. Throws ErrorWithCStack if a string holds a zero byte.
std::string compile_xml(const XMLNode& root, const std::set<std::string>& included_files);

/// Fills the root of a tree, whose old content goes, from the archive's position to its end. Every count is checked
/// against the bytes that are left, every index against the pool, and the nesting against xml_limits::most_nesting.
/// What does not fit throws ErrorWithCStack: the archive's name, ": damaged compiled form, ", the fault, and the byte.
void read_compiled_xml(Archive archive, XMLNode& root, idstring source_file, std::set<std::string>& included_files);

} // namespace kst
