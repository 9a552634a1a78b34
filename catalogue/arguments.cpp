#include "catalogue/arguments.h"

#include <stdexcept>

#include "io/frame.h"

namespace corvane::catalogue {

const Value* Arguments::Find(std::string_view name) const
{
    for (const Argument& argument : list_) {
        if (argument.parameter->name == name) {
            return &argument.value;
        }
    }
    return nullptr;
}

template <typename Type>
const Type& Arguments::Get(std::string_view name) const
{
    const Value* value = Find(name);
    if (value == nullptr) {
        throw std::logic_error("parameter " + std::string(name) + " has no value");
    }
    return std::get<Type>(*value);
}

bool Arguments::IsWord(std::string_view name) const
{
    const Value* value = Find(name);
    return value != nullptr && std::holds_alternative<std::string>(*value);
}

double Arguments::Number(std::string_view name) const
{
    return Get<double>(name);
}

int Arguments::Whole(std::string_view name) const
{
    return Get<int>(name);
}

bool Arguments::Flag(std::string_view name) const
{
    return Get<bool>(name);
}

const std::string& Arguments::Text(std::string_view name) const
{
    return Get<std::string>(name);
}

const Points& Arguments::Curve(std::string_view name) const
{
    return Get<Points>(name);
}

const std::vector<double>& Arguments::Numbers(std::string_view name) const
{
    return Get<std::vector<double>>(name);
}

const CRect* Arguments::Rectangle(std::string_view name) const
{
    return Has(name) ? &Get<CRect>(name) : nullptr;
}

io::Frame Arguments::Image(std::string_view name) const
{
    return IsWord(name) ? io::Load(Text(name)) : io::Frame(*Get<SharedFrame>(name));
}

std::string Arguments::InWords(std::string_view name) const
{
    const Value* value = Find(name);
    return value == nullptr ? std::string() : ToText(*value);
}

Error Arguments::Refusal(const std::string& name, const std::string& reason) const
{
    return ParameterError(name, InWords(name), reason);
}

} // namespace corvane::catalogue
