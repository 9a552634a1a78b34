#include <cstdlib>
#include <optional>
#include <string>

#include <pybind11/stl.h>

#include "python/core/image.h"

namespace corvane::python {
namespace {

using io::Header;

/// A card's keyword, HIERARCH ones whole.
std::string KeywordOf(const std::string& card)
{
    const bool isLong = card.rfind("HIERARCH ", 0) == 0;
    std::string keyword = isLong ? card.substr(9, card.find('=') - 9) : card.substr(0, 8);
    keyword.erase(keyword.find_last_not_of(' ') + 1);
    return keyword;
}

/// True where a card's value is a text.
bool IsText(const Header& header, const std::string& keyword)
{
    for (const std::string& card : header.Cards()) {
        if (KeywordOf(card) == keyword) {
            const std::size_t value = card.find_first_not_of(' ', card.find('=') + 1);
            return value != std::string::npos && card[value] == '\'';
        }
    }
    return false;
}

py::object Get(const Header& header, const std::string& keyword, const py::object& otherwise)
{
    const std::optional<std::string> text = header.Text(keyword);
    if (!text) {
        return header.Has(keyword) ? py::object(py::none()) : otherwise;
    }
    if (IsText(header, keyword)) {
        return py::str(*text);
    }
    if (const std::optional<bool> logical = header.Logical(keyword)) {
        return py::bool_(*logical);
    }
    const std::optional<double> number = header.Number(keyword);
    if (!number) {
        return py::str(*text);
    }
    const bool isWhole = text->find_first_not_of("+-0123456789") == std::string::npos;
    return isWhole ? py::object(py::int_(py::str(*text))) : py::object(py::float_(*number));
}

py::object Item(const Header& header, const std::string& keyword)
{
    if (!header.Has(keyword)) {
        throw py::key_error(keyword);
    }
    return Get(header, keyword, py::none());
}

void Set(Header& header, const std::string& keyword, const py::object& value)
{
    if (py::isinstance<py::bool_>(value)) {
        header.Set(keyword, value.cast<bool>());
    } else if (py::isinstance<py::int_>(value)) {
        header.Set(keyword, value.cast<long long>());
    } else if (py::isinstance<py::float_>(value)) {
        header.Set(keyword, value.cast<double>());
    } else {
        header.Set(keyword, std::string(py::str(value)));
    }
}

std::vector<std::string> Keywords(const Header& header)
{
    std::vector<std::string> keywords;
    for (const std::string& card : header.Cards()) {
        const std::string keyword = KeywordOf(card);
        if (header.Text(keyword)) {
            keywords.push_back(keyword);
        }
    }
    return keywords;
}

std::string Text(const Header& header)
{
    std::string text;
    for (const std::string& card : header.Cards()) {
        text += card + "\n";
    }
    return text;
}

} // namespace

void BindHeader(py::module_& module)
{
    py::class_<Header, std::shared_ptr<Header>>(
        module, "Header",
        "FITS header cards in their order. `header[\"EXPTIME\"]` is a number, a text or a truth value; keywords that "
        "nobody changes stay as they are, to the letter.")
        .def("__getitem__", &Item)
        .def("__setitem__", &Set)
        .def("__delitem__", [](Header& header, const std::string& keyword) { header.Remove(keyword); })
        .def("__contains__", [](const Header& header, const std::string& keyword) { return header.Has(keyword); })
        .def("__len__", [](const Header& header) { return header.Cards().size(); })
        .def("__iter__", [](const Header& header) { return py::iter(py::cast(Keywords(header))); })
        .def("__str__", &Text)
        .def("get", &Get, py::arg("keyword"), py::arg("default") = py::none(),
             "The value of a keyword, or the default where there is none.")
        .def("keys", &Keywords, "Keywords that have a value, in order.")
        .def("comment", &Header::Comment, py::arg("keyword"), "The comment of a card.")
        .def("add_card", &Header::AddCard, py::arg("card"), "Appends a card as it stands, cut to 80 characters.")
        .def("add_history", &Header::AddHistory, py::arg("text"), "Appends a HISTORY line.")
        .def_property_readonly("history", &Header::History, "The HISTORY lines.")
        .def_property_readonly("cards", &Header::Cards, "All cards, 80 characters each.");
}

} // namespace corvane::python
