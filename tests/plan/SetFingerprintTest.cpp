#include "driver/plan/set_fingerprint.h"

#include "driver/SetAttributes.h"
#include "driver/TextureIndex.h"
#include "source/utility/xml/XMLDocument.h"

#include <gtest/gtest.h>

#include <map>

namespace mosaicer {
namespace {

/// A value other than the default one for each attribute.
const std::map<std::string_view, std::string> words{
    {"texel_format", "AF_DXT1"},          {"file_format", "PNG"},
    {"halftexel_offsets", "false"},       {"mip_filter", "BOX"},
    {"precook_strat", "MAJOR_UDIM"},      {"packing_order_strat", "DESC_UDIM_ASC_VDIM"},
    {"insertion_strat", "SMALL_STEP"},    {"removal_strat0", "SMALLEST"},
    {"removal_strat1", "SMALLEST"},       {"removal_strat2", "SMALLEST"},
    {"removal_strat3", "SMALLEST"},       {"removal_strat4", "SMALLEST"},
    {"allow_autoload", "false"},          {"autosplit", "true"},
    {"autopacking_template", "lightmaps"}};

std::string other_value(std::string_view attribute) {
    const auto word = words.find(attribute);
    return word == words.end() ? "7" : word->second;
}

kst::XMLNode element(const std::string& attributes) {
    kst::XMLDocument document;
    document.parse_string("<atlas " + attributes + "/>");
    return document;
}

std::uint64_t fingerprint_with(const std::string& attributes) {
    TextureIndex index("tex/");
    return set_fingerprint(read_set_attributes(AtlasSetDefinition{}, element(attributes), index));
}

TEST(SetFingerprint, tells_every_attribute_of_a_set) {
    for (const SetAttribute& attribute : set_attributes()) {
        if (attribute.name.starts_with("textures_root"))
            continue; // shows in the paths of the textures
        const std::string text = std::string(attribute.name) + "='" + other_value(attribute.name) + "'";
        EXPECT_NE(fingerprint_with(text), fingerprint_with("")) << text;
    }
}

TEST(SetFingerprint, tells_every_attribute_of_an_entry_and_every_mark_of_its_texture) {
    SourceTexture texture;
    AtlasSetDefinition set;
    set.textures.resize(1);
    set.textures[0].texture = &texture;
    const std::uint64_t plain = set_fingerprint(set);
    EXPECT_EQ(set_fingerprint(set), plain);
    for (const EntryAttribute& attribute : entry_attributes()) {
        AtlasSetDefinition changed = set;
        const std::string text = std::string(attribute.name) + "='" + other_value(attribute.name) + "'";
        attribute.read(element(text), attribute, changed.textures[0]);
        EXPECT_NE(set_fingerprint(changed), plain) << attribute.name;
    }
    texture.used_by = {3};
    EXPECT_NE(set_fingerprint(set), plain);
    texture.used_by.clear();
    texture.image.file_path = "tex/b.png";
    EXPECT_NE(set_fingerprint(set), plain);
}

} // namespace
} // namespace mosaicer
