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

using Words = std::vector<std::string_view>;

template <class Enum>
Words keywords() {
    Words words;
    for (const auto& entry : KeywordTable<Enum>::entries)
        words.push_back(entry.word);
    return words;
}

template <class Table>
Words words_of(const Table& table) {
    Words words;
    for (const auto& row : table)
        words.push_back(row.word);
    return words;
}

Words booleans() {
    return {"true", "false"};
}

Words set_offsets() {
    return words_of(offset_words);
}

Words entry_offsets() {
    return words_of(std::span(offset_words).first(entry_offset_words));
}

Words templates() {
    return words_of(packing_templates);
}

Words rotations() {
    return {"0", "90", "180", "270"};
}

using Set = AtlasSetDefinition;
using Form = AttributeForm;
using Use = AttributeUse;

constexpr AttributeValues removal_values{
    "Which texture leaves an atlas that overflows or stays below min_usage. The strategies are asked in their order. "
    "They are added behind the inherited ones; on an element with autopacking_template the first takes their place.",
    keywords<RemovalKind>};

constexpr AttributeValues further_root_values{
    "A further textures root. Relative to the root in force in its slot, or to the one of the command line."};

constexpr std::array set_attribute_table{
    SetAttribute{"name",
                 Form::text,
                 read_name,
                 {"Joined to the name of the element above by a slash. The full name of a set is its folder below the "
                  "output root."}},
    SetAttribute{"width",
                 Form::integer,
                 read_member<&Set::width>,
                 {"Width of the atlas surface in texels, before drop_mips.", nullptr, 1},
                 Use::atlases},
    SetAttribute{"height",
                 Form::integer,
                 read_member<&Set::height>,
                 {"Height of the atlas surface in texels, before drop_mips.", nullptr, 1},
                 Use::atlases},
    SetAttribute{"nr_mips",
                 Form::integer,
                 read_member<&Set::nr_mips>,
                 {"Mip levels of the output; 0 means all. TGA, PNG and BMP files hold level 0 alone.", nullptr, 0}},
    SetAttribute{"texel_format",
                 Form::keyword,
                 read_member<&Set::texel_format>,
                 {"Format of the texels that are written. TGA, PNG and BMP files hold AF_A8R8G8B8 alone; the DXT "
                  "formats need sides that are 1, 2 or a multiple of 4.",
                  keywords<TexelFormat>}},
    SetAttribute{"autofill",
                 Form::directory,
                 read_member<&Set::autofill>,
                 {"Every texture below this directory of a textures root joins the set. The atlas may then become "
                  "several. An empty value ends an inherited one."}},
    SetAttribute{"file_format",
                 Form::keyword,
                 read_member<&Set::file_format>,
                 {"Kind of image file that is written.", keywords<TextureFileFormat>}},
    SetAttribute{"halftexel_offsets",
                 Form::word,
                 read_set_offset,
                 {"How far the rectangles of the database are pulled in: false 0 texels, true 0.5, then 1, 2 and 3.",
                  set_offsets},
                 Use::atlases},
    SetAttribute{"pad_texels_u",
                 Form::integer,
                 read_member<&Set::pad_texels_u>,
                 {"Texels of padding left and right of each texture, filled by repeating its edge.", nullptr, 0},
                 Use::atlases},
    SetAttribute{"pad_texels_v",
                 Form::integer,
                 read_member<&Set::pad_texels_v>,
                 {"Texels of padding above and below each texture, filled by repeating its edge.", nullptr, 0},
                 Use::atlases},
    SetAttribute{
        "allow_autoload", Form::boolean, read_member<&Set::allow_autoload>, {"Copied into the databases.", booleans}},
    SetAttribute{
        "mip_filter",
        Form::keyword,
        read_member<&Set::mip_filter>,
        {"How the mip levels are made. KEEP takes those of a DDS file that has them all.", keywords<MipFilter>}},
    SetAttribute{template_attribute,
                 Form::word,
                 apply_template,
                 {"Presets for packing, which the attributes behind it can change one by one.", templates},
                 Use::split_atlases},
    SetAttribute{
        "min_usage",
        Form::decimal,
        read_member<&Set::min_usage>,
        {"Least share of an atlas that must be used. An atlas that stays below it gives up textures to the next.",
         nullptr, 0, 1},
        Use::split_atlases},
    SetAttribute{"precook_strat",
                 Form::keyword,
                 read_member<&Set::precook_strat>,
                 {"MAJOR_UDIM turns tall textures by 90 degrees, MAJOR_VDIM wide ones.", keywords<PrecookStrategy>},
                 Use::split_atlases},
    SetAttribute{"packing_order_strat",
                 Form::keyword,
                 read_member<&Set::packing_order_strat>,
                 {"Order in which textures are placed: by area, width or height. BY_PRECOOK follows precook_strat, "
                  "which must then turn textures.",
                  keywords<PackingOrder>},
                 Use::split_atlases},
    SetAttribute{"insertion_strat",
                 Form::keyword,
                 read_member<&Set::insertion_strat>,
                 {"How a free place is looked for: at every texel or in steps of the smallest texture, over the whole "
                  "surface or from the top left corner outwards.",
                  keywords<InsertionStrategy>},
                 Use::split_atlases},
    SetAttribute{"removal_strat0", Form::keyword, add_removal_strategy, removal_values, Use::split_atlases},
    SetAttribute{"removal_strat1", Form::keyword, add_removal_strategy, removal_values, Use::split_atlases},
    SetAttribute{"removal_strat2", Form::keyword, add_removal_strategy, removal_values, Use::split_atlases},
    SetAttribute{"removal_strat3", Form::keyword, add_removal_strategy, removal_values, Use::split_atlases},
    SetAttribute{"removal_strat4", Form::keyword, add_removal_strategy, removal_values, Use::split_atlases},
    SetAttribute{"textures_root",
                 Form::directory,
                 read_textures_root,
                 {"Where textures are looked for from here on. Relative to the root in force."},
                 Use::every_set,
                 0},
    SetAttribute{"textures_root1", Form::directory, read_textures_root, further_root_values, Use::every_set, 1},
    SetAttribute{"textures_root2", Form::directory, read_textures_root, further_root_values, Use::every_set, 2},
    SetAttribute{"textures_root3", Form::directory, read_textures_root, further_root_values, Use::every_set, 3},
    SetAttribute{"textures_root4", Form::directory, read_textures_root, further_root_values, Use::every_set, 4},
    SetAttribute{"textures_root5", Form::directory, read_textures_root, further_root_values, Use::every_set, 5},
    SetAttribute{"textures_root6", Form::directory, read_textures_root, further_root_values, Use::every_set, 6},
    SetAttribute{"textures_root7", Form::directory, read_textures_root, further_root_values, Use::every_set, 7},
    SetAttribute{"textures_root8", Form::directory, read_textures_root, further_root_values, Use::every_set, 8},
    SetAttribute{"textures_root9", Form::directory, read_textures_root, further_root_values, Use::every_set, 9},
    SetAttribute{
        "category", Form::text, read_member<&Set::category>, {"Handed to the textures and copied into the databases."}},
    SetAttribute{"drop_mips",
                 Form::integer,
                 read_member<&Set::drop_mips>,
                 {"Top mip levels to leave out: the surface and the textures are halved as often.", nullptr, 0, 30}},
    SetAttribute{"autosplit",
                 Form::boolean,
                 read_member<&Set::autosplit>,
                 {"The set may become several atlases, in the folders atlas0, atlas1, ... below its own.", booleans},
                 Use::atlases},
};

