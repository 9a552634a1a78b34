#include "cli/all_operations.h"

#include "catalogue/names.h"
#include "catalogue/operations.h"
#include "stack/operation.h"

namespace corvane::cli {

const std::vector<catalogue::Group>& AllGroups()
{
    static const std::vector<catalogue::Group> groups = [] {
        std::vector<catalogue::Group> all = catalogue::Groups();
        all.push_back({"A night: commands of their own", stack::Operations});
        return all;
    }();
    return groups;
}

const std::vector<catalogue::Operation>& AllOperations()
{
    static const std::vector<catalogue::Operation> operations = catalogue::Gathered(AllGroups());
    return operations;
}

const catalogue::Operation& OperationCalled(std::string_view name)
{
    return *catalogue::FindNamed(AllOperations(), name);
}

} // namespace corvane::cli
