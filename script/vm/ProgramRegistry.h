#pragma once

#include "script/value/IndexPool.h"
#include "script/vm/ScriptVM.h"

namespace kst::script {

struct Instruction;

/// Programs by number. Functions, methods, instances, factories and library values may outlive their program: they hold
/// a number of this table. A destroyed program's entries stay, with a null pointer, until their last value goes.
class ProgramRegistry {
public:
    struct Entry {
        ScriptVM* vm = nullptr;
        /// Of a function. Gone with the program.
        const Instruction* start = nullptr;
        /// Of a class.
        ScriptVM::ScriptedClassBase* scripted_class = nullptr;
    };

    static ProgramRegistry& instance() {
        static ProgramRegistry& instance = *new ProgramRegistry;
        return instance;
    }

    std::uint32_t take(const Entry& entry) {
        const std::uint32_t number = pool_.take();
        pool_[number] = entry;
        return number;
    }
    void add_ref(std::uint32_t number) { pool_.add_ref(number); }
    void release(std::uint32_t number) {
        if (pool_.drop_ref(number) > 0)
            return;
        pool_[number] = {};
        pool_.give_back(number);
    }
    Entry& operator[](std::uint32_t number) { return pool_[number]; }
    std::size_t live() const { return pool_.live(); }

private:
    IndexPool<Entry> pool_;
};

} // namespace kst::script
