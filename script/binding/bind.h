#pragma once

// Makes native functions members of a script object, from their signatures alone.
//
// A bound class derives from Bound<Itself>, has a name, and one table:
//
//   class Counter : public Bound<Counter> {
//   public:
//       static constexpr std::string_view script_name = "Counter";   // its objects print as "<Counter>"
//       static void bind(StaticMemberSet<Counter>& members) {
//           members.method<&Counter::add>("add", 1.0f);              // add() is add(1)
//           members.method<&Counter::add>("plus");                   // two names of one function
//           members.method<&Counter::fork>("fork");
//           members.property<&Counter::step, &Counter::set_step>("step");
//           members.method<[](const Counter& counter, std::string_view unit) {
//               return std::to_string(counter.total_) + std::string(unit);
//           }>("text");
//       }
//
//       float add(float amount);
//       ScriptValue fork() const { return make_script_owned<Counter>(*this); }
//       float step() const;
//       void set_step(float step);
//   };
//
// and a script that is given `counter.value()` writes
//
//   c.step := 2; c.add(); c.plus(3); print(c.text(" kg"));
//
// A function is a member function (const or not, noexcept or not) or a free function or lambda whose first parameter is
// the object. Its other parameters and its result are of types with a Conversion; a function whose one parameter is
// `Arguments` gets the whole argument list as it is. A std::runtime_error that a function throws is for the script a
// DSError of the same text.
//
// A class that derives from a bound class, as in Bound<ChildTimer, Timer>, has that one's members too.

#include <concepts>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "script/binding/Conversion.h"
#include "script/binding/MemberFactory.h"
#include "script/binding/MemberSet.h"

namespace kst::script {

/// What a parameter's conversion is looked up by: the plain type, but a bound class as the reference it is taken by.
template <typename P>
using ConversionKey = std::conditional_t<
    std::derived_from<std::remove_cvref_t<P>, LibraryHelper>, std::remove_cvref_t<P>&,
    std::conditional_t<std::is_pointer_v<std::remove_cvref_t<P>> &&
                           std::is_class_v<std::remove_pointer_t<std::remove_cvref_t<P>>>,
                       std::remove_const_t<std::remove_pointer_t<std::remove_cvref_t<P>>>*, std::remove_cvref_t<P>>>;

/// What a function takes and gives, the object left out.
template <typename R, typename... P>
struct BoundSignature {
    static constexpr bool takes_whole_list =
        std::is_same_v<std::tuple<std::remove_cvref_t<P>...>, std::tuple<Arguments>>;
    static constexpr std::size_t parameters = takes_whole_list ? 0 : sizeof...(P);

    /// "<member(number,string):object>"; without a result "<member(number,string)>".
    static std::string description() {
        std::string text = "<member(";
        if constexpr (takes_whole_list)
            text += "...";
        else
            ((text.append(text.back() == '(' ? "" : ",").append(Conversion<ConversionKey<P>>::name())), ...);
        text += ")";
        if constexpr (!std::is_void_v<R>)
            text.append(":").append(Conversion<ConversionKey<R>>::name());
        return text + ">";
    }

    template <auto function, typename Object>
    static ScriptValue invoke(Object& object, Arguments arguments) {
        if constexpr (takes_whole_list)
            return result([&]() -> R { return std::invoke(function, object, arguments); });
        else
            return invoke_converted<function>(object, arguments, std::index_sequence_for<P...>());
    }

private:
    template <auto function, typename Object, std::size_t... i>
    static ScriptValue invoke_converted(Object& object, [[maybe_unused]] Arguments arguments,
                                        std::index_sequence<i...>) {
        // Braces, so that the arguments are converted in order.
        using Converted = std::tuple<decltype(Conversion<ConversionKey<P>>::from(arguments[i]))...>;
        [[maybe_unused]] Converted converted{Conversion<ConversionKey<P>>::from(arguments[i])...};
        return result(
            [&]() -> R { return std::invoke(function, object, std::get<i>(std::forward<Converted>(converted))...); });
    }

