// A host of the script language in one file: two native classes that programs can use, a program that is started from
// a folder, and calls in both directions. Run it with the folder of evening.kvs:
//
//   embedding examples/embedding

#include <exception>
#include <iostream>
#include <map>
#include <string>
#include <string_view>

#include "script/binding/bind.h"
#include "script/runtime/HostLibrary.h"
#include "script/runtime/PrintFunction.h"
#include "script/runtime/ScriptRTE.h"
#include "source/utility/filesystem/VirtualFileSystem.h"

namespace {

using namespace kst::script; // NOLINT(google-build-using-namespace): a short host

/// A native class as programs see it: its name, and one table. The adapters between the values of the language and
/// native types are made from the signatures.
class Lamp : public Bound<Lamp> {
public:
    static constexpr std::string_view script_name = "Lamp"; // prints as "<Lamp>"
    static void bind(StaticMemberSet<Lamp>& members) {
        members.method<&Lamp::name>("name");
        members.method<&Lamp::turn_on>("turn_on", 1.0f); // turn_on() is turn_on(1)
        members.method<&Lamp::turn_off>("turn_off");
        members.method<&Lamp::copy_from>("copy_from");
        members.property<&Lamp::colour, &Lamp::set_colour>("colour"); // lamp.colour := "red";
    }

    explicit Lamp(std::string name) : name_(std::move(name)) {}

    const std::string& name() const { return name_; }
    float brightness() const { return brightness_; }
    const std::string& colour() const { return colour_; }
    void set_colour(const std::string& colour) { colour_ = colour; }
    void turn_on(float brightness) { brightness_ = brightness; }
    void turn_off() { brightness_ = 0; }
    /// Another bound class as a parameter: a value of another type is an error of the program.
    void copy_from(const Lamp& other) {
        brightness_ = other.brightness_;
        colour_ = other.colour_;
    }

private:
    std::string name_;
    std::string colour_ = "white";
    float brightness_ = 0;
};

/// Owns the lamps. Programs hold them by values, which are dead once the lamp has gone.
class House : public Bound<House> {
public:
    static constexpr std::string_view script_name = "House";
    static void bind(StaticMemberSet<House>& members) {
        members.method<&House::lamp>("lamp");
        members.method<&House::for_each>("for_each");
        members.method<[](const House& house) { return house.lamps_.size(); }>("size");
    }

    /// A pointer as a result: null is void.
    Lamp* lamp(const std::string& name) {
        const auto found = lamps_.find(name);
        return found == lamps_.end() ? nullptr : &found->second;
    }
    Lamp& add(const std::string& name) { return lamps_.try_emplace(name, name).first->second; }
    void remove(const std::string& name) { lamps_.erase(name); }

    /// Calls a function of the program.
    void for_each(const ScriptValue& function) {
        for (auto& [name, lamp] : lamps_) {
            const ScriptValue argument = lamp.value();
            function.call({&argument, 1});
        }
    }

private:
    std::map<std::string, Lamp> lamps_;
};

void run(const std::string& folder) {
    // Programs are found in the process's file name space, of which a folder of the disk is mounted as the root.
    kst::VirtualFileSystem files;
    files.mount_directory("/", folder);

    // What programs can import, by name.
    HostLibrary host;
    host.add<PrintFunction>("print", std::cout);
    House& house = host.add<House>("house");
    house.add("hall");
    house.add("porch");

    ScriptRTE environment({.root = "", .mode = ScriptRTE::Mode::read_only, .host = &host});
    try {
        const auto program = environment.start("evening"); // evening.kvs, or the compiled evening.kvx
        for (const float hour : {17.0f, 19.0f, 22.0f}) {
            const ScriptValue argument = number_value(hour);
            const ScriptValue text = environment.call(*program, kst::intern("hour_strikes"), {&argument, 1});
            std::cout << text.to_string() << ": porch at " << house.lamp("porch")->brightness() << ", "
                      << house.lamp("porch")->colour() << '\n';
        }
        house.remove("hall");
        environment.call(*program, kst::intern("after_the_hall_has_gone"), {});
    } catch (const ScriptRTE::Error& error) {
        std::cout << "error: " << error.what() << '\n' << error.place() << environment.stack_text();
    }
}

} // namespace

int main(int argc, char** argv) {
    try {
        run(argc > 1 ? argv[1] : ".");
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << '\n';
        return 1;
    }
    return 0;
}
