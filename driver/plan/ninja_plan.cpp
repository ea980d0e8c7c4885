#include "driver/plan/ninja_plan.h"

#include "driver/plan/ninja_text.h"
#include "driver/plan/set_fingerprint.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <set>
#include <string_view>
#include <utility>

namespace mosaicer {
namespace {

using PathSet = std::set<std::string>;

// A run's words without its attribution, which ends at the third empty line: warnings, errors and what -v shows. A run
// that ends badly does not keep the others of its edge from being made, as in one run of all sets.
constexpr std::string_view rules = R"(
rule set
  command = rm -f -- $out; code=0; for only in $patterns; do $mosaicer "$$only" $roots >$out.part || code=$$?; $
      awk 'n > 2; !NF { n++ }' $out.part; done; test $$code -ne 0 || mv -f -- $out.part $out || code=1; $
      exit $$code # $id
  description = set $name

rule outputs
  command = $kst atlas outputs --stamp=$stamp $only -o $out $roots $switches # $id
  description = pack $name
  restat = 1

rule plan
  command = $kst atlas plan -o $out --mosaicer $tool $roots $switches
  description = plan $out
  generator = 1
  restat = 1
)";

std::string hexadecimal(std::uint64_t value) {
    std::array<char, 16> digits{};
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value, 16);
    return {digits.data(), end};
}

/// Adds paths as Ninja itself spells them, so that no file is named twice in a statement.
void add_paths(PathSet& to, std::span<const std::string> paths) {
    for (const std::string& path : paths) {
        std::string plain = std::filesystem::path(path).lexically_normal().string();
        if (plain.size() > 1 && plain.ends_with('/'))
            plain.pop_back();
        to.insert(std::move(plain));
    }
}

std::string spaced(const auto& texts, auto&& written) {
    std::string line;
    for (const std::string& text : texts)
        line += " " + written(text);
    return line;
}

/// A path that is the first thing in its argument, where a minus would make it a switch and a blank be cut.
std::string as_argument(const std::string& path) {
    return path.starts_with('-') || path.starts_with(' ') ? "./" + path : path;
}

class PlanText {
public:
    PlanText(const DefinitionSurvey& survey, const PlanRoots& roots, const PlanOptions& options)
        : survey_(survey), roots_(roots), options_(options), state_(options.plan_path + ".state/") {
        add_paths(definitions_, survey.definitions);
    }

    std::string text() {
        add_head();
        for (const EdgeGroup& group : survey_.groups)
            add_group(group);
        text_ += "\nbuild all: phony" + stamps_ + "\ndefault all\n";
        add_own_edge();
        return text_;
    }

private:
    void add_variable(std::string_view name, const std::string& value) {
        text_.append(name).append(" = ").append(value).append("\n");
    }

    static std::string command_words(const std::vector<std::string>& words) {
        std::string line;
        for (const std::string& word : words)
            line += (line.empty() ? "" : " ") + ninja_value(shell_word(word));
        return line;
    }

    void add_head() {
        text_ = "# Written by kst atlas plan. Run ninja where kst was run.\nninja_required_version = 1.10\n";
        add_variable("builddir", ninja_value(state_));
        add_variable("bar", "|");
        std::vector<std::string> run{options_.mosaicer};
        run.insert(run.end(), options_.switches.begin(), options_.switches.end());
        add_variable("tool", command_words({options_.mosaicer}));
        add_variable("mosaicer", command_words(run));
        add_variable("kst", command_words({options_.kst}));
        add_variable("roots", command_words({as_argument(roots_.textures_root), as_argument(roots_.definition_path),
                                             as_argument(roots_.output_root)}));
        add_variable("switches", options_.switches.empty() ? "" : "-- " + command_words(options_.switches));
        text_ += rules;
    }

    /// What all edges need but do not watch by time; see the header.
    std::string definitions() const { return " ||" + spaced(definitions_, ninja_path); }

