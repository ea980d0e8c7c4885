#pragma once

#include "objects/database/PersistentForm.h"
#include "source/utility/image/ImageParser.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace kst {

/// An image that engine data refer to by a bare name, without extension. `open` finds the file among the registered
/// extensions, and everything else is the concrete parser's. A name without a file is a checkered image.
///
/// In a stream it stands under the identifier of ImageParser, having none of its own. Its data, behind the object's
/// name: the bare name of the file and a zero byte.
class GeneralImageParser final : public Persistent<GeneralImageParser, PersistentObject>, public ImageParser {
    using Base = Persistent<GeneralImageParser, PersistentObject>;

public:
    static constexpr std::string_view class_name = "GeneralImageParser";
    static constexpr std::uint32_t class_type_id = ImageParser::class_type_id;

    explicit GeneralImageParser(std::string name = {}) : ImageParser(std::move(name)) {}

    bool is_a(std::uint32_t type_id) const override { return Base::is_a(type_id) || ImageParser::is_a(type_id); }
    std::uint32_t type_id() const override { return class_type_id; }

    /// Lets go of the parser of an earlier `open`, takes the first registered extension with which the file system
    /// knows the name, or else a CheckerTextureProducer, and opens it. Throws what the concrete parser's `open` does,
    /// and AssertionException when no file system is set and the process has none.
    void open() override;
    void close() override;

    // From the concrete parser. Until an `open` there is none: all but `file_name` throw AssertionException then.
    bool has_palette() const override { return concrete().has_palette(); }
    void get_format(ImageDescription& description) const override { concrete().get_format(description); }
    std::uint32_t mip_count() const override { return concrete().mip_count(); }
    std::uint32_t face_count() const override { return concrete().face_count(); }
    void set_face(std::uint32_t index) override { concrete().set_face(index); }
    void read(void* dest, std::uint32_t* palette, const ImageDescription& wanted) override {
        concrete().read(dest, palette, wanted);
    }
    /// The file that was found, the empty name for the checkered image; the bare name until an `open`.
    const std::string& file_name() const override { return concrete_ ? concrete_->file_name() : bare_name(); }

    const std::string& bare_name() const { return ImageParser::file_name(); }

    template <class Self, class Form>
    static void fields(Self& self, Form& form) {
        std::string path = self.bare_name();
        form.text("path", path);
        if constexpr (Form::loads)
            self.set_file_name(path);
    }

private:
    ImageParser& concrete() const;

    std::unique_ptr<ImageParser> concrete_;
};

} // namespace kst
