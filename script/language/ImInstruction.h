#pragma once

#include "script/language/CodeBuffer.h"
#include "script/language/Scope.h"

#include <cstdint>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace kst::script {

/// A name or label that the source never gave a meaning.
class ParserError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// More of something than an operand can count.
class GeneratorError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class Emitter;
class ImBinOp;
class ImUnOp;
class ImCommand;
class ImConstNumber;
class ImConstString;
class ImConstBoolean;
class ImIDRef;
class ImValue;
class ImMember;
class ImCall;
class ImGotoCond;
class ImResizeLocal;

/// What an expression leaves behind. In jump form it has left no value on the stack: it has branched, and its exits
/// wait for their targets.
enum class ValueKind : std::uint8_t { none = 0, boolean = 1, number = 2, unknown = 3, string = 4, void_ = 5, jump = 6 };

/// An intermediate instruction: what the parser appends, later emitted as one instruction of byte code, or none.
class ImInstruction {
public:
    ImInstruction() = default;
    ImInstruction(const ImInstruction&) = delete;
    ImInstruction& operator=(const ImInstruction&) = delete;
    virtual ~ImInstruction() = default;

    /// Checked down-casts: null for any other class.
    virtual ImBinOp* as_bin_op() { return nullptr; }
    virtual ImUnOp* as_un_op() { return nullptr; }
    virtual ImCommand* as_command() { return nullptr; }
    virtual ImConstNumber* as_const_number() { return nullptr; }
    virtual ImConstString* as_const_string() { return nullptr; }
    virtual ImConstBoolean* as_const_boolean() { return nullptr; }
    virtual ImIDRef* as_id_ref() { return nullptr; }
    virtual ImValue* as_value() { return nullptr; }
    virtual ImMember* as_member() { return nullptr; }
    virtual ImCall* as_call() { return nullptr; }
    virtual ImGotoCond* as_goto_cond() { return nullptr; }
    virtual ImResizeLocal* as_resize_local() { return nullptr; }

    /// Writes one line of the listing.
    virtual void print(std::ostream& out) const = 0;
    /// Writes its bytes. Throws GeneratorError where an operand does not fit, ParserError for an unknown name.
    virtual void emit(Emitter& emitter) const = 0;

    std::int32_t line = 0;
    /// Set when it is emitted; where it writes nothing, the offset of what follows.
    std::int64_t offset = -1;
    /// Operands of earlier jumps and declarations that wait for the offset.
    std::vector<std::size_t> waiting;
};

/// The target of emission, and where jumps find each other.
class Emitter {
public:
    Emitter(CodeBuffer& buffer, const std::vector<ImInstruction*>& instructions)
        : code(buffer), instructions_(instructions) {}

    /// Fixes its offset, fulfils what waits for it, and emits it.
    void emit(ImInstruction& instruction);
    void begin(Opcode opcode) { code.begin(opcode, line_); }
    /// The offset of an instruction as operand; -1 until that one is emitted.
    void put_target(std::int32_t instruction);
    /// Throws GeneratorError for a name that is too long.
    void put_name(const std::string& name);

    CodeBuffer& code;

private:
    const std::vector<ImInstruction*>& instructions_;
    std::int32_t line_ = 0;
};

class ImBinOp : public ImInstruction {
public:
    enum class Operator : std::uint8_t { add, sub, mul, div, mod, lt, le, eq, ge, gt, ne };

    ImBinOp(ValueKind of_left, ValueKind of_right, Operator of) : left(of_left), right(of_right), op(of) {}
    ImBinOp* as_bin_op() override { return this; }
    void print(std::ostream& out) const override;
    void emit(Emitter& emitter) const override;

    ValueKind left;
    ValueKind right;
    Operator op;
};

class ImUnOp : public ImInstruction {
public:
    enum class Operator : std::uint8_t { negate };

