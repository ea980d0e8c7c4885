#include "tools/kst/Command.h"

#include "source/utility/Errors.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/platform/Directory.h"
#include "source/utility/xml/XMLCompiledForm.h"
#include "source/utility/xml/XMLDocument.h"

#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kst::tool {
namespace {

struct XmlArguments {
    std::string file;
    std::string output;
    bool lines = false;
};

/// As on XML output, and line ends and tabs so that a value stays on its line.
std::string escaped(std::string_view text) {
    std::string out;
    for (const char c : escape_xml(text)) {
        if (c == '\n')
            out += "&#10;";
        else if (c == '\r')
            out += "&#13;";
        else if (c == '\t')
            out += "&#9;";
        else
            out += c;
    }
    return out;
}

void print_macro(const XMLMacro& macro, std::ostream& out) {
    out << "#macro " << macro.name;
    for (std::size_t i = 0; i < macro.parameters.size(); ++i)
        out << (i == 0 ? "(" : ",") << macro.parameters[i] << (i + 1 == macro.parameters.size() ? ")" : "");
}

void print_line(const XMLNode& node, std::size_t depth, bool lines, std::ostream& out) {
    if (lines)
        out << node.line() << ' ';
    out << std::string(2 * depth, ' ');
    if (node.type() == XML_TEXT) {
        out << "#text \"" << escaped(node.text()) << '"';
    } else if (node.type() == XML_MACRO) {
        print_macro(*node.macro(), out);
    } else {
        out << node.name();
        for (const XMLParameter& parameter : node.parameters())
            out << ' ' << idstring_text(parameter.name) << "=\"" << escaped(parameter.value()) << '"';
    }
    out << '\n';
}

/// Walks with a stack of its own, so that no depth of a tree is too deep.
void print_tree(const XMLNode& root, bool lines, std::ostream& out) {
    struct Place {
        const XMLNode* node;
        std::ptrdiff_t next_child;
    };
    std::vector<Place> path{{&root, 0}};
    print_line(root, 0, lines, out);
    while (!path.empty()) {
        const XMLNode* const child = path.back().node->child(path.back().next_child++);
        if (child == nullptr) {
            path.pop_back();
            continue;
        }
        print_line(*child, path.size(), lines, out);
        path.push_back({child, 0});
    }
}

/// Of a directory, a pipe or a file that may not be read, the host's refusal.
bool is_refused(const std::string& file) {
    try {
        kst::open(file, "r");
        return false;
    } catch (const DiskError&) {
        return true;
    }
}

/// True if every entity was known. A document without a root element is one that could not be loaded.
bool load(XMLDocument& document, const std::string& file) {
    if (is_refused(file))
        throw CommandFailure("cannot load " + file);
    const bool complete = document.load(file);
    if (!complete && document.type() == XML_NONE)
        throw CommandFailure("cannot load " + file);
    return complete;
}

void dump(const XmlArguments& arguments) {
    XMLDocument document;
    const bool complete = load(document, arguments.file);
    print_tree(document, arguments.lines, std::cout);
    if (!complete)
        throw CommandFailure("unknown entity in " + arguments.file);
}

/// Written whole or not at all: a half compiled form would be taken for a damaged one.
void compile(const XmlArguments& arguments) {
    XMLDocument document;
    if (!load(document, arguments.file))
        throw CommandFailure("unknown entity in " + arguments.file);
    const std::string bytes = compile_xml(document, document.included_files());
    const std::string output = arguments.output.empty() ? arguments.file + ".bin" : arguments.output;
    const std::string part = output + ".part";
    std::ofstream out(part, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    if (!out || !platform::rename_file(part, output)) {
        platform::remove_file(part);
        throw CommandFailure("cannot write " + output);
    }
}

} // namespace

void add_xml_commands(CLI::App& app) {
    CLI::App* const xml = app.add_subcommand("xml", "Look at files of the engine's XML dialect");
    xml->require_subcommand(1);
    const auto arguments = std::make_shared<XmlArguments>();

    CLI::App* const dump_command = xml->add_subcommand(
        "dump", "Load a file, with its macros and includes resolved, and print its tree, a node a line");
    dump_command->add_option("FILE", arguments->file, "The XML file")->required();
    dump_command->add_flag("--lines", arguments->lines, "Put each node's line number ahead of it");
    dump_command->callback([arguments] { dump(*arguments); });

    CLI::App* const compile_command = xml->add_subcommand(
        "compile",
        "Write the compiled form of a file, which loads without parsing. Beside the source, under the default "
        "name, it is taken in place of the source for as long as it is not older");
    compile_command->add_option("FILE", arguments->file, "The XML file")->required();
    compile_command->add_option("-o", arguments->output, "The file to write (default: FILE and .bin)");
    compile_command->callback([arguments] { compile(*arguments); });
}

} // namespace kst::tool
