#include "catalogue/operations.h"

#include <iterator>

#include "catalogue/error.h"
#include "catalogue/names.h"

namespace corvane::catalogue {
namespace {

std::vector<Operation> Gather()
{
    std::vector<Operation> all;
    for (const auto group : {ToneOperations, AdjustOperations, CalibrationOperations, MeasureOperations,
                             ColourOperations, ColourMosaicOperations, SmoothOperations, SharpenOperations,
                             RestoreOperations, DevelopOperations, GeometryOperations, DrawOperations}) {
        std::vector<Operation> operations = group();
        std::move(operations.begin(), operations.end(), std::back_inserter(all));
    }
    return all;
}

} // namespace

const std::vector<Operation>& Operations()
{
    static const std::vector<Operation> operations = Gather();
    return operations;
}

const Operation& FindOperation(std::string_view name)
{
    const Operation* operation = FindNamed(Operations(), name);
    if (operation == nullptr) {
        const std::string suggestion = Suggestion(name, Names(Operations()));
        throw Error("unknown step '" + std::string(name) + "'" +
                    (suggestion.empty() ? "; `corvane ops` lists the steps" : suggestion));
    }
    return *operation;
}

} // namespace corvane::catalogue
