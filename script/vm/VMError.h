#pragma once

#include <cstdint>
#include <string>

#include "script/value/DSError.h"

namespace kst::script {

/// A DSError that has met the run it happened in: the same text, and where in the code it was.
class VMError : public DSBaseError {
public:
    VMError(const std::string& text, const std::uint8_t* instruction) : DSBaseError(text), instruction_(instruction) {}

    /// The failing instruction, in the innermost program. To be looked up, not to be read: the code may be gone.
    const std::uint8_t* instruction() const { return instruction_; }

private:
    const std::uint8_t* instruction_;
};

} // namespace kst::script
