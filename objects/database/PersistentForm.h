#pragma once

#include "objects/database/PersistentObject.h"
#include "objects/database/ReferenceMap.h"
#include "objects/database/archive_values.h"
#include "objects/database/print_value.h"

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

// One list of fields makes a class's `load`, its `save` and its line in a dump. A class lists its fields in a static
// template, for itself and const itself, with the operations of the three forms below:
//
//     class Lamp : public Persistent<Lamp, PersistentObject> {
//     public:
//         static constexpr std::string_view class_name = "Lamp";
//         static constexpr std::uint32_t class_type_id = 0x12345678;
//         template <class Self, class Form>
//         static void fields(Self& self, Form& form) {
//             form.value("brightness", self.brightness_);
//             form.reference("target", self.target_);
//         }
namespace kst {

/// Fills fields from a stream.
class LoadForm {
public:
    /// Of forms that give a field a new value.
    static constexpr bool loads = true;

    LoadForm(Archive& archive, ReferenceMap& references) : archive_(archive), references_(references) {}

    /// A number or a record of numbers without gaps, as it stands in memory.
    template <RawValue T>
    void value(std::string_view /*name*/, T& field) {
        field = read_value<T>(archive_);
    }
    /// A text with its terminating zero byte.
    void text(std::string_view /*name*/, std::string& field) { archive_.read_string(field); }
    /// A 32-bit count and the values.
    template <RawValue T>
    void values(std::string_view /*name*/, std::vector<T>& field) {
        read_values(archive_, field);
    }
    /// A 32-bit reference number. The pointer is filled when its target is known.
    template <class T>
    void reference(std::string_view /*name*/, T*& field) {
        load_reference(references_, read_value<std::uint32_t>(archive_), &field);
    }

private:
    Archive& archive_;
    ReferenceMap& references_;
};

/// Writes fields to a stream.
class SaveForm {
public:
    static constexpr bool loads = false;

    SaveForm(Archive& archive, ReferenceMap& references) : archive_(archive), references_(references) {}

    template <RawValue T>
    void value(std::string_view /*name*/, const T& field) {
        write_value(archive_, field);
    }
    void text(std::string_view /*name*/, const std::string& field) { write_string(archive_, field); }
    template <RawValue T>
    void values(std::string_view /*name*/, const std::vector<T>& field) {
        write_values(archive_, field);
    }
    void reference(std::string_view /*name*/, const PersistentObject* field) {
        write_value(archive_, references_.reference_of(field, /*allow_new=*/false));
    }

private:
    Archive& archive_;
    ReferenceMap& references_;
};

/// Reads fields as LoadForm does, but fills no reference, and prints each as ` NAME=VALUE`: a text escaped and in
/// quotes, a record in parentheses, a list as its count and its values in brackets, a reference as its number.
class DumpForm {
public:
    static constexpr bool loads = true;

    /// `requested` takes the reference numbers that are met.
    DumpForm(Archive& archive, std::ostream& out, std::vector<std::uint32_t>& requested)
        : archive_(archive), out_(out), requested_(requested) {}

    template <RawValue T>
    void value(std::string_view name, T& field) {
        field = read_value<T>(archive_);
        begin(name);
        print_record(out_, field);
    }
    void text(std::string_view name, std::string& field);
    template <RawValue T>
    void values(std::string_view name, std::vector<T>& field) {
        read_values(archive_, field);
        begin(name);
        out_ << field.size() << '[';
        for (std::size_t i = 0; i < field.size(); ++i) {
            out_ << (i == 0 ? "" : " ");
            print_record(out_, field[i]);
        }
        out_ << ']';
    }
    template <class T>
    void reference(std::string_view name, T*& /*field*/) {
        reference_number(name);
    }

private:
    void begin(std::string_view name) { out_ << ' ' << name << '='; }
    void reference_number(std::string_view name);

    Archive& archive_;
    std::ostream& out_;
    std::vector<std::uint32_t>& requested_;
};

/// Gives a class its type test and its persistent form, from its `class_type_id` and its `fields`.
template <class Class, class Base>
class Persistent : public Base {
public:
    using Base::Base;

    bool is_a(std::uint32_t type_id) const override { return type_id == Class::class_type_id || Base::is_a(type_id); }
    std::uint32_t type_id() const override { return Class::class_type_id; }

    void load(Archive& archive, ReferenceMap& references) override {
        Base::load(archive, references);
        LoadForm form(archive, references);
        Class::fields(static_cast<Class&>(*this), form);
    }
    void save(Archive& archive, ReferenceMap& references) const override {
        Base::save(archive, references);
        SaveForm form(archive, references);
        Class::fields(static_cast<const Class&>(*this), form);
    }
};

/// A row of a table of classes that can stand in a stream.
struct PersistentClass {
    std::string_view name;
    std::uint32_t type_id = 0;
    std::unique_ptr<PersistentObject> (*create)() = nullptr;
    void (*dump_fields)(DumpForm& form) = nullptr; ///< those behind the name
};

template <class Class>
constexpr PersistentClass persistent_class() {
    return {.name = Class::class_name,
            .type_id = Class::class_type_id,
            .create = []() -> std::unique_ptr<PersistentObject> { return std::make_unique<Class>(); },
            .dump_fields =
                [](DumpForm& form) {
                    Class object;
                    Class::fields(object, form);
                }};
}

} // namespace kst
