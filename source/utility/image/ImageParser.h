#pragma once

#include "source/utility/Archive.h"
#include "source/utility/Errors.h"
#include "source/utility/filesystem/FileSystem.h"
#include "source/utility/image/ImageProducer.h"

#include <string>
#include <utility>

namespace kst {

/// A file that a parser cannot make sense of. The text is the file's name, ": " and the message.
class ImageParserException : public ErrorWithCStack {
public:
    ImageParserException(const std::string& file_name, const std::string& message)
        : ErrorWithCStack(file_name + ": " + message) {}
};

/// An image producer that reads a file.
class ImageParser : public ImageProducer {
public:
    static constexpr std::uint32_t class_type_id = 0x2CB20689;

    explicit ImageParser(std::string name) : name_(std::move(name)) {}

    bool is_a(std::uint32_t type_id) const override { return type_id == class_type_id || ImageProducer::is_a(type_id); }
    std::uint32_t type_id() const override { return class_type_id; }

    /// The name that it was made with.
    virtual const std::string& file_name() const { return name_; }

    void set_file_name(std::string name) { name_ = std::move(name); }
    /// Where the file is opened; null, the default, for the process's VirtualFileSystem. Not owned.
    void set_file_system(FileSystem* file_system) { file_system_ = file_system; }

protected:
    /// Throws ErrorWithCStack "Image parser cannot open NAME." for a missing file, and AssertionException when no file
    /// system is set and the process has none.
    Archive open_file() const;
    /// As it was set; null for the process's.
    FileSystem* file_system() const { return file_system_; }

private:
    std::string name_;
    FileSystem* file_system_ = nullptr;
};

} // namespace kst
