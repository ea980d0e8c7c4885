#include "tools/kst/Command.h"
#include "tools/kst/report/Page.h"
#include "tools/kst/report/collect_run.h"

#include <cstdint>
#include <iostream>
#include <memory>
#include <string>

namespace kst::tool {
namespace {

struct ReportArguments {
    std::string output_root;
    std::string page;
    std::int32_t max_side = 0;
};

/// Browsers open larger pages too, but take their time and memory.
constexpr std::int64_t large_page_bytes = std::int64_t{256} << 20;

std::string counted(std::size_t count, const std::string& noun) {
    const bool one = count == 1;
    const bool ends_in_s = noun.ends_with("s");
    return std::to_string(count) + " " + noun + (one ? "" : ends_in_s ? "es" : "s");
}

std::string megabytes(std::int64_t bytes) {
    const std::int64_t tenths = (bytes * 10 + 500'000) / 1'000'000;
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " MB";
}

void report_atlases(const ReportArguments& arguments) {
    const report::RunRecord run = report::collect_run(arguments.output_root);
    if (run.atlases.empty() && run.sets.empty())
        throw CommandFailure("there is no atlas and no texture set below " + arguments.output_root);
    const std::int32_t max_side = arguments.max_side > 0 ? arguments.max_side : report::choose_max_side(run);
    const report::Page page = report::build_page(run, max_side);
    const std::int64_t size = report::write_page(page, arguments.page);

    std::cout << arguments.page << ": " << counted(run.atlases.size(), "atlas") << ", "
              << counted(run.sets.size(), "texture set") << ", " << megabytes(size) << ", pictures up to " << max_side
              << " texels a side\n"
              << std::flush;
    if (size > large_page_bytes)
        std::cerr << "kst: the page is large; a smaller --max-size than " << max_side << " makes it open faster"
                  << std::endl;
    for (const std::string& fault : page.faults)
        std::cerr << "kst: " << fault << std::endl;
    if (!page.faults.empty())
        throw CommandFailure(counted(page.faults.size(), "fault") + " in the outputs; the page shows the rest");
}

} // namespace

void add_atlas_report(CLI::App& atlas) {
    const auto arguments = std::make_shared<ReportArguments>();
    CLI::App* const command =
        atlas.add_subcommand("report", "Make one page, for a browser, of all atlases and texture sets of a run");
    command->add_option("OUTPUT_ROOT", arguments->output_root, "The folder that mosaicer wrote to")->required();
    command->add_option("-o,--output", arguments->page, "The page to write, FILE.html")->required();
    command
        ->add_option("--max-size", arguments->max_side,
                     "The longest side of a picture in the page, in texels; by default 2048, or less for a large run")
        ->check(CLI::Range(16, 65536));
    command->callback([arguments] { report_atlases(*arguments); });
}

} // namespace kst::tool
