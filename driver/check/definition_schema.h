#pragma once

#include <string>

namespace mosaicer {

/// A RELAX NG schema of the definition file, in the XML syntax, with an annotation for each attribute. It is made from
/// the tables that the reader walks.
///
/// It takes what a run reads as it was meant: unknown attributes and values that a run would pass over are refused. A
/// value may hold a macro call in place of what it must be otherwise, text may stand where a macro call may, and
/// attributes and elements of other namespaces are left to their owners.
std::string definition_schema();

} // namespace mosaicer
