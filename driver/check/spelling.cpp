#include "driver/check/spelling.h"

#include "source/utility/ascii.h"

#include <algorithm>

namespace mosaicer {
namespace {

std::size_t most_changes(std::size_t letters) {
    std::size_t changes = 3;
    if (letters <= 3)
        changes = 1;
    else if (letters <= 8)
        changes = 2;
    return std::min(changes, (letters - 1) / 2);
}

// Rows of the usual table: cell (i, j) is the distance between the first i letters of `a` and the first j of `b`. A
// swap looks two rows back. Once a whole row and the one ahead of it are beyond `most`, so is the end.
class DistanceTable {
public:
    std::size_t distance(std::string_view a, std::string_view b, std::size_t most) {
        const std::size_t longer = std::max(a.size(), b.size());
        if (longer - std::min(a.size(), b.size()) > most)
            return most + 1;
        for (auto* const row : {&before_, &above_, &row_})
            row->resize(b.size() + 1);
        for (std::size_t j = 0; j <= b.size(); ++j)
            row_[j] = j;
        std::size_t least_above = 0;
        for (std::size_t i = 1; i <= a.size(); ++i) {
            before_.swap(above_);
            above_.swap(row_);
            const std::size_t least = fill_row(a, b, i);
            if (least > most && least_above > most)
                return most + 1;
            least_above = least;
        }
        return std::min(row_[b.size()], most + 1);
    }

private:
    /// The least cell of the row.
    std::size_t fill_row(std::string_view a, std::string_view b, std::size_t i) {
        const char letter = kst::lower(a[i - 1]);
        std::size_t least = row_[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t change = letter == kst::lower(b[j - 1]) ? 0 : 1;
            row_[j] = std::min({above_[j] + 1, row_[j - 1] + 1, above_[j - 1] + change});
            if (i > 1 && j > 1 && letter == kst::lower(b[j - 2]) && kst::lower(a[i - 2]) == kst::lower(b[j - 1]))
                row_[j] = std::min(row_[j], before_[j - 2] + 1);
            least = std::min(least, row_[j]);
        }
        return least;
    }

    // Kept between words, as thousands are tried in a row.
    std::vector<std::size_t> before_;
    std::vector<std::size_t> above_;
    std::vector<std::size_t> row_;
};

} // namespace

std::size_t edit_distance(std::string_view a, std::string_view b, std::size_t most) {
    return DistanceTable().distance(a, b, most);
}

std::string_view nearest_word(std::string_view word, const std::vector<std::string_view>& candidates) {
    std::string_view nearest;
    if (word.empty())
        return nearest;
    DistanceTable table;
    // A word that differs in case alone is near at any length.
    std::size_t room = most_changes(word.size()) + 1;
    for (const std::string_view candidate : candidates) {
        if (room == 0)
            break;
        const std::size_t distance = table.distance(word, candidate, room - 1);
        if (distance >= room)
            continue;
        nearest = candidate;
        room = distance;
    }
    return nearest;
}

} // namespace mosaicer
