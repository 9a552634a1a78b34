#include "stack/parts/json_values.h"

#include <charconv>

namespace corvane::stack {

namespace {

constexpr std::size_t kDigitsOfFloat = 8;

} // namespace

std::string PackFloats(const std::vector<float>& values)
{
    std::string digits;
    digits.reserve(values.size() * kDigitsOfFloat);
    for (const float value : values) {
        const auto bits = std::bit_cast<std::uint32_t>(value);
        for (int shift = 28; shift >= 0; shift -= 4) {
            digits += "0123456789abcdef"[bits >> shift & 15U];
        }
    }
    return digits;
}

std::vector<float> UnpackFloats(const std::string& digits, std::size_t count)
{
    if (digits.size() != count * kDigitsOfFloat) {
        throw WrongValue("there are " + std::to_string(digits.size() / kDigitsOfFloat) + " samples, not " +
                         std::to_string(count));
    }
    std::vector<float> values;
    values.reserve(count);
    for (std::size_t at = 0; at < digits.size(); at += kDigitsOfFloat) {
        std::uint32_t bits = 0;
        const char* const end = digits.data() + at + kDigitsOfFloat;
        const auto [stop, error] = std::from_chars(digits.data() + at, end, bits, 16);
        if (stop != end || error != std::errc()) {
            throw WrongValue("'" + digits.substr(at, kDigitsOfFloat) + "' is no sample");
        }
        values.push_back(std::bit_cast<float>(bits));
    }
    return values;
}

} // namespace corvane::stack