/// An empty category means the set's, which the entry starts from.
void read_entry_category(const kst::XMLNode& node, const EntryAttribute& attribute, SetTextureEntry& entry) {
    std::string given;
    if (kst::read_parameter(node, attribute.name, given) && !given.empty())
        entry.category = given;
}

using Entry = SetTextureEntry;

constexpr std::array entry_attribute_table{
    EntryAttribute{"width",
                   Form::integer,
                   read_entry_member<&Entry::width>,
                   {"Forced width: that of one of the mip levels, together with the height.", nullptr, -1}},
    EntryAttribute{"height",
                   Form::integer,
                   read_entry_member<&Entry::height>,
                   {"Forced height: that of one of the mip levels, together with the width.", nullptr, -1}},
    EntryAttribute{"pad_texels_u",
                   Form::integer,
                   read_entry_member<&Entry::pad_texels_u>,
                   {"In place of the padding of the set.", nullptr, 0},
                   Use::atlases},
    EntryAttribute{"pad_texels_v",
                   Form::integer,
                   read_entry_member<&Entry::pad_texels_v>,
                   {"In place of the padding of the set.", nullptr, 0},
                   Use::atlases},
    EntryAttribute{"rotation",
                   Form::integer,
                   read_entry_member<&Entry::rotation>,
                   {"Degrees by which the texture is turned clockwise.", rotations},
                   Use::atlases},
    EntryAttribute{"category", Form::text, read_entry_category, {"In place of the category of the set."}},
    EntryAttribute{"rename_to",
                   Form::text,
                   read_entry_member<&Entry::rename_to>,
                   {"The name in the database and, in a texture set, of the file."}},
    EntryAttribute{"halftexel_offsets",
                   Form::word,
                   read_entry_offset,
                   {"In place of the offset of the set: false 0 texels, true 0.5, onetexel_offsets 1.", entry_offsets},
                   Use::atlases},
    EntryAttribute{"mip_filter",
                   Form::keyword,
                   read_entry_member<&Entry::mip_filter>,
                   {"In place of the filter of the set.", keywords<MipFilter>}},
};

/// In the order of the reader.
constexpr std::array resolved_entry_attribute_table{
    EntryAttribute{
        "name", Form::text, nullptr, {"The texture, by its file name without directory and extension, in any case."}},
    EntryAttribute{"used_by",
                   Form::integers,
                   nullptr,
                   {"Numbers of the groups that use the texture, separated by single blanks. "
                    "SMALLEST_FROM_SMALLEST_GROUP counts them."}},
};

} // namespace

std::span<const SetAttribute> set_attributes() {
    return set_attribute_table;
}

std::span<const EntryAttribute> entry_attributes() {
    return entry_attribute_table;
}

std::span<const EntryAttribute> resolved_entry_attributes() {
    return resolved_entry_attribute_table;
}

AtlasSetDefinition read_set_attributes(const AtlasSetDefinition& parent, const kst::XMLNode& node,
                                       TextureIndex& index) {
    return read_set_attributes(parent, node, index, [](const SetAttribute&, const std::runtime_error&) { throw; });
}

AtlasSetDefinition
read_set_attributes(const AtlasSetDefinition& parent, const kst::XMLNode& node, TextureIndex& index,
                    const std::function<void(const SetAttribute&, const std::runtime_error&)>& failed) {
    AtlasSetDefinition set = parent;
    ElementReading reading{node, parent, index, set};
    for (const SetAttribute& attribute : set_attribute_table) {
        try {
            attribute.read(reading, attribute);
        } catch (const std::runtime_error& failure) {
            failed(attribute, failure);
        }
    }
    // The root passes here too, so every element below it inherits at least this one.
    if (set.removal_strats.empty())
        set.removal_strats = {RemovalKind::BIGGEST};
    return set;
}

} // namespace mosaicer
