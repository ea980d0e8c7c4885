#pragma once

#include "script/language/Scanner.h"
#include "script/runtime/ScriptRTE.h"
#include "source/utility/Archive.h"

#include <cstddef>
#include <string>

namespace kst::script {

/// Reads source text from an archive, line by line; each line ends in one line feed, whatever it ended in.
class ScriptRTE::ArchiveScanner final : public Scanner {
public:
    ArchiveScanner(Archive archive, std::string name) : archive_(std::move(archive)), name_(std::move(name)) {}

    std::string name() const override { return name_; }

protected:
    int next_character() override;

private:
    Archive archive_;
    std::string name_;
    std::string line_text_;
    std::size_t next_ = 0;
};

} // namespace kst::script
