#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace mosaicer {

/// A file being written, emptied when it is opened. A failure is kept and shown by good(), as in a stream.
///
/// A file whose writing failed would look complete to the next tool in the line, so the caller drops it by `discard`.
/// Left alone, the file is closed with its holder and stays as far as it was written.
class OutputFile {
public:
    /// Opens for binary writing. A failed open shows in good(); a file that was there before is then untouched.
    explicit OutputFile(std::string path);

    void write(const void* bytes, std::size_t count);
    void write(std::string_view text) { write(text.data(), text.size()); }

    /// False after any failure: opening, writing, seeking or closing.
    bool good() const { return good_; }

    /// Hands what is buffered to the system. Returns good().
    bool flush();

    /// Flushes and closes: only now is a full disk sure to have shown. Returns good().
    bool close();

    /// Closes, and removes what was written, if it was opened and is an ordinary file.
    void discard();

    /// For libraries that write through a handle of their own. Null after a failed open and after close.
    std::FILE* handle() { return file_.get(); }
    /// Notes a failure that a library saw on the handle.
    void fail() { good_ = false; }

private:
    struct Close {
        void operator()(std::FILE* file) const;
    };

    std::string path_;
    std::unique_ptr<std::FILE, Close> file_;
    bool opened_;
    bool good_;
};

} // namespace mosaicer
