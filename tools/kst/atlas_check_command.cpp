#include "tools/kst/Command.h"

#include "driver/check/DefinitionCheck.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace kst::tool {
namespace {

struct CheckArguments {
    std::string textures_root;
    std::string definition;
    bool json = false;
};

void print_json(const std::vector<mosaicer::Finding>& findings) {
    auto list = nlohmann::ordered_json::array();
    for (const mosaicer::Finding& finding : findings) {
        nlohmann::ordered_json object{{"file", finding.file},
                                      {"line", finding.line},
                                      {"kind", mosaicer::word_of(finding.kind)},
                                      {"message", finding.message}};
        if (!finding.suggestion.empty())
            object["suggestion"] = finding.suggestion;
        if (!finding.set.empty())
            object["set"] = finding.set;
        list.push_back(std::move(object));
    }
    // Names of files need not be UTF-8.
    std::cout << list.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

void check(const CheckArguments& arguments) {
    const auto findings = mosaicer::check_definition(arguments.textures_root, arguments.definition);
    if (arguments.json)
        print_json(findings);
    else
        for (const mosaicer::Finding& finding : findings)
            std::cout << mosaicer::finding_text(finding) << '\n';
    if (!findings.empty())
        throw CommandFailure(std::to_string(findings.size()) + (findings.size() == 1 ? " finding" : " findings"));
}

} // namespace

void add_atlas_check(CLI::App& atlas) {
    const auto arguments = std::make_shared<CheckArguments>();
    CLI::App* const command = atlas.add_subcommand(
        "check", "Tell what mosaicer would pass over or fail on late, a line a finding: FILE:LINE: KIND: TEXT");
    command->add_option("TEXTURES_ROOT", arguments->textures_root, "As for mosaicer")->required();
    command->add_option("DEFINITION", arguments->definition, "The definition file")->required();
    command->add_flag("--json", arguments->json, "Print an array of objects");
    command->callback([arguments] { check(*arguments); });
}

} // namespace kst::tool
