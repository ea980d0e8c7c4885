#pragma once

#include "driver/check/Finding.h"

#include <map>
#include <string>
#include <vector>

namespace kst {
class XMLNode;
}

namespace mosaicer {

/// What a check has found so far.
class Findings {
public:
    void add(Finding finding) { list_.push_back(std::move(finding)); }

    /// At a node's line, in the file that it came from.
    void at(const kst::XMLNode& node, const std::string& set, FindingKind kind, std::string message,
            std::string suggestion = {});

    /// The path under which a file of the engine's name space is found on the host.
    const std::string& host_path(const std::string& file);

    std::size_t size() const { return list_.size(); }

    /// By file, line, kind and then as found. What is equal in all stands there once: a file that is included twice is
    /// told once.
    std::vector<Finding> sorted() &&;

private:
    std::vector<Finding> list_;
    std::map<std::string, std::string> host_paths_;
};

} // namespace mosaicer
