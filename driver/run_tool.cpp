#include "driver/run_tool.h"

#include "driver/CommandLine.h"
#include "driver/records/PathText.h"
#include "driver/records/Report.h"
#include "driver/records/RunFlags.h"
#include "driver/run_definition_file.h"
#include "source/utility/filesystem/VirtualFileSystem.h"

#include <exception>
#include <istream>
#include <sstream>

namespace mosaicer {
namespace {

void print_attribution(std::ostream& console) {
    console << "mosaicer - packs textures into atlases, mip chains and databases\n"
               "\n"
               "DXT compression by mosaicer's own compression library\n"
               "\n"
               "This software uses the FreeImage open source image library. See http://freeimage.sourceforge.net for "
               "details.\n"
               "FreeImage is used under the FreeImage Public License, version 1.0.\n"
            << std::endl;
}

/// What a run says beside its progress: three texts collected for its end, and the sink for what nobody asked to see.
/// The channels stand on these buffers for as long as they live.
class ReportBuffers {
public:
    ReportBuffers() { Report = {&sink_, &sink_, &warnings_, &errors_, &statistics_}; }
    ReportBuffers(const ReportBuffers&) = delete;
    ReportBuffers& operator=(const ReportBuffers&) = delete;
    ~ReportBuffers() {
        std::ostream& nowhere = discarding_stream();
        Report = {&nowhere, &nowhere, &nowhere, &nowhere, &nowhere};
    }

    /// Prints what was collected. True when there were errors.
    bool print_summaries(std::ostream& console) const {
        const std::string errors = errors_.str();
        if (!errors.empty())
            console << "There were errors: " << std::endl << errors << std::endl;
        else
            *Report.verbose << "No errors" << std::endl;
        if (const std::string warnings = warnings_.str(); !warnings.empty())
            console << "There were warnings: " << std::endl << warnings << std::endl;
        if (const std::string statistics = statistics_.str(); !statistics.empty())
            *Report.verbose << "Statistics: " << std::endl << statistics << std::endl;
        return !errors.empty();
    }

private:
    /// Text that goes nowhere costs nothing: a run of thousands of sets must not grow by its unseen progress.
    std::ostream sink_{nullptr};
    std::stringstream errors_;
    std::stringstream statistics_;
    std::stringstream warnings_;
};

void make_all_sets(const CommandLine& line) {
    *Report.verbose << "Reading texture tree definition and baking sets..." << std::endl;
    run_definition_file(join_path(line.textures_root, ""), line.definition_path, join_path(line.output_root, ""),
                        line.pattern);
    *Report.verbose << "All done!" << std::endl << std::endl;
}

int run_guarded(std::span<const std::string> arguments, std::ostream& console, bool& pause_before_exit) {
    kst::VirtualFileSystem file_system;
    const ReportBuffers buffers;
    const CommandLine line = read_command_line(arguments, console);
    pause_before_exit = line.pause_before_exit && !line.help;
    if (line.help || !line.have_all_positionals) {
        console << usage_text << std::endl;
        return 0;
    }
    make_all_sets(line);
    return buffers.print_summaries(console) ? 3 : 0;
}

} // namespace

int run_tool(std::span<const std::string> arguments, std::ostream& console, std::istream& input) {
    RunFlags = {};
    print_attribution(console);
    int exit_code = 0;
    bool pause_before_exit = false;
    try {
        exit_code = run_guarded(arguments, console, pause_before_exit);
    } catch (const std::exception& failure) {
        console << "Failure: " << failure.what() << std::endl;
        exit_code = 1;
    } catch (...) {
        console << "Failure due to unknown exception" << std::endl;
        exit_code = 2;
    }
    if (pause_before_exit) {
        std::string word;
        input >> word;
    }
    return exit_code;
}

} // namespace mosaicer
