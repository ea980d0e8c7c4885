#include "driver/records/Report.h"
#include "packing/AtlasSurface.h"
#include "packing/InsertionStrategies.h"
#include "packing/PackingOrders.h"

namespace mosaicer {

namespace {

/// Writes a star when a tenth of the work is reached. A short list skips tenths, a long one meets each of them once.
class TenthStars {
public:
    explicit TenthStars(std::size_t total) : total_(total) {}

    void at(std::size_t index) {
        const std::size_t percent = index * 100 / total_;
        if (percent % 10 != 0 || percent == last_written_)
            return;
        *Report.debug << "*";
        last_written_ = percent;
    }

private:
    std::size_t total_;
    std::size_t last_written_ = 100; // never reached: the index stays below the total
};

} // namespace

bool AtlasSurface::generate_atlas(std::span<const SetTextureEntry> textures, float min_usage,
                                  PackingOrder packing_order, InsertionStrategy insertion_strategy,
                                  bool try_alternative_insertion) {
    reset();
    const auto sorted = in_packing_order(textures, packing_order);
    if (attempt(sorted, min_usage, insertion_strategy))
        return true;
    if (try_alternative_insertion) {
        *Report.debug << ", trying alternative insertion strategy" << std::endl;
        if (attempt(sorted, min_usage, insertion_strategy_info(insertion_strategy).alternative))
            return true;
    }
    reset();
    *Report.debug << std::endl;
    return false;
}

/// One line on `Report.debug`; a failure leaves it open for what the caller does next.
bool AtlasSurface::attempt(std::span<const SetTextureEntry* const> sorted, float min_usage,
                           InsertionStrategy strategy) {
    reset();
    const InsertionStrategyInfo& info = insertion_strategy_info(strategy);
    *Report.debug << "Performing inserts (" << sorted.size() << ")... ";
    TenthStars stars(sorted.size());
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        stars.at(i);
        if (!insert(*sorted[i], info.pixel_step, info.expanding_square)) {
            *Report.debug << " failure completing inserts";
            return false;
        }
    }
    if (min_usage > 0.0f) {
        const float reached = usage();
        if (reached < min_usage) {
            *Report.debug << " failure (did not reach " << min_usage << " usage, only " << reached << ")";
            return false;
        }
    }
    *Report.debug << " success" << std::endl;
    return true;
}

} // namespace mosaicer
