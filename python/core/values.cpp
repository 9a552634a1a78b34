#include "python/core/values.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <pybind11/stl.h>

#include "catalogue/names.h"
#include "corvane/core/error.h"

namespace corvane::python {
namespace {

using catalogue::Kind;
using catalogue::Parameter;
using catalogue::Value;

/// "read-noise" of read_noise, and "lambda" of lambda_, which Python has a word for.
std::string NameOf(std::string name)
{
    if (!name.empty() && name.back() == '_') {
        name.pop_back();
    }
    std::replace(name.begin(), name.end(), '_', '-');
    return name;
}

/// The numbers of a sequence, and of the sequences in it.
void Flatten(py::handle sequence, std::vector<double>& numbers)
{
    for (const py::handle item : sequence) {
        if (PySequence_Check(item.ptr()) != 0 && !py::isinstance<py::str>(item)) {
            Flatten(item, numbers);
        } else {
            numbers.push_back(py::float_(py::reinterpret_borrow<py::object>(item)));
        }
    }
}

Value OfNumbers(const Parameter& parameter, py::handle sequence)
{
    std::vector<double> numbers;
    Flatten(sequence, numbers);
    if (parameter.kind == Kind::Rectangle && numbers.size() == 4) {
        std::vector<int> edges;
        for (const py::handle edge : sequence) {
            edges.push_back(edge.cast<int>());
        }
        return CRect(edges[0], edges[1], edges[2], edges[3]);
    }
    if (parameter.kind == Kind::Curve && numbers.size() % 2 == 0) {
        catalogue::Points points;
        for (std::size_t i = 0; i < numbers.size(); i += 2) {
            points.push_back({numbers[i], numbers[i + 1]});
        }
        return points;
    }
    return numbers;
}

Value OfImage(const Parameter& parameter, py::handle value, std::vector<SharedImage>* used)
{
    const SharedImage image = ImageOf(value, parameter.name);
    if (used != nullptr) {
        used->push_back(image);
    }
    return catalogue::SharedFrame(std::make_shared<const io::Frame>(FrameOf(*image)));
}

bool IsPath(py::handle value)
{
    return py::isinstance<py::str>(value) || py::hasattr(value, "__fspath__");
}

/// numpy's truth values are no whole numbers, its numbers are.
bool IsTruth(py::handle value)
{
    return py::isinstance<py::bool_>(value) || py::str(py::type::of(value).attr("__name__")).equal(py::str("bool_"));
}

Value ValueOf(const Parameter& parameter, py::handle value, std::vector<SharedImage>* used)
{
    if (IsPath(value)) {
        return std::string(py::str(py::module_::import("os").attr("fspath")(value)));
    }
    if (parameter.kind == Kind::Image) {
        return OfImage(parameter, value, used);
    }
    if (IsTruth(value)) {
        return value.attr("__bool__")().cast<bool>();
    }
    if (PyIndex_Check(value.ptr()) != 0 && !py::hasattr(value, "__len__")) {
        return parameter.kind == Kind::Whole
                   ? Value(py::int_(py::reinterpret_borrow<py::object>(value)).cast<int>())
                   : Value(py::float_(py::reinterpret_borrow<py::object>(value)).cast<double>());
    }
    if (PySequence_Check(value.ptr()) != 0) {
        return OfNumbers(parameter, value);
    }
    return py::float_(py::reinterpret_borrow<py::object>(value)).cast<double>();
}

/// True for a value that counts when none is given; not where a person's settings may say another.
bool IsUsual(const Parameter& parameter, const Value& value)
{
    return parameter.defaultValue && parameter.readSetting == nullptr &&
           !std::holds_alternative<catalogue::SharedFrame>(value) &&
           catalogue::ToText(value) == catalogue::ToText(*parameter.defaultValue);
}

py::object CellOf(const catalogue::Cell& cell)
{
    return std::visit(
        [](const auto& value) -> py::object {
            if constexpr (std::is_same_v<std::decay_t<decltype(value)>, std::monostate>) {
                return py::none();
            } else {
                return py::cast(value);
            }
        },
        cell);
}

} // namespace

catalogue::Settings SettingsOf(const catalogue::Operation& operation, const py::dict& values,
                               std::vector<SharedImage>* used)
{
    catalogue::Settings settings;
    for (const auto& [key, value] : values) {
        const std::string name = NameOf(key.cast<std::string>());
        const Parameter* const parameter = catalogue::FindNamed(operation.parameters, name);
        if (value.is_none() || parameter == nullptr) {
            if (parameter == nullptr) {
                throw ParameterError("unknown parameter '" + name + "'");
            }
            continue;
        }
        try {
            Value given = ValueOf(*parameter, value, used);
            if (!IsUsual(*parameter, given)) {
                settings.push_back({parameter->name, std::move(given)});
            }
        } catch (const py::error_already_set&) { // it is no number
            throw ParameterError(parameter->name, py::str(value), "must be " + catalogue::AllowedText(*parameter))
                .Of(operation.name);
        }
    }
    return settings;
}

py::list ColumnsOf(const catalogue::Table& table)
{
    py::list columns;
    for (std::size_t column = 0; column < table.columns.size(); ++column) {
        py::list cells;
        for (const std::vector<catalogue::Cell>& row : table.rows) {
            cells.append(CellOf(row[column]));
        }
        columns.append(py::make_tuple(table.columns[column].name, table.columns[column].digits, cells));
    }
    return columns;
}

} // namespace corvane::python
