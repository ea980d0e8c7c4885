#include "objects/database/PersistentForm.h"

namespace kst {

void DumpForm::text(std::string_view name, std::string& field) {
    archive_.read_string(field);
    begin(name);
    print_quoted(out_, field);
}

void DumpForm::reference_number(std::string_view name) {
    const auto number = read_value<std::uint32_t>(archive_);
    begin(name);
    out_ << number;
    if (number != 0)
        requested_.push_back(number);
}

} // namespace kst
