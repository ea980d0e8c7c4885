#include "texture/OutputFile.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace mosaicer {

void OutputFile::Close::operator()(std::FILE* file) const {
    std::fclose(file);
}

OutputFile::OutputFile(std::string path)
    : path_(std::move(path)), file_(std::fopen(path_.c_str(), "wb")), opened_(file_ != nullptr), good_(opened_) {}

void OutputFile::write(const void* bytes, std::size_t count) {
    if (good_ && count > 0 && std::fwrite(bytes, 1, count, file_.get()) != count)
        good_ = false;
}

bool OutputFile::flush() {
    if (file_ != nullptr && std::fflush(file_.get()) != 0)
        good_ = false;
    return good_;
}

bool OutputFile::close() {
    if (file_ != nullptr && std::fclose(file_.release()) != 0)
        good_ = false;
    return good_;
}

void OutputFile::discard() {
    close();
    good_ = false;
    std::error_code ignored;
    // A device or pipe is no half-written file, and must not be removed.
    if (opened_ && std::filesystem::is_regular_file(path_, ignored))
        std::filesystem::remove(path_, ignored);
}

} // namespace mosaicer
