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

} // namespace kst::script
