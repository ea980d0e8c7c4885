#include "tools/kst/Command.h"

#include "driver/CommandLine.h"
#include "driver/plan/ninja_plan.h"
#include "driver/plan/split_set_outputs.h"
#include "driver/records/PathText.h"
#include "driver/records/Report.h"
#include "driver/records/RunFlags.h"
#include "source/utility/platform/Directory.h"
#include "source/utility/platform/ProgramPath.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace kst::tool {
namespace {

struct PlanArguments {
    mosaicer::PlanRoots roots;
    std::string output;
    std::string mosaicer;
    std::string stamp;
    std::vector<std::string> patterns;
    std::vector<std::string> switches;
};

/// What stands behind "--" must be switches that change the work of a run and nothing about which run it is.
void apply_switches(const std::vector<std::string>& switches) {
    const mosaicer::CommandLine line = mosaicer::read_command_line(switches, mosaicer::discarding_stream());
    for (const std::string& given : switches) {
        if (given.empty() || given == "-q" || given == "-?" || given == "-help" || given.starts_with("-p"))
            throw CLI::ValidationError("a plan cannot pass on the switch '" + given + "'");
    }
    if (!line.textures_root.empty())
        throw CLI::ValidationError(line.textures_root + " is no switch of mosaicer");
    const std::string& bitmaps = mosaicer::RunFlags.extra_bmp_path;
    if (!bitmaps.empty() && !std::filesystem::is_directory(bitmaps))
        throw CommandFailure("no directory " + bitmaps + " for extra bitmaps");
}

/// As a run takes them, which cuts blanks from the ends of its arguments.
mosaicer::PlanRoots run_roots(const mosaicer::PlanRoots& given) {
    if (mosaicer::trim_blanks(given.definition_path).size() < given.definition_path.size() &&
        given.definition_path.ends_with(' '))
        throw CommandFailure("mosaicer takes no definition whose name ends in a blank: " + given.definition_path);
    return {mosaicer::join_path(given.textures_root, ""), given.definition_path,
            mosaicer::join_path(given.output_root, "")};
}

/// Left alone if it is there with the same text: what depends on its time is then not made anew.
void write_if_changed(const std::string& path, const std::string& text) {
    if (std::ifstream old(path, std::ios::binary); old && std::string(std::istreambuf_iterator<char>(old), {}) == text)
        return;
    const std::string part = path + ".part";
    std::ofstream out(part, std::ios::binary | std::ios::trunc);
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    out.close();
    if (!out || !platform::rename_file(part, path)) {
        platform::remove_file(part);
        throw CommandFailure("cannot write " + path);
    }
}

std::string find_mosaicer(const std::string& given, const std::string& kst) {
    const std::string path = given.empty() ? std::filesystem::path(kst).replace_filename("mosaicer").string() : given;
    const bool is_looked_up_by_shell = path.find('/') == std::string::npos;
    if (!is_looked_up_by_shell && !std::filesystem::is_regular_file(path))
        throw CommandFailure("no mosaicer at " + path + "; --mosaicer tells where it is");
    return path;
}

void plan(const PlanArguments& arguments) {
    apply_switches(arguments.switches);
    const std::string kst = platform::program_path();
    const mosaicer::PlanOptions options{.plan_path = arguments.output,
                                        .mosaicer = find_mosaicer(arguments.mosaicer, kst),
                                        .kst = kst,
                                        .switches = arguments.switches};
    const mosaicer::PlanRoots roots = run_roots(arguments.roots);
    write_if_changed(arguments.output, mosaicer::ninja_plan(mosaicer::survey_definition(roots), roots, options));
}

void outputs(const PlanArguments& arguments) {
    apply_switches(arguments.switches);
    const std::vector<std::string> every_set{""};
    const std::vector<std::string> files = mosaicer::split_set_outputs(
        run_roots(arguments.roots), arguments.patterns.empty() ? every_set : arguments.patterns);
    write_if_changed(arguments.output, mosaicer::ninja_dyndep(arguments.stamp, files));
}

CLI::App* add_command(CLI::App& atlas, const std::string& name, const std::string& description,
                      const std::shared_ptr<PlanArguments>& arguments) {
    CLI::App* const command = atlas.add_subcommand(name, description);
    command->add_option("TEXTURES_ROOT", arguments->roots.textures_root, "As given to mosaicer")->required();
    command->add_option("DEFINITION", arguments->roots.definition_path, "As given to mosaicer")->required();
    command->add_option("OUTPUT_ROOT", arguments->roots.output_root, "As given to mosaicer")->required();
    command->add_option("SWITCHES", arguments->switches, "Behind --: switches that every mosaicer gets");
    return command;
}

} // namespace

void add_atlas_plan(CLI::App& atlas) {
    const auto arguments = std::make_shared<PlanArguments>();
    CLI::App* const plan_command = add_command(
        atlas, "plan", "Write a Ninja file that makes each set by a run of its own, and only where something changed",
        arguments);
    plan_command->add_option("-o", arguments->output, "The Ninja file to write")->required();
    plan_command->add_option("--mosaicer", arguments->mosaicer, "The program that makes sets (default: beside kst)");
    plan_command->callback([arguments] { plan(*arguments); });

    CLI::App* const outputs_command = add_command(
        atlas, "outputs", "Pack the sets of several atlases and write the names of their files for Ninja", arguments);
    outputs_command->add_option("-o", arguments->output, "The dyndep file to write")->required();
    outputs_command->add_option("--stamp", arguments->stamp, "The output of the edge that makes the files")->required();
    outputs_command
        ->add_option_function<std::string>(
            "--only", [arguments](const std::string& pattern) { arguments->patterns.push_back(pattern); },
            "The pattern of a run of that edge; without one, the run makes all sets")
        ->trigger_on_parse();
    outputs_command->callback([arguments] { outputs(*arguments); });
}

} // namespace kst::tool
