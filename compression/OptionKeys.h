#pragma once

#include "compression/CompressionOptions.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <variant>

namespace compression {

/// What the library does with an option.
enum class OptionUse {
    used,    ///< carried out
    idle,    ///< read by nothing while its switch is off, or only by formats that are not written
    refused, ///< a switch to something that the library does not do: any value but the default is refused
};

/// The field of the record that a key names.
using OptionField =
    std::variant<std::int32_t CompressionOptions::*, float CompressionOptions::*, bool CompressionOptions::*>;

struct OptionKey {
    std::string_view name;
    OptionField field;
    OptionUse use;
};

/// Every key of a profile, in the order of the record.
std::span<const OptionKey> option_keys();

/// False if a switch of `OptionUse::refused` is away from its default.
bool options_are_supported(const CompressionOptions& options);

} // namespace compression
