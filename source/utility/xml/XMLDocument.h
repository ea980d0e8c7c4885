#pragma once

#include "source/utility/Archive.h"
#include "source/utility/xml/XMLMacro.h"
#include "source/utility/xml/XMLNode.h"

#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace kst {

struct XMLLoadState;

/// Why an include element added nothing.
enum class XMLIncludeFault {
    missing,          ///< the file cannot be opened or is empty
    unknown_entity,   ///< an entity in it is unknown, which counts as not loaded
    nothing_selected, ///< its pointer selects no node
    not_parsed,       ///< parse="text", which includes nothing
};

/// An include element that was passed over.
struct XMLPassedOverInclude {
    std::string source_file; ///< where the element stands, as that file was asked for
    std::int32_t line = 0;
    std::string href; ///< as written
    std::string path; ///< the file that it means, as it was asked for
    XMLIncludeFault fault = XMLIncludeFault::missing;
};

/// The tree of one XML file; the node part is the file's root element.
///
/// Reads the engine's own dialect: elements, quoted, single-quoted and bare parameters, text, CDATA and comments, five
/// entities, macros (`xdefine`) and includes (`xi:include`); docs/xml.md tells it whole. A syntax error is thrown as
/// ErrorWithCStack with the text "FILE (LINE): MESSAGE"; a file that ends too early as the archive's std::range_error.
/// After either the document holds what was built so far.
class XMLDocument : public XMLNode {
public:
    XMLDocument();
    XMLDocument(const XMLDocument&) = delete;
    XMLDocument& operator=(const XMLDocument&) = delete;
    ~XMLDocument();

    /// Loads a file of the process-wide name space, or the compiled form beside it (the same name and ".bin") where
    /// that is not older than the source and its includes. A damaged compiled form is passed over if the source can be
    /// read; else it is thrown as an error that names it.
    ///
    /// False: the file cannot be opened or is empty, or an entity was unknown; then the tree is whole all the same.
    bool load(const std::string& path);

    /// Parses an archive from its position on. False for an archive of size 0 and for an unknown entity. The caller's
    /// archive keeps its position.
    bool parse_archive(const Archive& archive);

    /// Parses text, under the file name "#internal_file".
    bool parse_string(std::string_view text);

    /// Writes the compiled form of this tree at the archive's position. Throws ErrorWithCStack for a text that holds a
    /// zero byte, which that form cannot keep.
    void write_compiled(Archive& archive) const;

    /// Replaces content and included files by those of a compiled form, which fills the archive from its position to
    /// its end. It is checked whole; ErrorWithCStack names the archive and what is wrong, and leaves the document
    /// empty.
    void read_compiled(const Archive& archive);

    /// Lower case, backslashes, one at the end; empty if the path has no directory.
    const std::string& directory() const { return directory_; }
    const std::string& file_name() const { return file_name_; }
    /// As given to load.
    const std::string& full_path() const { return full_path_; }
    /// Every file that contributed, and every missing include, in normalised form.
    const std::set<std::string>& included_files() const { return included_files_; }
    /// The include elements of the last parse, here and in included files, that added nothing, in reading order. A
    /// compiled form does not keep them.
    const std::vector<XMLPassedOverInclude>& passed_over_includes() const { return passed_over_includes_; }
    /// The entity names of the last parse, and what they stand for.
    const std::map<idstring, std::string>& entities() const { return entities_; }

private:
    friend class XMLIncluder;

    void set_path(const std::string& path);
    bool load_compiled(const std::string& path, const std::string& compiled_path);
    bool load_source(const std::string& path);
    bool parse_with(const Archive& archive, XMLLoadState& state);
    void clear();

    std::map<idstring, std::string> entities_;
    /// Null for an included document, which uses the table of the outermost one.
    std::unique_ptr<XMLMacroTable> own_macros_;
    XMLMacroTable* macros_;
    std::string directory_;
    std::string file_name_;
    std::string full_path_;
    bool skip_compiled_form_ = false;
    std::set<std::string> included_files_;
    std::vector<XMLPassedOverInclude> passed_over_includes_;
    /// What the outermost load has used so far; null outside a load, and in an outermost document.
    XMLLoadState* state_ = nullptr;
};

/// The path that an include's `href` means in a document, normalised; a `#` and what follows it stay as they are. A
/// leading separator starts at the root of the name space, each leading ".." leaves a directory.
std::string resolve_include_path(const XMLDocument& document, std::string_view href);

/// Appends the nodes that a pointer `/root/a/b` selects, in document order; `*` stands for any name in a step. Elements
/// and macro nodes are selected, and nothing if the first step is not the root's name.
void select_xpointer(const XMLDocument& document, std::string_view pointer, std::vector<const XMLNode*>& out_nodes);

} // namespace kst
