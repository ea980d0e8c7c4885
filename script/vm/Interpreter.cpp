#include "script/vm/Interpreter.h"

#include "script/value/BasicClasses.h"
#include "script/vm/NumberOperations.h"
#include "script/vm/ObjectClasses.h"
#include "script/vm/ProgramRegistry.h"
#include "script/vm/ScriptedClass.h"

// What the loop is made of is one function in the end. Its variables live in registers only as long as none of its parts
// is called for real, and nobody else is given its address: steps are members of the machine.
#ifdef MOSAICER_LOOP_IN_PARTS
#define IN_LOOP inline
#else
#define IN_LOOP [[gnu::always_inline]] inline
#endif

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

/// The loop's variables: the instruction, the ends of the two stacks. A value that owns nothing is written and forgotten
/// without a look at its class's functions; everything else is a step.
class Interpreter::Loop {
public:
    IN_LOOP explicit Loop(Interpreter& machine)
        : machine_(machine),
          ip_(machine.ip_),
          sp_(machine.values_.end()),
          locals_end_(machine.locals_.end()),
          values_limit_(machine.values_.limit()),
          locals_limit_(machine.locals_.limit()) {}

    IN_LOOP void run();

private:
    IN_LOOP void hand_over() {
        machine_.ip_ = ip_;
        machine_.instruction_ = machine_.vm_->code_.data() + ip_->offset;
        machine_.values_.set_end(sp_);
        machine_.locals_.set_end(locals_end_);
    }
    IN_LOOP void take_back() {
        ip_ = machine_.ip_;
        sp_ = machine_.values_.end();
        locals_end_ = machine_.locals_.end();
    }
    /// A step that sees to the next instruction itself.
    template <auto work, typename... A>
    IN_LOOP auto call_step(A&... arguments) {
        hand_over();
        if constexpr (std::is_void_v<decltype((machine_.*work)(arguments...))>) {
            (machine_.*work)(arguments...);
            machine_.check_programs();
            take_back();
        } else {
            const auto result = (machine_.*work)(arguments...);
            machine_.check_programs();
            take_back();
            return result;
        }
    }
    template <auto work>
    IN_LOOP void step() {
        call_step<work>();
        ++ip_;
    }

    IN_LOOP ScriptValue& place(ValuePlace where, std::uint32_t index) { return machine_.at(where, index); }
    IN_LOOP void set_base(ValuePlace where, ScriptValue* base) {
        machine_.bases_[static_cast<std::size_t>(where)] = base;
    }
    IN_LOOP void set_program(ScriptVM& vm) {
        if (machine_.vm_ == &vm)
            return;
        machine_.vm_ = &vm;
        set_base(ValuePlace::global, vm.globals_.data());
        set_base(ValuePlace::constant, vm.run_code_->constants.data());
    }

    IN_LOOP void add_reference(const ScriptValue& value) {
        if (&value.value_class() == &instances_)
            instances_.add_ref(value.data());
        else if (value.value_class().counted())
            value.value_class().add_ref(value.data());
    }
    /// For what is off the stacks already.
    IN_LOOP void release_owned(ScriptClass& value_class, ScriptClass::Data data) {
        if (&value_class == &instances_ && instances_.release_shared(data))
            return;
        call_step<&Interpreter::release>(value_class, data);
    }
    IN_LOOP void release(const ScriptValue& value) {
        if (value.value_class().counted())
            release_owned(value.value_class(), value.data());
    }

    IN_LOOP void check_room_for_value() {
        if (sp_ == values_limit_) {
            hand_over();
            machine_.values_.overflow();
        }
    }
    IN_LOOP void push_copy(const ScriptValue& value) {
        check_room_for_value();
        add_reference(value);
        sp_->overwrite(value.value_class(), value.data());
        ++sp_;
    }
    IN_LOOP void append_local(ScriptClass& value_class, ScriptValue::Data data) {
        if (locals_end_ == locals_limit_) {
            hand_over();
            machine_.locals_.overflow();
        }
        locals_end_->overwrite(value_class, data);
        ++locals_end_;
    }

