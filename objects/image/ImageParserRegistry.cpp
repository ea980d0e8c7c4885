#include "objects/image/ImageParserRegistry.h"

#include "source/utility/image/DDSImageParser.h"
#include "source/utility/image/MIPImageParser.h"
#include "source/utility/image/TargaImageParser.h"

#include <map>
#include <stdexcept>
#include <utility>
#include <vector>

namespace kst {

namespace {

struct Registry {
    std::map<std::string, ImageParserCreator> creators;
    std::vector<std::string> extensions;
};

Registry& registry() {
    static Registry the_registry;
    return the_registry;
}

template <class Parser>
std::unique_ptr<ImageParser> make_parser(std::string name) {
    return std::make_unique<Parser>(std::move(name));
}

} // namespace

void register_image_parser(const std::string& extension, ImageParserCreator creator) {
    if (extension.size() != 4 || extension[0] != '.')
        throw std::invalid_argument("An image parser's extension has four characters, unlike " + extension);
    if (registry().creators.emplace(extension, creator).second)
        registry().extensions.push_back(extension);
}

void register_standard_image_parsers() {
    register_image_parser(".tga", make_parser<TargaImageParser>);
    register_image_parser(".dds", make_parser<DDSImageParser>);
    register_image_parser(".mip", make_parser<MIPImageParser>);
}

std::span<const std::string> image_parser_extensions() {
    return registry().extensions;
}

ImageParserCreator find_image_parser(const std::string& extension) {
    const auto found = registry().creators.find(extension);
    return found != registry().creators.end() ? found->second : nullptr;
}

} // namespace kst