    template <typename Call>
    static ScriptValue result(const Call& call) {
        if constexpr (std::is_void_v<R>) {
            call();
            return {};
        } else {
            return Conversion<ConversionKey<R>>::to(call());
        }
    }
};

/// From the type of a function to its BoundSignature.
template <typename F>
struct SignatureOf : SignatureOf<decltype(+std::declval<F>())> {}; // a lambda without captures
template <typename R, typename Object, typename... P>
struct SignatureOf<R (*)(Object, P...)> : std::type_identity<BoundSignature<R, P...>> {};
template <typename R, typename Object, typename... P>
struct SignatureOf<R (*)(Object, P...) noexcept> : std::type_identity<BoundSignature<R, P...>> {};
template <typename R, typename C, typename... P>
struct SignatureOf<R (C::*)(P...)> : std::type_identity<BoundSignature<R, P...>> {};
template <typename R, typename C, typename... P>
struct SignatureOf<R (C::*)(P...) const> : std::type_identity<BoundSignature<R, P...>> {};
template <typename R, typename C, typename... P>
struct SignatureOf<R (C::*)(P...) noexcept> : std::type_identity<BoundSignature<R, P...>> {};
template <typename R, typename C, typename... P>
struct SignatureOf<R (C::*)(P...) const noexcept> : std::type_identity<BoundSignature<R, P...>> {};

template <auto function>
using Signature = typename SignatureOf<std::remove_const_t<decltype(function)>>::type;

/// The factory of one bound function of class T.
template <typename T, auto function>
class TMMethodFactory final : public MethodFactory {
public:
    explicit TMMethodFactory(std::vector<ScriptValue> defaults = {})
        : MethodFactory(Signature<function>::parameters, std::move(defaults)) {}
    std::string description() const override { return Signature<function>::description(); }

protected:
    ScriptValue invoke(LibraryHelper& object, Arguments arguments) const override {
        return Signature<function>::template invoke<function>(static_cast<T&>(object), arguments);
    }
};

/// The factory of a property of class T: a function that gives it, and one that takes it, or null if it is only read.
/// Where `is_method`, a call without arguments gives it too.
template <typename T, auto getter, auto setter, bool is_method = false>
class TMPropertyFactory final : public PropertyFactory {
public:
    std::string description() const override { return Signature<getter>::description(); }
    ScriptValue call(Data data, Arguments arguments) override {
        return is_method && arguments.empty() ? clone(data) : PropertyFactory::call(data, arguments);
    }

protected:
    ScriptValue read(LibraryHelper& object) const override {
        return Signature<getter>::template invoke<getter>(static_cast<T&>(object), {});
    }
    void write(LibraryHelper& object, const ScriptValue& value) const override {
        if constexpr (std::is_null_pointer_v<std::remove_const_t<decltype(setter)>>)
            PropertyFactory::write(object, value);
        else
            Signature<setter>::template invoke<setter>(static_cast<T&>(object), {&value, 1});
    }
};

/// The table of a bound class: one for all objects, filled by T::bind when first asked for and never destroyed.
template <typename T>
class StaticMemberSet final : public MemberSet {
public:
    static const StaticMemberSet& instance() {
        static const StaticMemberSet& instance = *new StaticMemberSet;
        return instance;
    }

    /// `defaults` stand for the last parameters, where a call leaves them out.
    template <auto function, typename... Defaults>
    void method(std::string_view name, const Defaults&... defaults) {
        static_assert(sizeof...(Defaults) <= Signature<function>::parameters);
        std::vector<ScriptValue> values{Conversion<std::decay_t<const Defaults&>>::to(defaults)...};
        add(name, MemberFactoryPointer(new TMMethodFactory<T, function>(std::move(values))));
    }

    template <auto getter, auto setter = nullptr>
    void property(std::string_view name) {
        add(name, MemberFactoryPointer(new TMPropertyFactory<T, getter, setter>));
    }

    /// A method without parameters that may be read as a property: `item.key()` and `item.key` are one.
    template <auto getter>
    void readable_method(std::string_view name) {
        add(name, MemberFactoryPointer(new TMPropertyFactory<T, getter, nullptr, /*is_method=*/true>));
    }

private:
    StaticMemberSet() : MemberSet(T::base_members()) { T::bind(*this); }
};

/// Derives T from Base, which is LibraryHelper or another bound class, and answers for T by `T::script_name` and
/// `T::bind`. What T prints as may still be overridden.
template <typename T, typename Base = LibraryHelper>
class Bound : public Base {
public:
    using Base::Base;

    std::string type_name() const override { return "<" + std::string(T::script_name) + ">"; }
    const MemberSet& members() const override { return StaticMemberSet<T>::instance(); }

    static const MemberSet* base_members() {
        if constexpr (std::is_same_v<Base, LibraryHelper>)
            return nullptr;
        else
            return &StaticMemberSet<typename Base::BoundClass>::instance();
    }
    using BoundClass = T;
};

/// A T, which must not be final, that belongs to scripts: it goes with the last value of it.
template <typename T>
class ScriptOwned final : public T {
public:
    using T::T;
    explicit ScriptOwned(const T& other) : T(other) {}
    void on_unreferenced() override { delete this; }
};

/// A new T, made from the arguments, that belongs to scripts. This value is the first of it.
template <typename T, typename... A>
ScriptValue make_script_owned(A&&... arguments) {
    auto object = std::make_unique<ScriptOwned<T>>(std::forward<A>(arguments)...);
    ScriptValue value = object->value();
    object.release(); // NOLINT(bugprone-unused-return-value): the value owns it from here on
    return value;
}

} // namespace kst::script
