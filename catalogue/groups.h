#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "catalogue/operation.h"
#include "corvane/platform/export.h"

namespace corvane::catalogue {

/// Operations that are listed together.
struct Group {
    std::string title;
    std::vector<Operation> (*operations)();
};

/// The groups, in the order in which they are listed; neighbours may share a title.
CORVANE_VISIBLE const std::vector<Group>& Groups();

/// The operations of a group, with the parameters that all of their kind take.
CORVANE_VISIBLE std::vector<Operation> OperationsOf(const Group& group);

/// The operations of groups.
CORVANE_VISIBLE std::vector<Operation> Gathered(const std::vector<Group>& groups);

/// The operations that may serve somebody who looks for a word that names none, as "blur" or "stretch": those that
/// people mean by it, else those whose name or summary holds it.
CORVANE_VISIBLE std::vector<const Operation*> OperationsFor(std::string_view word);

} // namespace corvane::catalogue