    IN_LOOP void jump() {
        const Instruction* const target = ip_->target;
        if (target <= ip_) {
            if (machine_.stacks_.jump_budget == 0)
                hand_over();
            machine_.spend_budget();
        }
        ip_ = target;
    }
    IN_LOOP void jump_if(bool condition) {
        if (condition)
            jump();
        else
            ++ip_;
    }

    template <Form form>
    IN_LOOP const ScriptValue& left_operand() {
        if constexpr (form == Form::ss)
            return sp_[-2];
        else if constexpr (form == Form::sp)
            return sp_[-1];
        else
            return place(ip_->left_place, ip_->left);
    }
    template <Form form>
    IN_LOOP const ScriptValue& right_operand() {
        if constexpr (form == Form::ss)
            return sp_[-1];
        else
            return place(ip_->right_place, ip_->right);
    }
    static constexpr int taken_by(Form form) { return form == Form::ss ? 2 : form == Form::sp ? 1 : 0; }

    template <typename Calculation, Form form>
    IN_LOOP void arithmetic(Calculation calculation, FormIs<form>) {
        const ScriptValue& left = left_operand<form>();
        const ScriptValue& right = right_operand<form>();
        if (!is_number(left) || !is_number(right))
            return step<&Interpreter::binary>();
        const float result = calculation(float_of(left), float_of(right));
        if (is_indexed(ip_->result_place)) {
            ScriptValue& target = place(ip_->result_place, ip_->result);
            if (!is_number(target) && target.value_class().counted())
                return step<&Interpreter::binary>();
            sp_ -= taken_by(form);
            target.overwrite(number_class, number_bits(result));
        } else if (ip_->result_place == ValuePlace::stack) {
            if constexpr (form == Form::pp)
                check_room_for_value();
            sp_ -= taken_by(form);
            sp_->overwrite(number_class, number_bits(result));
            ++sp_;
        } else {
            append_local(number_class, number_bits(result));
            sp_ -= taken_by(form);
        }
        ++ip_;
    }
    template <typename Comparison, Form form>
    IN_LOOP void branch(Comparison comparison, FormIs<form>) {
        const ScriptValue& left = left_operand<form>();
        const ScriptValue& right = right_operand<form>();
        if (!is_number(left) || !is_number(right))
            return jump_if(call_step<&Interpreter::compare_operands>());
        const bool holds = comparison(float_of(left), float_of(right));
        sp_ -= taken_by(form);
        jump_if(holds);
    }
    IN_LOOP void branch_on_top(bool wanted) {
        bool is_true = false;
        if (const ClassKind kind = sp_[-1].kind(); kind <= ClassKind::boolean) {
            --sp_;
            is_true = kind == ClassKind::boolean && sp_->data() != 0;
        } else {
            is_true = call_step<&Interpreter::pop_boolean>();
        }
        jump_if(is_true == wanted);
    }

    IN_LOOP void store() {
        const bool from_stack = ip_->left_place == ValuePlace::stack;
        const ScriptValue& value = from_stack ? sp_[-1] : place(ip_->left_place, ip_->left);
        ScriptValue& target = place(ip_->result_place, ip_->result);
        if (target.value_class().counted())
            return step<&Interpreter::store>();
        if (!from_stack)
            add_reference(value);
        target.overwrite(value.value_class(), value.data());
        sp_ -= from_stack ? 1 : 0;
        ++ip_;
    }
    IN_LOOP void append_argument() {
        if (ip_->left_place == ValuePlace::stack) {
            append_local(sp_[-1].value_class(), sp_[-1].data());
            --sp_;
        } else {
            const ScriptValue& value = place(ip_->left_place, ip_->left);
            append_local(value.value_class(), value.data());
            add_reference(value);
        }
        ++ip_;
    }
    IN_LOOP void resize_frame() {
        ScriptValue* const wanted = &place(ValuePlace::local, ip_->count);
        if (wanted > locals_limit_)
            return step<&Interpreter::resize_frame>();
        while (locals_end_ < wanted) {
            locals_end_->overwrite(void_class, 0);
            ++locals_end_;
        }
        while (locals_end_ > wanted) {
            --locals_end_;
            release(*locals_end_);
        }
        ++ip_;
    }

