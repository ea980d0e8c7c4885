#include "script/vm/Interpreter.h"

#include "script/value/BasicClasses.h"
#include "script/vm/NumberOperations.h"
#include "script/vm/ObjectClasses.h"
#include "script/vm/ProgramRegistry.h"
#include "script/vm/ScriptedClass.h"

// The functions within the loop work on its variables, which live in registers as long as none of them is called for
// real.
#define IN_LOOP __attribute__((always_inline))

/// The three forms of an operation on numbers.
#define NUMBER_CASES(name, kind, function) \
    case Operation::name##_ss:             \
        kind(function, both_on_stack);     \
        break;                             \
    case Operation::name##_sp:             \
        kind(function, left_on_stack);     \
        break;                             \
    case Operation::name##_pp:             \
        kind(function, both_in_places);    \
        break;

namespace kst::script {

// The variables: the instruction, the ends of the two stacks. A value that owns nothing is written and forgotten without
// a look at its class's functions; everything else is a step.
void Interpreter::execute() {
    const Instruction* ip = ip_;
    ScriptValue* sp = values_.end();
    ScriptValue* locals_end = locals_.end();
    const ScriptValue* const values_limit = values_.limit();
    const ScriptValue* const locals_limit = locals_.limit();

    auto& instances = ScriptVM::ClassInstance::instance();
    ProgramRegistry& registry = ProgramRegistry::instance();
    auto& called_instances = ScriptVM::ClassCalledInstance::instance();

    const auto hand_over = [&]() IN_LOOP {
        ip_ = ip;
        instruction_ = vm_->code_.data() + ip->offset;
        values_.set_end(sp);
        locals_.set_end(locals_end);
    };
    const auto take_back = [&]() IN_LOOP {
        ip = ip_;
        sp = values_.end();
        locals_end = locals_.end();
    };
    const auto call_step = [&](auto&& work) IN_LOOP {
        hand_over();
        work();
        check_programs();
        take_back();
    };
    const auto step = [&](auto&& work) IN_LOOP {
        call_step(work);
        ++ip;
    };
    const auto place = [&](ValuePlace where, std::uint32_t index)
                           IN_LOOP -> ScriptValue& { return bases_[static_cast<std::size_t>(where)][index]; };
    const auto add_reference = [&](const ScriptValue& value) IN_LOOP {
        if (&value.value_class() == &instances)
            instances.add_ref(value.data());
        else if (value.value_class().counted())
            value.value_class().add_ref(value.data());
    };
    const auto push_copy = [&](const ScriptValue& value) IN_LOOP {
        if (sp == values_limit) {
            hand_over();
            values_.overflow();
        }
        add_reference(value);
        sp->overwrite(value.value_class(), value.data());
        ++sp;
    };
    // For what is off the stacks already.
    const auto release_owned = [&](ScriptClass& value_class, ScriptClass::Data data) IN_LOOP {
        if (&value_class == &instances && instances.release_shared(data))
            return;
        call_step([&] { value_class.release(data); });
    };
    const auto release = [&](const ScriptValue& value) IN_LOOP {
        if (value.value_class().counted())
            release_owned(value.value_class(), value.data());
    };
    const auto append_local = [&](ScriptClass& value_class, ScriptValue::Data data) IN_LOOP {
        if (locals_end == locals_limit) {
            hand_over();
            locals_.overflow();
        }
        locals_end->overwrite(value_class, data);
        ++locals_end;
    };
    const auto jump = [&]() IN_LOOP {
        const Instruction* const target = ip->target;
        if (target <= ip) {
            if (stacks_.jump_budget == 0)
                hand_over();
            spend_budget();
        }
        ip = target;
    };
    const auto number_operands = [&](auto form, const ScriptValue*& left, const ScriptValue*& right) IN_LOOP {
        if constexpr (form() == Form::ss)
            right = sp - 1;
        else
            right = &place(ip->right_place, ip->right);
        if constexpr (form() == Form::ss)
            left = sp - 2;
        else if constexpr (form() == Form::sp)
            left = sp - 1;
        else
            left = &place(ip->left_place, ip->left);
        return is_number(*left) && is_number(*right);
    };
    const auto taken_by = [](auto form) IN_LOOP { return form() == Form::ss ? 2 : form() == Form::sp ? 1 : 0; };
    const auto arithmetic = [&](auto operation, auto form) IN_LOOP {
        const ScriptValue* left = nullptr;
        const ScriptValue* right = nullptr;
        if (!number_operands(form, left, right))
            return step([&] { binary(); });
        const float result = operation(float_of(*left), float_of(*right));
        if (ip->result_place == ValuePlace::stack) {
            if constexpr (form() == Form::pp) {
                if (sp == values_limit) {
                    hand_over();
                    values_.overflow();
                }
            }
            sp -= taken_by(form);
            sp->overwrite(number_class, number_bits(result));
            ++sp;
        } else if (ip->result_place == ValuePlace::argument) {
            append_local(number_class, number_bits(result));
            sp -= taken_by(form);
        } else {
            ScriptValue& target = place(ip->result_place, ip->result);
            if (target.value_class().counted())
                return step([&] { binary(); });
            sp -= taken_by(form);
            target.overwrite(number_class, number_bits(result));
        }
        ++ip;
    };
    const auto branch = [&](auto comparison, auto form) IN_LOOP {
        const ScriptValue* left = nullptr;
        const ScriptValue* right = nullptr;
        bool holds = false;
        if (number_operands(form, left, right)) {
            holds = comparison(float_of(*left), float_of(*right));
            sp -= taken_by(form);
        } else {
            call_step([&] { holds = compare_operands(); });
        }
        if (holds)
            jump();
        else
            ++ip;
    };
    const auto branch_on_top = [&](bool wanted) IN_LOOP {
        bool is_true = false;
        if (const ClassKind kind = sp[-1].kind(); kind <= ClassKind::boolean) {
            --sp;
            is_true = kind == ClassKind::boolean && sp->data() != 0;
        } else {
            call_step([&] { is_true = pop_boolean(); });
        }
        if (is_true == wanted)
            jump();
        else
            ++ip;
    };
    // Moves on to the start of a function that is called here. Its arguments are on the local stack.
    const auto enter_function = [&](ScriptVM& vm, const Instruction* start, Frame*& frame) IN_LOOP {
        if (stacks_.jump_budget == 0 || stacks_.call_count == stack_size ||
            stacks_.frame_count == ScriptStacks::frame_limit)
            return false;
        --stacks_.jump_budget;
        frame = &stacks_.frames[stacks_.frame_count++];
        frame->vm = &vm;
        frame->return_to = ip + 1;
        frame->locals = locals_end - ip->count;
        frame->values = sp;
        frame->call_depth = stacks_.call_count;
        stacks_.calls[stacks_.call_count++] = vm_->code_.data() + ip->offset;
        // A function begins with its frame's size, which often is what it was given.
        const bool sized = start->operation == Operation::resize && start->count == ip->count;
        bases_[static_cast<std::size_t>(ValuePlace::local)] = frame->locals;
        if (vm_ != &vm) {
            vm_ = &vm;
            bases_[static_cast<std::size_t>(ValuePlace::global)] = vm.globals_.data();
            bases_[static_cast<std::size_t>(ValuePlace::constant)] = vm.run_code_->constants.data();
        }
        ip = sized ? start + 1 : start;
        return true;
    };
    const auto call_function = [&](const ScriptValue& callee) IN_LOOP {
        if (callee.kind() != ClassKind::function)
            return false;
        const ProgramRegistry::Entry& function = registry[callee.data()];
        Frame* frame = nullptr;
        if (function.vm == nullptr || !enter_function(*function.vm, function.start, frame))
            return false;
        frame->current_class = nullptr;
        frame->members = nullptr;
        return true;
    };
    // True at the end of the run. The result, if there is one, is on the value stack.
    const auto leave_function = [&]() IN_LOOP {
        Frame& frame = stacks_.current();
        if (frame.return_to == nullptr || sp != frame.values + 1) {
            hand_over();
            if (leave())
                return true;
            take_back();
            return false;
        }
        while (locals_end != frame.locals) {
            --locals_end;
            release(*locals_end);
        }
        stacks_.call_count = frame.call_depth;
        ip = frame.return_to;
        --stacks_.frame_count;
        const Frame& caller = stacks_.current();
        bases_[static_cast<std::size_t>(ValuePlace::local)] = caller.locals;
        bases_[static_cast<std::size_t>(ValuePlace::member)] = caller.members;
        if (vm_ != caller.vm) {
            vm_ = caller.vm;
            bases_[static_cast<std::size_t>(ValuePlace::global)] = vm_->globals_.data();
            bases_[static_cast<std::size_t>(ValuePlace::constant)] = vm_->run_code_->constants.data();
        }
        if (!frame.self.is_void()) {
            const ScriptClass::Data self = frame.self.data();
            frame.self.overwrite(void_class, 0);
            release_owned(instances, self);
        }
        // A call's result is often made a plain value, and often is one.
        if (ip->operation == Operation::deref && is_number(sp[-1]))
            ++ip;
        return false;
    };

    const auto resize_frame = [&]() IN_LOOP {
        ScriptValue* const wanted = bases_[static_cast<std::size_t>(ValuePlace::local)] + ip->count;
        if (wanted > locals_limit)
            return step([&] { set_frame_size(ip->count); });
        while (locals_end < wanted) {
            locals_end->overwrite(void_class, 0);
            ++locals_end;
        }
        while (locals_end > wanted) {
            --locals_end;
            release(*locals_end);
        }
        ++ip;
    };
    // The class of an object, if the member is known in it.
    const auto known_class = [&](ScriptClass::Data object) IN_LOOP {
        ScriptVM::ScriptedClassBase* const scripted_class = instances.class_of(object);
        return scripted_class != nullptr && scripted_class->serial() == ip->site->class_serial ? scripted_class
                                                                                               : nullptr;
    };
    const auto read_known_member = [&]() IN_LOOP {
        if (&sp[-1].value_class() != &instances)
            return false;
        const ScriptClass::Data object = sp[-1].data();
        ScriptVM::ScriptedClassBase* const scripted_class = known_class(object);
        if (scripted_class == nullptr)
            return false;
        const ScriptValue& value = scripted_class->members(instances.object_of(object))[ip->site->index];
        add_reference(value);
        sp[-1].overwrite(value.value_class(), value.data());
        release_owned(instances, object);
        ++ip;
        return true;
    };
    const auto invoke_known_method = [&]() IN_LOOP {
        if (&sp[-1].value_class() != &called_instances)
            return false;
        const ScriptClass::Data self = sp[-1].data();
        ScriptVM::ScriptedClassBase* const scripted_class = known_class(self);
        if (scripted_class == nullptr)
            return false;
        --sp;
        Frame* frame = nullptr;
        if (!enter_function(scripted_class->vm(), ip->site->start, frame)) {
            ++sp;
            return false;
        }
        frame->current_class = scripted_class;
        frame->object = instances.object_of(self);
        frame->members = scripted_class->members(frame->object).data();
        frame->self.overwrite(instances, self);
        bases_[static_cast<std::size_t>(ValuePlace::member)] = frame->members;
        return true;
    };

    for (;;) {
        switch (ip->operation) {
        case Operation::other:
            step([&] { other(); });
            break;
        case Operation::push_place:
            push_copy(place(ip->left_place, ip->left));
            ++ip;
            break;
        case Operation::push_string:
            step([&] { push_string(); });
            break;
        case Operation::push_this:
            push_copy(stacks_.current().self);
            ++ip;
            break;
        case Operation::pop:
            --sp;
            release(*sp);
            ++ip;
            break;
        case Operation::deref:
            if (sp[-1].kind() < ClassKind::local_ref)
                ++ip; // stands for itself
            else
                step([&] { values_.push(values_.pop().clone()); });
            break;
        case Operation::store: {
            const bool from_stack = ip->left_place == ValuePlace::stack;
            const ScriptValue& value = from_stack ? sp[-1] : place(ip->left_place, ip->left);
            ScriptValue& target = place(ip->result_place, ip->result);
            if (target.value_class().counted()) {
                step([&] { store(); });
                break;
            }
            if (from_stack) {
                target.overwrite(value.value_class(), value.data());
                --sp;
            } else {
                add_reference(value);
                target.overwrite(value.value_class(), value.data());
            }
            ++ip;
            break;
        }
        case Operation::argument:
            if (ip->left_place == ValuePlace::stack) {
                append_local(sp[-1].value_class(), sp[-1].data());
                --sp;
            } else {
                const ScriptValue& value = place(ip->left_place, ip->left);
                append_local(value.value_class(), value.data());
                add_reference(value);
            }
            ++ip;
            break;
        case Operation::resize:
            resize_frame();
            break;
        case Operation::jump:
            jump();
            break;
        case Operation::jump_if:
            branch_on_top(true);
            break;
        case Operation::jump_unless:
            branch_on_top(false);
            break;
        case Operation::return_place:
            push_copy(place(ip->left_place, ip->left));
            if (leave_function())
                return;
            break;
        case Operation::return_top:
            if (leave_function())
                return;
            break;
        case Operation::member:
            if (!read_known_member())
                step([&] { read_member(); });
            break;
        case Operation::method:
            if (&sp[-1].value_class() == &instances && ip->site->start != nullptr &&
                known_class(sp[-1].data()) != nullptr) {
                sp[-1].overwrite(called_instances, sp[-1].data());
                ++ip;
            } else {
                step([&] { prepare_method(); });
            }
            break;
        case Operation::call:
            --sp;
            if (const ScriptClass::Data number = sp->data(); call_function(*sp)) {
                registry.release(number);
            } else {
                ++sp;
                call_step([&] { call_top(); });
            }
            break;
        case Operation::call_global: {
            const ScriptValue& callee = place(ValuePlace::global, ip->left);
            if (!call_function(callee))
                call_step([&] { call_value(callee); });
            break;
        }
        case Operation::invoke:
            if (!invoke_known_method())
                call_step([&] { call_prepared(); });
            break;
            NUMBER_CASES(add, arithmetic, plus)
            NUMBER_CASES(sub, arithmetic, minus)
            NUMBER_CASES(mul, arithmetic, times)
            NUMBER_CASES(div, arithmetic, over)
            NUMBER_CASES(lt, branch, less)
            NUMBER_CASES(le, branch, less_or_equal)
            NUMBER_CASES(eq, branch, equal)
            NUMBER_CASES(ge, branch, greater_or_equal)
            NUMBER_CASES(gt, branch, greater)
            NUMBER_CASES(ne, branch, not_equal)
        default:
            __builtin_unreachable();
        }
    }
}

} // namespace kst::script

#undef NUMBER_CASES
#undef IN_LOOP
