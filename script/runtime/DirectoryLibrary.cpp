#include "script/runtime/DirectoryLibrary.h"

#include "script/value/DSError.h"
#include "source/utility/filesystem/VirtualFileSystem.h"

namespace kst::script {

/// A program on the code of a record, which counts it.
class ScriptRTE::DirectoryLibrary::Started {
public:
    Started(CodeRecord& record, ScriptInterface& imports) : record_(record), vm(record.code, &imports) {
        ++record_.users;
    }
    Started(const Started&) = delete;
    Started& operator=(const Started&) = delete;
    ~Started() { --record_.users; }

private:
    CodeRecord& record_;

public:
    ScriptVM vm;
};

ScriptRTE::DirectoryLibrary::DirectoryLibrary(ScriptRTE& environment, std::string root, ScriptInterface& imports)
    : environment_(environment), root_(std::move(root)), imports_(imports) {
    if (!root_.empty() && root_.back() != '/' && root_.back() != '\\')
        root_ += '/';
    as_value_.add(*this);
}

ScriptRTE::DirectoryLibrary::~DirectoryLibrary() = default;

void ScriptRTE::DirectoryLibrary::list(Directory& directory, const std::string& path) {
    directory.listed = true;
    VirtualFileSystem* const files = VirtualFileSystem::instance();
    if (files == nullptr)
        return;
    std::vector<std::string> names;
    files->list(names, path, "*.kvs;*.kvx", /*want_directories=*/false);
    for (const std::string& name : names)
        directory.entries.emplace(name.substr(0, name.rfind('.')), nullptr);
    names.clear();
    files->list(names, path, "*", /*want_directories=*/true);
    for (const std::string& name : names)
        if (!name.starts_with('.') && !directory.entries.contains(name))
            directory.entries.emplace(name, std::make_unique<Directory>());
}

ScriptRTE::DirectoryLibrary::Resolved ScriptRTE::DirectoryLibrary::resolve(std::string_view name) {
    Directory* directory = &tree_;
    std::string path = root_;
    for (;;) {
        if (!directory->listed)
            list(*directory, path);
        const std::size_t point = name.find('.');
        const std::string_view component = name.substr(0, point);
        name = point == std::string_view::npos ? std::string_view() : name.substr(point + 1);
        const auto entry = directory->entries.find(component);
        if (entry == directory->entries.end())
            return {};
        path += component;
        if (entry->second == nullptr)
            return {path, name};
        path += '/';
        directory = entry->second.get();
    }
}

bool ScriptRTE::DirectoryLibrary::has(idstring id) {
    return !resolve(idstring_text(id)).path.empty();
}

// The program stands in the map before its declarations run, so that two scripts may import each other.
ScriptVM& ScriptRTE::DirectoryLibrary::program(const std::string& path) {
    const auto found = programs_.find(path);
    if (found != programs_.end())
        return found->second->vm;
    CodeRecord& record = environment_.record(environment_.load(path));
    ScriptVM& vm = programs_.emplace(path, std::make_unique<Started>(record, imports_)).first->second->vm;
    try {
        vm.load();
    } catch (...) {
        programs_.erase(path);
        throw;
    }
    return vm;
}

ScriptValue ScriptRTE::DirectoryLibrary::get(idstring id) {
    const std::string& name = idstring_text(id);
    const auto fail = [&name] { throw DSError("Script error: Cant find object to import (" + name + ")"); };
    const Resolved resolved = resolve(name);
    if (resolved.path.empty())
        fail();
    ScriptVM& vm = program(resolved.path);
    if (resolved.rest.empty())
        return vm.value();
    const idstring symbol = intern(resolved.rest);
    if (!vm.has(symbol))
        fail();
    return vm.get(symbol);
}

void ScriptRTE::DirectoryLibrary::visit(LibraryVisitor& visitor) {
    for (const auto& [path, started] : programs_)
        started->vm.visit(visitor);
}

} // namespace kst::script
