#include "texture/OutputFile.h"
#include "tools/kst/report/Page.h"
#include "tools/kst/report/page_files.h"

#include <array>
#include <set>
#include <span>
#include <stdexcept>
#include <string_view>

namespace kst::tool::report {
namespace {

std::string base64(std::span<const std::uint8_t> bytes) {
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(bytes.size() - i, 3);
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k)
            group = group << 8 | (k < count ? bytes[i + k] : 0u);
        for (std::size_t k = 0; k < 4; ++k)
            text += k <= count ? digits[group >> (18 - 6 * k) & 63] : '=';
    }
    return text;
}

class Writer {
public:
    Writer(const Page& page, const std::string& path) : page_(&page), file_(path) {}

    std::int64_t write() {
        std::string_view rest = page_html;
        while (!rest.empty()) {
            const std::size_t begin = std::min(rest.find("{{"), rest.size());
            put(rest.substr(0, begin));
            rest.remove_prefix(begin);
            if (rest.empty())
                break;
            const std::size_t end = rest.find("}}");
            put_part(rest.substr(2, end - 2));
            rest.remove_prefix(end + 2);
        }
        if (!file_.close()) {
            file_.discard();
            return -1;
        }
        return size_;
    }

private:
    void put(std::string_view text) {
        file_.write(text);
        size_ += static_cast<std::int64_t>(text.size());
    }

    void put_part(std::string_view name) {
        if (name == "css")
            put(page_css);
        else if (name == "js")
            put(page_js);
        else if (name == "run")
            put(page_->run_json);
        else
            put_pictures(/*thumbnails=*/name == "thumbnails");
    }

    /// Thumbnails stand ahead of the script and the other pictures behind it: so the gallery is there while a large page
    /// still loads.
    void put_pictures(bool thumbnails) {
        const std::set<std::size_t> small(page_->thumbnails.begin(), page_->thumbnails.end());
        for (std::size_t i = 0; i < page_->pictures.size(); ++i) {
            if (small.contains(i) != thumbnails)
                continue;
            put_channel('c', i, page_->pictures[i].colour_png);
            if (!page_->pictures[i].alpha_png.empty())
                put_channel('a', i, page_->pictures[i].alpha_png);
        }
    }

    void put_channel(char channel, std::size_t index, std::span<const std::uint8_t> png) {
        put("<script type=\"text/plain\" id=\"" + std::string(1, channel) + std::to_string(index) + "\">");
        put(base64(png));
        put("</script>\n");
    }

    const Page* page_;
    mosaicer::OutputFile file_;
    std::int64_t size_ = 0;
};

} // namespace

std::int64_t write_page(const Page& page, const std::string& path) {
    const std::int64_t size = Writer(page, path).write();
    if (size < 0)
        throw std::runtime_error("cannot write " + path);
    return size;
}

} // namespace kst::tool::report
