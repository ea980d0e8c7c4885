#pragma once

#include "script/language/Scanner.h"

#include <istream>
#include <string>
#include <utility>

namespace kst::script {

/// Reads a text stream. A line may end with LF, CR LF or LF CR; each reads as one line feed. A lone CR stays.
class StreamScanner : public Scanner {
public:
    /// The stream is not owned and must outlive the scanner.
    StreamScanner(std::istream& stream, std::string name) : stream_(stream), name_(std::move(name)) {}

    std::string name() const override { return name_; }

protected:
    int next_character() override;

private:
    bool take_partner(char partner);

    std::istream& stream_;
    std::string name_;
};

} // namespace kst::script
