#pragma once

#include <stdexcept>

namespace kst::script {

/// The root of all errors of the script layer. The text is complete as it stands.
class DSBaseError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A wrong use of a value, or a fault found while a program runs; it does not know its place in the code.
class DSError : public DSBaseError {
public:
    using DSBaseError::DSBaseError;
};

/// A member that must exist does not.
class MemberNotFoundError : public DSError {
public:
    using DSError::DSError;
};

/// Runs native code on behalf of a script. A std::runtime_error that leaves it, a failure of the engine, is for the
/// script a DSError of the same text, at the place of the script.
template <typename Action>
auto with_script_errors(const Action& action) {
    try {
        return action();
    } catch (const DSBaseError&) {
        throw;
    } catch (const std::runtime_error& error) {
        throw DSError(error.what());
    }
}

} // namespace kst::script
