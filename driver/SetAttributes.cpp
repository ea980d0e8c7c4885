#include "driver/SetAttributes.h"

#include "driver/TextureIndex.h"
#include "driver/records/PathText.h"
#include "source/utility/filesystem/find_host_path.h"
#include "source/utility/xml/XmlParameters.h"

#include <algorithm>
#include <array>
#include <type_traits>

namespace mosaicer {
namespace {

/// Reads one attribute into `target` by the target's type. An absent attribute, and an empty keyword, leave it alone.
template <class Target>
void read_value(const kst::XMLNode& node, std::string_view name, Target& target) {
    if constexpr (std::is_enum_v<Target>) {
        std::string word;
        if (kst::read_parameter(node, name, word) && !word.empty())
            target = parse_keyword<Target>(word);
    } else {
        kst::read_parameter(node, name, target);
    }
}

template <auto Member>
void read_member(ElementReading& reading, const SetAttribute& attribute) {
    read_value(reading.node, attribute.name, reading.set.*Member);
}

template <auto Member>
void read_entry_member(const kst::XMLNode& node, const EntryAttribute& attribute, SetTextureEntry& entry) {
    read_value(node, attribute.name, entry.*Member);
}

void read_name(ElementReading& reading, const SetAttribute& attribute) {
    std::string own;
    kst::read_parameter(reading.node, attribute.name, own);
    reading.set.name = reading.parent.name.empty() ? own : reading.parent.name + "/" + own;
}

struct OffsetWord {
    std::string_view word;
    float texels;
};

/// An entry knows the first three, a set all of them.
constexpr std::array offset_words{OffsetWord{"false", 0.0f}, OffsetWord{"true", 0.5f},
                                  OffsetWord{"onetexel_offsets", 1.0f}, OffsetWord{"twotexel_offsets", 2.0f},
                                  OffsetWord{"threetexel_offsets", 3.0f}};
constexpr std::size_t entry_offset_words = 3;

void read_offset(const kst::XMLNode& node, std::string_view name, std::span<const OffsetWord> words, float& offset) {
    std::string given;
    kst::read_parameter(node, name, given);
    for (const OffsetWord& candidate : words)
        if (candidate.word == given)
            offset = candidate.texels;
}

void read_set_offset(ElementReading& reading, const SetAttribute& attribute) {
    read_offset(reading.node, attribute.name, offset_words, reading.set.texel_offset);
}

void read_entry_offset(const kst::XMLNode& node, const EntryAttribute& attribute, SetTextureEntry& entry) {
    read_offset(node, attribute.name, std::span(offset_words).first(entry_offset_words), entry.texel_offset);
}

constexpr std::string_view template_attribute = "autopacking_template";

struct PackingTemplate {
    std::string_view word;
    PrecookStrategy precook;
    PackingOrder order;
    InsertionStrategy insertion;
    std::array<RemovalKind, 2> removal;
    std::size_t removal_count;
    float min_usage;
    bool forbids_alternative_insertion;
};

constexpr std::array packing_templates{
    PackingTemplate{"lightmaps",
                    PrecookStrategy::NO_PRECOOKING,
                    PackingOrder::DESC_UDIM_ASC_VDIM,
                    InsertionStrategy::SMALL_STEP,
                    {RemovalKind::FURTHEST},
                    1,
                    0.0f,
                    true},
    PackingTemplate{"mission_specific",
                    PrecookStrategy::MAJOR_UDIM,
                    PackingOrder::BY_PRECOOK,
                    InsertionStrategy::PIXEL_STEP,
                    {RemovalKind::TILING, RemovalKind::SMALLEST_FROM_SMALLEST_GROUP},
                    2,
                    0.75f,
                    false},
    PackingTemplate{"silhouettes",
                    PrecookStrategy::MAJOR_UDIM,
                    PackingOrder::BY_PRECOOK,
                    InsertionStrategy::PIXEL_STEP,
                    {RemovalKind::BIGGEST},
                    1,
                    0.75f,
                    false},
};

void apply_template(ElementReading& reading, const SetAttribute& attribute) {
    std::string word;
    kst::read_parameter(reading.node, attribute.name, word);
    for (const PackingTemplate& preset : packing_templates) {
        if (preset.word != word)
            continue;
        AtlasSetDefinition& set = reading.set;
        set.precook_strat = preset.precook;
        set.packing_order_strat = preset.order;
        set.insertion_strat = preset.insertion;
        set.removal_strats.insert(set.removal_strats.end(), preset.removal.begin(),
                                  preset.removal.begin() + static_cast<std::ptrdiff_t>(preset.removal_count));
        set.min_usage = preset.min_usage;
        if (preset.forbids_alternative_insertion)
            set.try_alternative_insertion = false;
    }
}

/// On an element with a template the first strategy named replaces the list, inherited ones included; without one each
/// is added behind what is there.
void add_removal_strategy(ElementReading& reading, const SetAttribute& attribute) {
    std::string word;
    kst::read_parameter(reading.node, attribute.name, word);
    if (word.empty())
        return;
    std::string given_template;
    kst::read_parameter(reading.node, template_attribute, given_template);
    if (!given_template.empty() && !reading.removal_list_cleared) {
        reading.set.removal_strats.clear();
        reading.removal_list_cleared = true;
    }
    reading.set.removal_strats.push_back(parse_keyword<RemovalKind>(word));
}

/// Relative to the root in force in the slot, so a nested attribute goes deeper. Found in whatever case it has on disk.
void read_textures_root(ElementReading& reading, const SetAttribute& attribute) {
    std::string value;
    kst::read_parameter(reading.node, attribute.name, value);
    if (value.empty())
        return;
    const auto slot = static_cast<std::size_t>(attribute.number);
    const std::string& current = reading.index.roots()[slot];
    const std::string& base = current.empty() ? reading.index.base_root() : current;
    reading.index.set_root(slot, kst::find_host_path(join_path(base, value)));
}

using Set = AtlasSetDefinition;
using Form = AttributeForm;

constexpr std::array set_attribute_table{
    SetAttribute{"name", Form::text, read_name},
    SetAttribute{"width", Form::integer, read_member<&Set::width>},
    SetAttribute{"height", Form::integer, read_member<&Set::height>},
    SetAttribute{"nr_mips", Form::integer, read_member<&Set::nr_mips>},
    SetAttribute{"texel_format", Form::keyword, read_member<&Set::texel_format>},
    SetAttribute{"autofill", Form::directory, read_member<&Set::autofill>},
    SetAttribute{"file_format", Form::keyword, read_member<&Set::file_format>},
    SetAttribute{"halftexel_offsets", Form::offset_word, read_set_offset},
    SetAttribute{"pad_texels_u", Form::integer, read_member<&Set::pad_texels_u>},
    SetAttribute{"pad_texels_v", Form::integer, read_member<&Set::pad_texels_v>},
    SetAttribute{"allow_autoload", Form::boolean, read_member<&Set::allow_autoload>},
    SetAttribute{"mip_filter", Form::keyword, read_member<&Set::mip_filter>},
    SetAttribute{template_attribute, Form::template_word, apply_template},
    SetAttribute{"min_usage", Form::decimal, read_member<&Set::min_usage>},
    SetAttribute{"precook_strat", Form::keyword, read_member<&Set::precook_strat>},
    SetAttribute{"packing_order_strat", Form::keyword, read_member<&Set::packing_order_strat>},
    SetAttribute{"insertion_strat", Form::keyword, read_member<&Set::insertion_strat>},
    SetAttribute{"removal_strat0", Form::keyword, add_removal_strategy},
    SetAttribute{"removal_strat1", Form::keyword, add_removal_strategy},
    SetAttribute{"removal_strat2", Form::keyword, add_removal_strategy},
    SetAttribute{"removal_strat3", Form::keyword, add_removal_strategy},
    SetAttribute{"removal_strat4", Form::keyword, add_removal_strategy},
    SetAttribute{"textures_root", Form::directory, read_textures_root, 0},
    SetAttribute{"textures_root1", Form::directory, read_textures_root, 1},
    SetAttribute{"textures_root2", Form::directory, read_textures_root, 2},
    SetAttribute{"textures_root3", Form::directory, read_textures_root, 3},
    SetAttribute{"textures_root4", Form::directory, read_textures_root, 4},
    SetAttribute{"textures_root5", Form::directory, read_textures_root, 5},
    SetAttribute{"textures_root6", Form::directory, read_textures_root, 6},
    SetAttribute{"textures_root7", Form::directory, read_textures_root, 7},
    SetAttribute{"textures_root8", Form::directory, read_textures_root, 8},
    SetAttribute{"textures_root9", Form::directory, read_textures_root, 9},
    SetAttribute{"category", Form::text, read_member<&Set::category>},
    SetAttribute{"drop_mips", Form::integer, read_member<&Set::drop_mips>},
    SetAttribute{"autosplit", Form::boolean, read_member<&Set::autosplit>},
};

/// An empty category means the set's, which the entry starts from.
void read_entry_category(const kst::XMLNode& node, const EntryAttribute& attribute, SetTextureEntry& entry) {
    std::string given;
    if (kst::read_parameter(node, attribute.name, given) && !given.empty())
        entry.category = given;
}

using Entry = SetTextureEntry;

constexpr std::array entry_attribute_table{
    EntryAttribute{"width", Form::integer, read_entry_member<&Entry::width>},
    EntryAttribute{"height", Form::integer, read_entry_member<&Entry::height>},
    EntryAttribute{"pad_texels_u", Form::integer, read_entry_member<&Entry::pad_texels_u>},
    EntryAttribute{"pad_texels_v", Form::integer, read_entry_member<&Entry::pad_texels_v>},
    EntryAttribute{"rotation", Form::integer, read_entry_member<&Entry::rotation>},
    EntryAttribute{"category", Form::text, read_entry_category},
    EntryAttribute{"rename_to", Form::text, read_entry_member<&Entry::rename_to>},
    EntryAttribute{"halftexel_offsets", Form::offset_word, read_entry_offset},
    EntryAttribute{"mip_filter", Form::keyword, read_entry_member<&Entry::mip_filter>},
};

} // namespace

std::span<const SetAttribute> set_attributes() {
    return set_attribute_table;
}

std::span<const EntryAttribute> entry_attributes() {
    return entry_attribute_table;
}

AtlasSetDefinition read_set_attributes(const AtlasSetDefinition& parent, const kst::XMLNode& node,
                                       TextureIndex& index) {
    AtlasSetDefinition set = parent;
    ElementReading reading{node, parent, index, set};
    for (const SetAttribute& attribute : set_attribute_table)
        attribute.read(reading, attribute);
    // The root passes here too, so every element below it inherits at least this one.
    if (set.removal_strats.empty())
        set.removal_strats = {RemovalKind::BIGGEST};
    return set;
}

} // namespace mosaicer
