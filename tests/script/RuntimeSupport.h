#pragma once

#include <string>
#include <utility>

#include "script/value/DSError.h"

namespace kst::script {

/// The text of the error that the action ends in.
template <typename Action>
std::string error_of(Action&& action) {
    try {
        std::forward<Action>(action)();
    } catch (const DSBaseError& error) {
        return error.what();
    }
    return "no error";
}

} // namespace kst::script
