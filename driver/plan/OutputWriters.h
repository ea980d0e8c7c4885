#pragma once

#include "driver/plan/survey_definition.h"

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>

namespace mosaicer {

/// Which set writes a file, however its path is spelled. The numbered folders of a split set are all its own, as their
/// number is not known.
class OutputWriters {
public:
    /// Gives the sets that were added before and write one of the same files.
    std::set<std::size_t> add(std::size_t number, const SurveyedSet& set, const std::string& output_root);

    std::optional<std::size_t> writer_of(const std::string& path) const;

private:
    void add_split(std::size_t number, const std::string& folder, std::set<std::size_t>& others);

    std::map<std::string, std::size_t> files_;
    std::multimap<std::string, std::size_t> folders_; ///< of files_
    std::map<std::string, std::size_t> split_folders_;
};

} // namespace mosaicer
