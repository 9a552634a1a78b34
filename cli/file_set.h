#pragma once

#include <set>
#include <string>
#include <utility>

namespace corvane::cli {

/// Files, known again by whatever path, link or hard link leads to them, whether or not they are there.
class FileSet {
public:
    void Add(const std::string& path);
    bool Has(const std::string& path) const;

private:
    std::set<std::string> places_;
    std::set<std::pair<unsigned long long, unsigned long long>> nodes_; ///< device and number on it
};

} // namespace corvane::cli
