#pragma once

#include "source/utility/image/ImageParser.h"

#include <memory>
#include <span>
#include <string>

namespace kst {

using ImageParserCreator = std::unique_ptr<ImageParser> (*)(std::string name);

// The process's image parsers by extension, for GeneralImageParser. Registered at start-up; no lock.

/// An extension has four characters, the dot first, as in ".tga"; another one throws std::invalid_argument. One that is
/// already there keeps its first function.
void register_image_parser(const std::string& extension, ImageParserCreator creator);
/// ".tga", ".dds" and ".mip", in this order.
void register_standard_image_parsers();

/// In the order of registration.
std::span<const std::string> image_parser_extensions();
/// Null for an unknown extension.
ImageParserCreator find_image_parser(const std::string& extension);

} // namespace kst