    /// The class of an object, if the member that the instruction names is known in it.
    IN_LOOP ScriptVM::ScriptedClassBase* known_class(ScriptClass::Data object) {
        ScriptVM::ScriptedClassBase* const scripted_class = instances_.class_of(object);
        return scripted_class != nullptr && scripted_class->serial() == ip_->site->class_serial ? scripted_class
                                                                                                : nullptr;
    }
    IN_LOOP bool read_known_member() {
        if (&sp_[-1].value_class() != &instances_)
            return false;
        const ScriptClass::Data object = sp_[-1].data();
        ScriptVM::ScriptedClassBase* const scripted_class = known_class(object);
        if (scripted_class == nullptr)
            return false;
        const ScriptValue& value = scripted_class->members(instances_.object_of(object))[ip_->site->index];
        add_reference(value);
        sp_[-1].overwrite(value.value_class(), value.data());
        release_owned(instances_, object);
        ++ip_;
        return true;
    }
    IN_LOOP void look_up_method() {
        if (&sp_[-1].value_class() == &instances_ && ip_->site->start != nullptr &&
            known_class(sp_[-1].data()) != nullptr) {
            sp_[-1].overwrite(called_instances_, sp_[-1].data());
            ++ip_;
        } else {
            step<&Interpreter::prepare_method>();
        }
    }

    /// Moves on to the start of a function that is called here. Its arguments are on the local stack. Null if there is no
    /// room for a frame.
    IN_LOOP Frame* enter_function(ScriptVM& vm, const Instruction* start) {
        ScriptStacks& stacks = machine_.stacks_;
        if (stacks.jump_budget == 0 || stacks.call_count == stack_size ||
            stacks.frame_count == ScriptStacks::frame_limit)
            return nullptr;
        --stacks.jump_budget;
        Frame& frame = stacks.frames[stacks.frame_count++];
        frame.vm = &vm;
        frame.return_to = ip_ + 1;
        frame.locals = locals_end_ - ip_->count;
        frame.values = sp_;
        frame.call_depth = stacks.call_count;
        stacks.calls[stacks.call_count++] = machine_.vm_->code_.data() + ip_->offset;
        set_base(ValuePlace::local, frame.locals);
        set_program(vm);
        // A function begins with its frame's size, which often is what it was given.
        const bool sized = start->operation == Operation::resize && start->count == ip_->count;
        ip_ = sized ? start + 1 : start;
        return &frame;
    }
    IN_LOOP bool call_function(const ScriptValue& callee) {
        if (callee.kind() != ClassKind::function)
            return false;
        const ProgramRegistry::Entry& function = registry_[callee.data()];
        if (function.vm == nullptr)
            return false;
        Frame* const frame = enter_function(*function.vm, function.start);
        if (frame == nullptr)
            return false;
        frame->current_class = nullptr;
        frame->members = nullptr;
        return true;
    }
    IN_LOOP void call_global() {
        if (!call_function(place(ValuePlace::global, ip_->left)))
            call_step<&Interpreter::call_global>();
    }
    IN_LOOP void call_top() {
        --sp_;
        if (const ScriptClass::Data number = sp_->data(); call_function(*sp_)) {
            registry_.release(number);
        } else {
            ++sp_;
            call_step<&Interpreter::call_top>();
        }
    }
    IN_LOOP bool invoke_known_method() {
        const ScriptClass::Data self = sp_[-1].data();
        ScriptVM::ScriptedClassBase* const scripted_class = known_class(self);
        if (scripted_class == nullptr)
            return false;
        --sp_;
        Frame* const frame = enter_function(scripted_class->vm(), ip_->site->start);
        if (frame == nullptr) {
            ++sp_;
            return false;
        }
        frame->current_class = scripted_class;
        frame->object = instances_.object_of(self);
        frame->members = scripted_class->members(frame->object).data();
        frame->self.overwrite(instances_, self);
        set_base(ValuePlace::member, frame->members);
        return true;
    }