    /// A program that the shell looks up by its name is no file that can be watched.
    static std::string program_input(const std::string& program) {
        return program.find('/') == std::string::npos ? "" : " | " + ninja_path(program);
    }

    void add_group(const EdgeGroup& group) {
        PathSet inputs;
        PathSet outputs;
        std::uint64_t id = 0;
        bool has_split = false;
        for (const std::size_t i : group.sets) {
            const SurveyedSet& set = survey_.sets[i];
            add_paths(inputs, set.inputs);
            add_paths(outputs, set.outputs);
            id = combined_fingerprint(id, set.fingerprint);
            has_split = has_split || set.is_split;
        }
        if (outputs.empty() && !has_split)
            return; // sets without textures: a run writes nothing for them
        const std::string& name = survey_.sets[group.sets.front()].name;
        const std::string file = state_ + "set." + file_name_of(name);
        const std::string stamp = file + ".log";
        const std::string id_text = hexadecimal(id);
        text_ += "\nbuild " + ninja_path(stamp) + (outputs.empty() ? "" : " |" + spaced(outputs, ninja_path)) +
                 ": set" + spaced(inputs, ninja_path) + program_input(options_.mosaicer) + definitions();
        text_ += has_split ? " " + ninja_path(file + ".dd") + "\n" : "\n";
        add_variable("  patterns", spaced_words("-p", group.patterns));
        add_variable("  name", ninja_value(name));
        add_variable("  id", id_text);
        if (has_split) {
            add_variable("  dyndep", ninja_value(file + ".dd"));
            add_outputs_edge(file, inputs, group, id_text);
        }
        stamps_ += " " + ninja_path(stamp);
    }

    void add_outputs_edge(const std::string& file, const PathSet& inputs, const EdgeGroup& group,
                          const std::string& id) {
        text_ += "build " + ninja_path(file + ".dd") + ": outputs" + spaced(inputs, ninja_path) +
                 program_input(options_.kst) + definitions() + "\n";
        add_variable("  stamp", ninja_value(shell_word(file + ".log")));
        if (!selects_all(group)) // as an option without its value would take the next word for it
            add_variable("  only", spaced_words("--only=", group.patterns));
        add_variable("  name", ninja_value(survey_.sets[group.sets.front()].name));
        add_variable("  id", id);
    }

    /// The empty pattern does, and so is never beside another one.
    static bool selects_all(const EdgeGroup& group) { return group.patterns.front().empty(); }

    static std::string spaced_words(const std::string& prefix, const std::vector<std::string>& texts) {
        std::vector<std::string> words;
        for (const std::string& text : texts)
            words.push_back(prefix + text);
        return command_words(words);
    }

    /// Sources may go: a phony edge for each makes that a reason to plan anew and not an error.
    void add_own_edge() {
        PathSet inputs = definitions_;
        add_paths(inputs, survey_.directories);
        add_paths(inputs, survey_.sources);
        for (const SurveyedSet& set : survey_.sets)
            add_paths(inputs, set.inputs);
        const std::string list = spaced(inputs, ninja_path);
        text_ += "\nbuild " + ninja_path(options_.plan_path) + ": plan" + list + program_input(options_.kst) +
                 "\nbuild" + list + ": phony\n";
    }

    const DefinitionSurvey& survey_;
    const PlanRoots& roots_;
    const PlanOptions& options_;
    PathSet definitions_;
    std::string state_;
    std::string text_;
    std::string stamps_;
};

} // namespace

std::string ninja_plan(const DefinitionSurvey& survey, const PlanRoots& roots, const PlanOptions& options) {
    return PlanText(survey, roots, options).text();
}

std::string ninja_dyndep(const std::string& stamp, std::span<const std::string> outputs) {
    std::string text = "ninja_dyndep_version = 1\nbuild " + dyndep_path(stamp);
    PathSet files;
    add_paths(files, outputs);
    if (!files.empty())
        text += " |" + spaced(files, dyndep_path);
    return text + ": dyndep\n";
}

} // namespace mosaicer