    ImUnOp(ValueKind of_operand, Operator of) : operand(of_operand), op(of) {}
    ImUnOp* as_un_op() override { return this; }
    void print(std::ostream& out) const override;
    void emit(Emitter& emitter) const override;

    ValueKind operand;
    Operator op;
};

class ImCommand : public ImInstruction {
public:
    enum class Command : std::uint8_t {
        deref,
        pop,
        swap,
        param,
        assign,
        return_,
        push_void,
        push_this,
        cnv_number,
        cnv_string,
        cnv_boolean,
    };

    explicit ImCommand(Command which) : command(which) {}
    ImCommand* as_command() override { return this; }
    void print(std::ostream& out) const override;
    void emit(Emitter& emitter) const override;

    Command command;
};

class ImConstNumber : public ImInstruction {
public:
    explicit ImConstNumber(float constant) : value(constant) {}
    ImConstNumber* as_const_number() override { return this; }
    void print(std::ostream& out) const override;
    void emit(Emitter& emitter) const override;

    float value;
};

class ImConstString : public ImInstruction {
public:
    explicit ImConstString(const std::string* constant) : value(constant) {}
    ImConstString* as_const_string() override { return this; }
    void print(std::ostream& out) const override;
    void emit(Emitter& emitter) const override;

    const std::string* value;
};

class ImConstBoolean : public ImInstruction {
public:
    explicit ImConstBoolean(bool constant) : value(constant) {}
    ImConstBoolean* as_const_boolean() override { return this; }
    void print(std::ostream& out) const override;
    void emit(Emitter& emitter) const override;

    bool value;
};

/// Pushes a reference; for what cannot be stored to, its value.
class ImIDRef : public ImInstruction {
public:
    explicit ImIDRef(const NameUse& name) : use(name) {}
    ImIDRef* as_id_ref() override { return this; }
    void print(std::ostream& out) const override;
    void emit(Emitter& emitter) const override;

    NameUse use;
};

class ImValue : public ImInstruction {
public:
    explicit ImValue(const NameUse& name) : use(name) {}
    ImValue* as_value() override { return this; }
    void print(std::ostream& out) const override;
    void emit(Emitter& emitter) const override;

    NameUse use;
};

class ImMember : public ImInstruction {
public:
    explicit ImMember(const std::string* member) : name(member) {}
    ImMember* as_member() override { return this; }
    void print(std::ostream& out) const override;
    void emit(Emitter& emitter) const override;

    const std::string* name;
};

class ImCall : public ImInstruction {
public:
    explicit ImCall(std::size_t arguments) : argument_count(arguments) {}
    ImCall* as_call() override { return this; }
    void print(std::ostream& out) const override;
    void emit(Emitter& emitter) const override;

    std::size_t argument_count;
};

class ImGotoCond : public ImInstruction {
public:
    enum class Condition : std::uint8_t { always, if_true, if_false };

    explicit ImGotoCond(Condition when, std::int32_t index = -1) : target(index), condition(when) {}
    ImGotoCond* as_goto_cond() override { return this; }
    void print(std::ostream& out) const override;
    void emit(Emitter& emitter) const override;

    /// An instruction index; -1 while it waits.
    std::int32_t target;
    /// The next jump that waits for the same label, -1 at the end.
    std::int32_t next_waiting = -1;
    Condition condition;
};

/// Sets the frame to the size of a scope, if that is more than the size around it.
class ImResizeLocal : public ImInstruction {
public:
    explicit ImResizeLocal(const Scope* of) : scope(of) {}
    ImResizeLocal* as_resize_local() override { return this; }
    void print(std::ostream& out) const override;
    void emit(Emitter& emitter) const override;

    const Scope* scope;
};

/// Sets the frame to a function's parameters, however many arguments came.
class ImResizeParameters : public ImInstruction {
public:
    explicit ImResizeParameters(const Scope* of) : scope(of) {}
    void print(std::ostream& out) const override;
    void emit(Emitter& emitter) const override;

    const Scope* scope;
};

} // namespace kst::script
