#include "script/vm/DecodedCode.h"

#include <algorithm>

#include "script/value/DSError.h"

namespace kst::script {

namespace {

bool is_branch(Opcode opcode) {
    return opcode >= Opcode::bra && opcode <= Opcode::brifn;
}
bool is_reference(Opcode opcode) {
    return opcode == Opcode::push_global_ref || opcode == Opcode::push_member_ref || opcode == Opcode::push_local_ref;
}

class Decoder {
public:
    Decoder(std::span<const std::uint8_t> code, DecodedCode& result)
        : code_(code), result_(result), items_(result.items) {}

    void run() {
        decode();
        mark_targets();
        pair_up();
    }

private:
    std::uint32_t read(std::size_t at, std::size_t bytes) const {
        if (at > code_.size() || code_.size() - at < bytes)
            throw DSError("Internal error: Operand outside of the code");
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < bytes; ++i)
            value |= static_cast<std::uint32_t>(code_[at + i]) << (8 * i);
        return value;
    }

    /// The size of a name or string, which another program may have resolved.
    std::size_t text_size(std::size_t at) const {
        if (read(at, 1) == 0)
            return std::max<std::size_t>(read(at + 4, 1), least_name_operand);
        const auto begin = code_.begin() + static_cast<std::ptrdiff_t>(at);
        const auto zero = std::find(begin, code_.end(), std::uint8_t{0});
        return std::max(static_cast<std::size_t>(zero - begin) + 1, least_name_operand);
    }

    void decode() {
        for (std::size_t at = 0; at < code_.size();) {
            DecodedCode::Item& d = items_.emplace_back();
            d.offset = static_cast<std::uint32_t>(at);
            d.opcode = static_cast<Opcode>(code_[at++]);
            d.valid = static_cast<std::size_t>(d.opcode) < opcode_count;
            if (!d.valid)
                continue;
            const Operand operand = info_of(d.opcode).operand;
            const bool four = operand == Operand::number || operand == Operand::offset;
            const std::size_t bytes = four || operand == Operand::offset_and_name ? 4
                                      : operand == Operand::index_16              ? 2
                                      : operand == Operand::index_8               ? 1
                                                                                  : 0;
            d.operand = read(at, bytes);
            at += bytes;
            if (operand == Operand::name || operand == Operand::string || operand == Operand::offset_and_name)
                at += text_size(at);
            if (at > code_.size())
                throw DSError("Internal error: Operand outside of the code");
        }
    }

    // Also counts the globals, and finds those that are assigned to.
    void mark_targets() {
        bool in_class = false;
        bool declaring = true;
        if (!items_.empty())
            result_.starts.push_back(0);
        for (const DecodedCode::Item& d : items_) {
            if (is_branch(d.opcode) && result_.index_at(d.operand) != DecodedCode::none)
                items_[result_.index_at(d.operand)].is_target = true;
            if (d.opcode == Opcode::declare_function && result_.index_at(d.operand) != DecodedCode::none)
                result_.starts.push_back(result_.index_at(d.operand));
            if (d.opcode == Opcode::push_global_ref)
                assigned_globals_.push_back(d.operand);
            declaring = declaring && d.opcode != Opcode::return_;
            if (!declaring)
                continue;
            const bool is_declaration = d.opcode >= Opcode::import_ && d.opcode < Opcode::end_class;
            result_.globals += is_declaration && !in_class ? 1 : 0;
            in_class = d.opcode == Opcode::begin_class || (in_class && d.opcode != Opcode::end_class);
        }
        for (const std::uint32_t index : result_.starts)
            items_[index].is_target = true;
        std::ranges::sort(assigned_globals_);
    }

    bool is_fixed_global(const DecodedCode::Item& d) const {
        return d.opcode == Opcode::push_global && d.operand < result_.globals &&
               !std::ranges::binary_search(assigned_globals_, d.operand);
    }

    // Nothing is known of what was on the stack at the start of a piece of code.
    void pair_up() {
        std::vector<std::uint32_t> pushed_by;
        const auto taken = [&] {
            if (pushed_by.empty())
                return DecodedCode::none;
            const std::uint32_t by = pushed_by.back();
            pushed_by.pop_back();
            return by;
        };
        for (std::uint32_t i = 0; i < items_.size(); ++i) {
            DecodedCode::Item& d = items_[i];
            if (d.is_target || !d.valid)
                pushed_by.clear();
            if (!d.valid)
                continue;
            const OpcodeInfo& info = info_of(d.opcode);
            for (int pop = 1; pop <= info.pops; ++pop) {
                const std::uint32_t by = taken();
                if (by == DecodedCode::none)
                    continue;
                const bool takes_place = d.opcode == Opcode::assign && pop == 2 && is_reference(items_[by].opcode);
                const bool takes_global = d.opcode == Opcode::call && is_fixed_global(items_[by]);
                const bool takes_method = d.opcode == Opcode::call && items_[by].opcode == Opcode::member;
                if (takes_place || takes_global) {
                    d.partner = by;
                    items_[by].elided = true;
                } else if (takes_method) {
                    d.partner = by;
                    items_[by].partner = i;
                }
            }
            if (info.pushes > 0)
                pushed_by.push_back(i);
            // A smaller frame may have no room for what a reference stands for.
            if (is_branch(d.opcode) || d.opcode == Opcode::return_ || d.opcode == Opcode::resize)
                pushed_by.clear();
        }
    }

    std::span<const std::uint8_t> code_;
    DecodedCode& result_;
    std::vector<DecodedCode::Item>& items_;
    /// In ascending order.
    std::vector<std::uint32_t> assigned_globals_;
};

} // namespace

DecodedCode::DecodedCode(std::span<const std::uint8_t> code) {
    Decoder(code, *this).run();
}

std::uint32_t DecodedCode::index_at(std::uint32_t offset) const {
    const auto found = std::ranges::lower_bound(items, offset, {}, &Item::offset);
    return found != items.end() && found->offset == offset ? static_cast<std::uint32_t>(found - items.begin()) : none;
}

} // namespace kst::script
