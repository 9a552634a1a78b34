#include "catalogue/operations.h"

#include <iterator>

#include "catalogue/groups.h"
#include "catalogue/mask.h"
#include "catalogue/names.h"
#include "corvane/core/error.h"

namespace corvane::catalogue {

std::vector<Operation> OperationsOf(const Group& group)
{
    std::vector<Operation> operations = group.operations();
    for (Operation& operation : operations) {
        AddMixParameters(operation);
    }
    return operations;
}

std::vector<Operation> Gathered(const std::vector<Group>& groups)
{
    std::vector<Operation> all;
    for (const Group& group : groups) {
        std::vector<Operation> operations = OperationsOf(group);
        std::move(operations.begin(), operations.end(), std::back_inserter(all));
    }
    return all;
}

const std::vector<Operation>& Operations()
{
    static const std::vector<Operation> operations = Gathered(Groups());
    return operations;
}

const Operation& FindOperation(std::string_view name)
{
    const Operation* operation = FindNamed(Operations(), name);
    if (operation == nullptr) {
        std::vector<std::string> meant = NearestNames(name, Names(Operations()));
        if (meant.empty()) {
            for (const Operation* other : OperationsFor(name)) {
                meant.push_back(other->name);
            }
        }
        throw ParameterError(
            "unknown step '" + std::string(name) + "'" +
            (meant.empty() ? "; `corvane ops` lists the steps" : "; did you mean " + Joined(meant) + "?"));
    }
    return *operation;
}

} // namespace corvane::catalogue
