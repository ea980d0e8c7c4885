#pragma once

#include "driver/records/AtlasSetDefinition.h"
#include "driver/records/Report.h"

#include <deque>
#include <initializer_list>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace mosaicer::testing_support {

/// Makes textures and keeps them; an entry is changed further by its fields.
class TextureShelf {
public:
    SetTextureEntry entry(std::int32_t width, std::int32_t height, const std::string& name = "t") {
        SourceTexture texture;
        texture.name = name;
        texture.image.file_path = "tex/" + name + ".png";
        texture.image.width = width;
        texture.image.height = height;
        textures_.push_back(texture);
        SetTextureEntry made;
        made.texture = &textures_.back();
        return made;
    }

    /// Named t0, t1 and so on.
    std::vector<SetTextureEntry> sized(std::initializer_list<std::pair<std::int32_t, std::int32_t>> sizes) {
        std::vector<SetTextureEntry> list;
        for (const auto& [width, height] : sizes)
            list.push_back(entry(width, height, std::string("t").append(std::to_string(list.size()))));
        return list;
    }

private:
    std::deque<SourceTexture> textures_;
};

/// The names of a list, separated by blanks.
inline std::string names(const std::vector<SetTextureEntry>& list) {
    std::string text;
    for (const SetTextureEntry& entry : list)
        text.append(text.empty() ? "" : " ").append(entry.texture->name);
    return text;
}

/// Collects one report channel while it lives.
class CapturedChannel {
public:
    explicit CapturedChannel(std::ostream*& channel) : channel_(channel), before_(channel) { channel_ = &text_; }
    ~CapturedChannel() { channel_ = before_; }
    CapturedChannel(const CapturedChannel&) = delete;
    CapturedChannel& operator=(const CapturedChannel&) = delete;

    std::string text() const { return text_.str(); }

private:
    std::ostringstream text_;
    std::ostream*& channel_;
    std::ostream* before_;
};

/// The text of the std::runtime_error that `call` throws; empty if it throws none.
template <class Call>
std::string thrown_text(Call&& call) {
    try {
        call();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return {};
}

} // namespace mosaicer::testing_support
