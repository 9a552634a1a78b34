#include "stack/digest.h"

#include <charconv>
#include <cstdint>

namespace corvane::stack {

std::string DigestOf(const std::string& text)
{
    std::uint64_t digest = 0xcbf29ce484222325U;
    for (const char c : text) {
        digest = (digest ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
    }
    char digits[16];
    const auto end = std::to_chars(digits, digits + sizeof digits, digest, 16).ptr;
    const std::string word(digits, end);
    return std::string(sizeof digits - word.size(), '0') + word;
}

} // namespace corvane::stack
