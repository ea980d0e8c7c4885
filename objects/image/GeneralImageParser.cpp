#include "objects/image/GeneralImageParser.h"

#include "objects/image/ImageParserRegistry.h"
#include "source/utility/Errors.h"
#include "source/utility/filesystem/VirtualFileSystem.h"
#include "source/utility/image/CheckerTextureProducer.h"

namespace kst {

namespace {

/// Empty if no registered extension leads to a file.
std::string find_file(const std::string& bare_name, FileSystem* files) {
    for (const std::string& extension : image_parser_extensions()) {
        std::string path = bare_name + extension;
        if (files != nullptr ? files->exists(path) : kst::exists(path))
            return path;
    }
    return {};
}

std::unique_ptr<ImageParser> make_parser(const std::string& path) {
    if (path.empty())
        return std::make_unique<CheckerTextureProducer>();
    return find_image_parser(path.substr(path.size() - 4))(path);
}

} // namespace

void GeneralImageParser::open() {
    concrete_.reset();
    auto parser = make_parser(find_file(bare_name(), file_system()));
    parser->set_file_system(file_system());
    concrete_ = std::move(parser);
    concrete_->open();
}

void GeneralImageParser::close() {
    concrete().close();
}

ImageParser& GeneralImageParser::concrete() const {
    if (!concrete_)
        throw AssertionException("concrete", "objects/image/GeneralImageParser", __LINE__);
    return *concrete_;
}

} // namespace kst