    /// The end of the function that the run began with, where nothing but its result has to go anywhere.
    IN_LOOP bool leave_run(const Frame& frame) {
        if (!frame.self.is_void())
            return false;
        while (locals_end_ != frame.locals) {
            if (locals_end_[-1].value_class().counted())
                return false;
            --locals_end_;
        }
        ScriptStacks& stacks = machine_.stacks_;
        stacks.call_count = frame.call_depth;
        --stacks.frame_count;
        stacks.values.set_end(sp_);
        stacks.locals.set_end(locals_end_);
        return true;
    }
    /// True at the end of the run. The result, if there is one, is on the value stack.
    IN_LOOP bool leave_function() {
        Frame& frame = machine_.stacks_.current();
        if (frame.return_to == nullptr && leave_run(frame))
            return true;
        if (frame.return_to == nullptr || sp_ != frame.values + 1) {
            hand_over();
            if (machine_.leave())
                return true;
            take_back();
            return false;
        }
        while (locals_end_ != frame.locals) {
            --locals_end_;
            release(*locals_end_);
        }
        machine_.stacks_.call_count = frame.call_depth;
        ip_ = frame.return_to;
        --machine_.stacks_.frame_count;
        const Frame& caller = machine_.stacks_.current();
        set_base(ValuePlace::local, caller.locals);
        set_base(ValuePlace::member, caller.members);
        set_program(*caller.vm);
        if (!frame.self.is_void()) {
            const ScriptClass::Data self = frame.self.data();
            frame.self.overwrite(void_class, 0);
            release_owned(instances_, self);
        }
        // A call's result is often made a plain value, and often is one.
        if (ip_->operation == Operation::deref && is_number(sp_[-1]))
            ++ip_;
        return false;
    }

    Interpreter& machine_;
    const Instruction* ip_;
    ScriptValue* sp_;
    ScriptValue* locals_end_;
    const ScriptValue* const values_limit_;
    const ScriptValue* const locals_limit_;
    ScriptVM::ClassInstance& instances_ = ScriptVM::ClassInstance::instance();
    ScriptVM::ClassCalledInstance& called_instances_ = ScriptVM::ClassCalledInstance::instance();
    ProgramRegistry& registry_ = ProgramRegistry::instance();
};

void Interpreter::Loop::run() {
    for (;;) {
        switch (ip_->operation) {
        case Operation::other:
            step<&Interpreter::other>();
            break;
        case Operation::push_place:
            push_copy(place(ip_->left_place, ip_->left));
            ++ip_;
            break;
        case Operation::push_string:
            step<&Interpreter::push_string>();
            break;
        case Operation::push_this:
            push_copy(machine_.stacks_.current().self);
            ++ip_;
            break;
        case Operation::pop:
            --sp_;
            release(*sp_);
            ++ip_;
            break;
        case Operation::deref:
            if (sp_[-1].kind() < ClassKind::local_ref)
                ++ip_; // stands for itself
            else
                step<&Interpreter::dereference>();
            break;
        case Operation::store:
            store();
            break;
        case Operation::argument:
            append_argument();
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
            push_copy(place(ip_->left_place, ip_->left));
            if (leave_function())
                return;
            break;
        case Operation::return_top:
            if (leave_function())
                return;
            break;
        case Operation::member:
            if (!read_known_member())
                step<&Interpreter::read_member>();
            break;
        case Operation::method:
            look_up_method();
            break;
        case Operation::call:
            call_top();
            break;
        case Operation::call_global:
            call_global();
            break;
        case Operation::invoke:
            if (&sp_[-1].value_class() != &called_instances_)
                call_step<&Interpreter::call_top>();
            else if (!invoke_known_method())
                call_step<&Interpreter::call_prepared>();
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

void Interpreter::execute() {
    Loop(*this).run();
}

} // namespace kst::script

#undef NUMBER_CASES
#undef IN_LOOP
